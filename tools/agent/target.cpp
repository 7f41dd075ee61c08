#include "target.h"

#include <algorithm>

#include "agent_packet.h"
#include "command.h"
#include "tt_mtastruct.h"
#include "wire_form.h"
#include "wire_value.h"

namespace solvane::tools {

namespace {

constexpr std::size_t message_head = 5; /* flag and frame number in front of a traced message */

const value_node *member_of(const value_node &node, std::string_view name)
{
    const auto found = std::find_if(node.children.begin(), node.children.end(),
                                    [name](const value_node &child) { return child.name == name; });
    return found != node.children.end() ? &*found : nullptr;
}

std::uint64_t number_in(const value_node &node, std::string_view name)
{
    const value_node *member = member_of(node, name);
    return member != nullptr ? static_cast<std::uint64_t>(member->number) : 0;
}

/* Which variable it is: the steps from the root. */
std::vector<std::uint64_t> way_of(const value_node &request)
{
    std::vector<std::uint64_t> way;
    const value_node          *steps = member_of(request, "ral");
    for (std::size_t i = 0; steps != nullptr && i < steps->children.size(); ++i) {
        way.push_back(static_cast<std::uint64_t>(steps->children[i].number));
    }
    return way;
}

/* What no one wrote yet: octets that follow from the way, so that a second read finds the same. */
octets untouched(const std::vector<std::uint64_t> &way, std::uint64_t size)
{
    std::uint64_t seed = 1;
    for (const std::uint64_t step : way) {
        seed = seed * 31 + step;
    }
    octets out(static_cast<std::size_t>(size));
    for (std::size_t i = 0; i < out.size(); ++i) {
        out[i] = static_cast<std::uint8_t>(seed + i);
    }
    return out;
}

} // namespace

target::target(const plugin &loaded, const target_layout &layout, std::string baseline)
    : loaded_(loaded), layout_(layout), baseline_(std::move(baseline)), domains_(domains_of(loaded))
{
}

/* From the first domain that has the structure. */
std::optional<wire_form> target::form_of(const char *structure) const
{
    const auto in = std::find_if(domains_.begin(), domains_.end(),
                                 [&](const domain &each) { return find_type(each, structure).has_value(); });
    return in != domains_.end() ? wire_form_of(*in, structure) : std::nullopt;
}

octets target::result(std::uint8_t code, std::uint32_t value) const
{
    octets out = {code, code}; /* the structure names its report too */
    put_number(out, value, 4);
    return out;
}

octets target::text(std::uint8_t code, const std::string &value) const
{
    mta_string_struct made = {};
    made.no_str = static_cast<std::uint8_t>(std::min<std::size_t>(value.size(), 255));
    made.str = reinterpret_cast<std::uint8_t *>(const_cast<char *>(value.data()));
    octets out(2U + made.no_str);
    out[0] = code;
    pack_info_struct cursor = {out.data() + 1, 0};
    mta_string_pack(&cursor, &made);
    return out;
}

octets target::profile() const
{
    static constexpr const char *names[] = {"MTA", "NAS", "LRRC", "NRRC"};
    mta_tt_task_stats            tasks[4] = {};
    std::uint32_t                ticks = 400;
    octets                       out(64);
    for (std::size_t i = 0; i < 4; ++i, ticks /= 2) {
        tasks[i].no_task_name = static_cast<std::uint8_t>(std::string_view(names[i]).size());
        tasks[i].task_name = reinterpret_cast<std::uint8_t *>(const_cast<char *>(names[i]));
        tasks[i].num_ticks = ticks;
    }
    mta_tt_task_profiling_stats made = {};
    made.response = MTA_TT_PROF_STATS_RESP;
    made.time_per_tickN = 1;
    made.time_per_tickD = 32;
    made.no_task_stats = 4;
    made.task_stats = tasks;
    out[0] = MTA_TT_PROF_STATS_RESP;
    pack_info_struct cursor = {out.data() + 1, 0};
    mta_tt_task_profiling_stats_pack(&cursor, &made);
    out.resize(1 + cursor.bits / 8);
    return out;
}

octets target::called(std::span<const std::uint8_t> body, bool &whole)
{
    PerError               error = {};
    unpack_info_struct     cursor = {body.data(), 0, static_cast<std::int32_t>(body.size()), &error};
    mta_tt_fun_call_struct call;
    mta_tt_fun_call_init(&call);
    mta_tt_fun_call_rest(&call, &cursor);
    whole = error.code == 0;
    mta_tt_fun_call_resp_struct made = {};
    made.response = MTA_TT_CALL_FUNC_RESP;
    made.no_message = call.no_message;
    made.message = call.message; /* points into `body` */
    octets           out(8U + call.no_message);
    out[0] = MTA_TT_CALL_FUNC_RESP;
    pack_info_struct answer = {out.data() + 1, 0};
    mta_tt_fun_call_resp_pack(&answer, &made);
    mta_tt_fun_call_free(&call);
    out.resize(1 + answer.bits / 8);
    return out;
}

octets target::variable(const value_node &request, std::uint64_t size)
{
    const auto way = way_of(request);
    const auto found = written_.find(way);
    octets     value = found != written_.end() ? found->second : untouched(way, size);
    value.resize(static_cast<std::size_t>(size));
    return value;
}

octets target::variables(std::uint8_t code, const value_node &request)
{
    std::vector<wire_record> values;
    const value_node        *wanted = member_of(request, "ral_info");
    for (std::size_t i = 0; wanted != nullptr && i < wanted->children.size(); ++i) {
        const value_node &each = wanted->children[i];
        const octets      value = variable(each, number_in(each, "size"));
        values.push_back({{"var_id", std::uint64_t{i}},
                          {"var", std::vector<std::uint64_t>(value.begin(), value.end())}});
    }
    octets out = {code};
    if (const auto form = form_of(report_struct(code))) {
        const octets body = write_wire(*form, {{"response", std::uint64_t{code}}, {"var_info", std::move(values)}});
        out.insert(out.end(), body.begin(), body.end());
    }
    return out;
}

void target::set_variable(const value_node &request)
{
    if (const value_node *value = member_of(request, "value")) {
        written_[way_of(request)] = value->bytes;
    }
}

std::vector<octets> target::injected(const value_node &request)
{
    std::vector<octets> out = {result(MTA_TT_RESPONSE, 0)};
    if (const value_node *message = member_of(request, "message"); message != nullptr && !message->bytes.empty()) {
        octets traced(1 + message_head);
        traced[0] = MTA_TT_TRACE;
        traced.insert(traced.end(), message->bytes.begin(), message->bytes.end());
        out.push_back(std::move(traced));
    }
    return out;
}

/* Commands that say all they have to say by their code. */
std::vector<octets> target::bare_answer(std::uint8_t code)
{
    switch (code) {
    case MTA_TT_OFFSIZE_REQ: return layout_.answers();
    case MTA_TT_VERSION_REQ:
        return {text(MTA_TT_VERSION_RESP, std::string(running_tool().name) + " " + tool_version)};
    case MTA_TT_STACK_VERSION_REQ: return {text(MTA_TT_STACK_VERSION_RESP, baseline_)};
    case MTA_TT_STACK_ABOUT_REQ: return {text(MTA_TT_STACK_ABOUT_RESP, "a simulated target without a stack")};
    case MTA_TT_PROF_STATS_REQ: return {profile()};
    case MTA_TT_DISCONNECT:
    case MTA_TT_QUIT: leave_ = true; [[fallthrough]];
    default: return {result(MTA_TT_RESPONSE, 0)};
    }
}

std::vector<octets> target::answer(const octets &command)
{
    leave_ = false;
    const std::uint8_t code = command[0];
    const char        *structure = command_struct(code);
    const auto         body = std::span(command).subspan(1);
    const auto         refused = [&] { return std::vector<octets>{result(MTA_TT_ERROR, code)}; };
    if (structure == nullptr) {
        return refused();
    }
    if (code == MTA_TT_CALL_FUNC_REQ) {
        bool   whole = false;
        octets made = called(body, whole);
        return whole ? std::vector<octets>{made} : refused();
    }
    const auto         form = form_of(structure);
    const wire_reading request = form ? read_wire(loaded_, *form, body) : wire_reading();
    if (request.ran_short && form->fields.size() > 1) { /* a bare command needs no more than its code */
        return refused();
    }
    switch (code) {
    case MTA_TT_GET_VAR_REQ: return {variables(MTA_TT_GET_VAR_RESP, request.value)};
    case MTA_TT_GET_MUL_VAR_REQ: return {variables(MTA_TT_GET_MUL_VAR_RESP, request.value)};
    case MTA_TT_SET_VAR_REQ: set_variable(request.value); return {result(MTA_TT_SET_VAR_RESP, 0)};
    case MTA_TT_INJECT_MESG: return injected(request.value);
    case MTA_TT_LOG_VAR_REQ: return {result(MTA_TT_LOG_VAR_RESP, 0)};
    default: return bare_answer(code);
    }
}

} // namespace solvane::tools
