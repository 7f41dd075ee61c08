#include "agent_packet.h"

#include <algorithm>

#include <fmt/format.h>

namespace solvane::tools {

namespace {

constexpr std::uint8_t argument_end = 1;

/// Takes numbers off the front of a body; once it ran short every answer is 0.
class body_reader {
public:
    explicit body_reader(std::span<const std::uint8_t> body) : rest_(body) {}

    std::uint32_t number(std::size_t size)
    {
        std::uint32_t value = 0;
        for (const std::uint8_t octet : take(size)) {
            value = value << 8 | octet;
        }
        return value;
    }

    std::span<const std::uint8_t> take(std::size_t size)
    {
        if (size > rest_.size()) {
            short_ = true;
            rest_ = {};
            return {};
        }
        const auto taken = rest_.first(size);
        rest_ = rest_.subspan(size);
        return taken;
    }

    octets counted()
    {
        const auto taken = take(number(2));
        return {taken.begin(), taken.end()};
    }

    bool        ran_short() const { return short_; }
    std::size_t left() const { return rest_.size(); }

private:
    std::span<const std::uint8_t> rest_;
    bool                          short_ = false;
};

void put_counted(octets &out, const octets &value)
{
    put_number(out, value.size(), 2);
    out.insert(out.end(), value.begin(), value.end());
}

struct code_row {
    std::int32_t code;
    const char  *structure;
};

constexpr code_row reports[] = {
    {MTA_TT_TRACE,              "mta_tt_trace_struct"},
    {MTA_TT_LOG,                "mta_tt_log_struct"},
    {MTA_TT_ASSERT_TBD,         "mta_tt_assert_tbd_struct"},
    {MTA_TT_RESPONSE,           "mta_tt_resp_struct"},
    {MTA_TT_ERROR,              "mta_tt_resp_struct"},
    {MTA_TT_PRINT,              "mta_tt_print_struct"},
    {MTA_TT_LOG_VAR,            "mta_tt_send_log_var_struct"},
    {MTA_TT_OFFSIZE_RESP,       "mta_tt_offsize_resp_struct"},
    {MTA_TT_GET_VAR_RESP,       "mta_tt_get_var_resp_struct"},
    {MTA_TT_SET_VAR_RESP,       "mta_tt_resp_struct"},
    {MTA_TT_GET_MSG_RESP,       "mta_tt_fun_call_resp_struct"},
    {MTA_TT_CALL_FUNC_RESP,     "mta_tt_fun_call_resp_struct"},
    {MTA_TT_GET_MUL_VAR_RESP,   "mta_tt_get_var_resp_struct"},
    {MTA_TT_LOG_VAR_RESP,       "mta_tt_resp_struct"},
    {MTA_TT_PROF_STATS_RESP,    "mta_tt_task_profiling_stats"},
    {MTA_TT_VERSION_RESP,       "mta_string_struct"},
    {MTA_TT_STACK_VERSION_RESP, "mta_string_struct"},
    {MTA_TT_STACK_ABOUT_RESP,   "mta_string_struct"},
    {MTA_TT_TRACEID,            "mta_tt_traceid_struct"},
};

/* Commands with more than their code; all others have the structure of a bare command. */
constexpr code_row commands[] = {
    {MTA_TT_GET_VAR_REQ,     "mta_tt_get_var_req_struct"},
    {MTA_TT_SET_VAR_REQ,     "mta_tt_set_var_req_struct"},
    {MTA_TT_CALL_FUNC_REQ,   "mta_tt_fun_call_struct"},
    {MTA_TT_INJECT_MESG,     "mta_tt_inject_struct"},
    {MTA_TT_TRACE_SAP,       "mta_tt_trace_trap_struct"},
    {MTA_TT_TRACE_MSG,       "mta_tt_trace_trap_struct"},
    {MTA_TT_TRACE_MOD,       "mta_tt_trace_mod_struct"},
    {MTA_TT_TRAP_SAP,        "mta_tt_trace_trap_struct"},
    {MTA_TT_TRAP_MSG,        "mta_tt_trace_trap_struct"},
    {MTA_TT_SET_LOG,         "mta_tt_log_settings_struct"},
    {MTA_TT_GET_MUL_VAR_REQ, "mta_tt_get_var_req_struct"},
    {MTA_TT_LOG_VAR_REQ,     "mta_tt_logvar_cmd_struct"},
};

const char *structure_of(std::span<const code_row> rows, std::uint8_t code)
{
    const auto row = std::find_if(rows.begin(), rows.end(), [code](const code_row &each) { return each.code == code; });
    return row != rows.end() ? row->structure : nullptr;
}

} // namespace

const char *report_struct(std::uint8_t code)
{
    return structure_of(reports, code);
}

const char *command_struct(std::uint8_t code)
{
    const char *own = structure_of(commands, code);
    return own != nullptr || code >= MTA_NUM_OF_COMMANDS ? own : "mta_tt_cmd_struct";
}

void put_number(octets &out, std::uint64_t value, unsigned size)
{
    for (unsigned i = size; i-- > 0;) {
        out.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
}

std::optional<string_trace> parse_string_trace(std::span<const std::uint8_t> body, std::string &complaint)
{
    body_reader         reader(body);
    string_trace        trace;
    trace.id = reader.number(4);
    const std::uint32_t count = reader.number(4);
    if (reader.ran_short()) {
        complaint = fmt::format("a trace takes 8 octets or more, not {}", body.size());
        return std::nullopt;
    }
    trace.arguments = reader.take(count);
    if (reader.ran_short()) {
        complaint = fmt::format("{} argument octets announced, {} there", count, body.size() - 8);
        return std::nullopt;
    }
    trace.surplus = reader.left();
    return trace;
}

std::vector<std::string> argument_texts(std::span<const std::uint8_t> arguments)
{
    std::vector<std::string> texts;
    auto                     at = arguments.begin();
    while (at != arguments.end()) {
        const auto end = std::find(at, arguments.end(), argument_end);
        texts.emplace_back(at, end);
        at = end == arguments.end() ? end : end + 1;
    }
    return texts;
}

octets make_string_trace(std::uint32_t id, std::span<const std::string> arguments)
{
    octets packet = {report_trace_id};
    octets texts;
    for (const auto &argument : arguments) {
        texts.insert(texts.end(), argument.begin(), argument.end());
        texts.push_back(argument_end);
    }
    put_number(packet, id, 4);
    put_number(packet, static_cast<std::uint32_t>(texts.size()), 4);
    packet.insert(packet.end(), texts.begin(), texts.end());
    return packet;
}

std::optional<layer_message> parse_layer_message(std::span<const std::uint8_t> body, std::string &complaint)
{
    body_reader   reader(body);
    layer_message message;
    const bool    stamped = reader.number(1) != 0;
    message.frame_number = reader.number(4);
    message.src_mod_id = static_cast<std::uint8_t>(reader.number(1));
    message.dest_mod_id = static_cast<std::uint8_t>(reader.number(1));
    message.sap_id = static_cast<std::uint8_t>(reader.number(1));
    message.msg_id = static_cast<std::uint16_t>(reader.number(2));
    reader.number(1); /* reference count of the local parameters */
    message.local_params = reader.counted();
    message.peer = reader.counted();
    reader.number(4); /* reference count, head and tail length, a zero */
    if (stamped) {
        reader.number(4);
        reader.number(4);
    }
    if (reader.ran_short()) {
        complaint = fmt::format("a message report ends too soon, behind {}", body.size());
        return std::nullopt;
    }
    return message;
}

octets make_layer_message(const layer_message &message)
{
    octets packet = {report_trace, 0};
    put_number(packet, message.frame_number, 4);
    put_number(packet, message.src_mod_id, 1);
    put_number(packet, message.dest_mod_id, 1);
    put_number(packet, message.sap_id, 1);
    put_number(packet, message.msg_id, 2);
    put_number(packet, 1, 1); /* one reference */
    put_counted(packet, message.local_params);
    put_counted(packet, message.peer);
    put_number(packet, 1, 1);
    put_number(packet, 0, 3);
    return packet;
}

tt_msg_struct as_record(const layer_message &message, std::uint8_t entity)
{
    tt_msg_struct record = {};
    record.src_entity_id = entity;
    record.dest_entity_id = entity;
    record.src_mod_id = message.src_mod_id;
    record.dest_mod_id = message.dest_mod_id;
    record.sap_id = message.sap_id;
    record.msg_id = message.msg_id;
    const auto use = [](const octets &from) {
        return from.empty() ? nullptr : const_cast<std::uint8_t *>(from.data()); /* the library only reads it */
    };
    record.local_params.ref_count = 1;
    record.local_params.no_local_params_ptr = static_cast<std::uint16_t>(message.local_params.size());
    record.local_params.local_params_ptr_size = record.local_params.no_local_params_ptr;
    record.local_params.local_params_ptr = use(message.local_params);
    record.peer_buff.ref_count = 1;
    record.peer_buff.no_peer_buff_ptr = static_cast<std::uint16_t>(message.peer.size());
    record.peer_buff.peer_buff_ptr_size = record.peer_buff.no_peer_buff_ptr;
    record.peer_buff.peer_buff_ptr = use(message.peer);
    return record;
}

} // namespace solvane::tools
