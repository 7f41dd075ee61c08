#include <cstring>
#include <random>

#include <fmt/format.h>

#include "agent_packet.h"
#include "dictionary.h"
#include "failure.h"
#include "run_of_packets.h"
#include "trace_format.h"
#include "wire_form.h"

namespace solvane::tools {

namespace {

constexpr std::int64_t shortest_pause = 200'000;   /* nanoseconds between two packets */
constexpr std::int64_t longest_pause = 20'000'000;
constexpr std::size_t  longest_line = 600;         /* formats above it are left out: arguments lengthen them */

/* Messages of a location update and of a call as they stand between the entities, 3GPP TS 24.008 clauses 9.2 and 9.3.
 * Names are literals of the stack domain; a build without them gets fewer messages. */
struct message_row {
    const char *src, *dest, *sap, *msg;
    const char *peer;
};
constexpr message_row messages[] = {
    {"MOD_MM",  "MOD_RRM", "GMM_AS_SAP", "MSG_ID_GMM_AS_GPRS_SIG_EST_REQ", "05087062f22000013305f41a2b3c4d"},
    {"MOD_RRM", "MOD_MM",  "GMM_AS_SAP", "MSG_ID_GMMAS_DATA_IND",          "050262f22000011705f41a2b3c4e"},
    {"MOD_RRM", "MOD_MM",  "GMM_AS_SAP", "MSG_ID_GMMAS_DATA_IND",          "05040b"},
    {"MOD_CC",  "MOD_MM",  "MM_CC_SAP",  "MSG_ID_MMCC_DATA_REQ",           "030504066004020005815e0481214365"},
    {"MOD_MM",  "MOD_CC",  "MM_CC_SAP",  "MSG_ID_MMCC_DATA_IND",           "8302"},
    {"MOD_MM",  "MOD_CC",  "MM_CC_SAP",  "MSG_ID_MMCC_DATA_IND",           "8301"},
    {"MOD_MM",  "MOD_CC",  "MM_CC_SAP",  "MSG_ID_MMCC_DATA_IND",           "8307"},
    {"MOD_CC",  "MOD_MM",  "MM_CC_SAP",  "MSG_ID_MMCC_DATA_REQ",           "030f"},
    {"MOD_MM",  "MOD_CC",  "MM_CC_SAP",  "MSG_ID_MMCC_DATA_IND",           "832502e090"},
    {"MOD_CC",  "MOD_MM",  "MM_CC_SAP",  "MSG_ID_MMCC_DATA_REQ",           "032d"},
};

class composer {
public:
    composer(const plugin &loaded, std::uint32_t seed);
    octets packet();

private:
    std::uint32_t below(std::uint32_t limit) { return static_cast<std::uint32_t>(random_() % limit); }
    const tsc_db_item_struct &statement();
    std::string               argument(char letter);
    octets                    string_trace();
    octets                    integer_trace();
    octets                    message();
    octets                    module_statement(std::uint8_t code);
    void                      collect_statements();
    void                      collect_messages();
    std::optional<std::uint32_t> literal(const char *enumeration, const char *name) const;
    std::uint32_t             some_value(const char *enumeration);

    const plugin                           &loaded_;
    std::mt19937                            random_;
    std::vector<domain>                     domains_;
    const domain                           *stack_ = nullptr;
    std::vector<const tsc_db_item_struct *> statements_;
    std::vector<layer_message>              messages_;
    std::size_t                             next_message_ = 0;
    std::uint32_t                           frame_ = 0;
};

composer::composer(const plugin &loaded, std::uint32_t seed)
    : loaded_(loaded), random_(seed), domains_(domains_of(loaded))
{
    for (const auto &in : domains_) {
        stack_ = in.number == ENTITY_STACK ? &in : stack_;
    }
    collect_statements();
    collect_messages();
    if (statements_.empty()) {
        throw failure(exit_mismatch, "the plug-in has no trace statements to make a session of: give a recording");
    }
}

/* Heads of modules and the closing row are no statements. */
void composer::collect_statements()
{
    const tsc_db_info_struct &db = *loaded_.info->tsc_db_get();
    for (std::uint32_t i = 0; i < db.total; ++i) {
        const tsc_db_item_struct &item = db.db[i];
        if (item.status < TSC_DIS_RESERVED && std::strlen(item.trace_format) < longest_line) {
            statements_.push_back(&item);
        }
    }
}

std::optional<std::uint32_t> composer::literal(const char *enumeration, const char *name) const
{
    const rw_enum_row *row = stack_ != nullptr ? find_enum(*stack_, enumeration) : nullptr;
    for (std::uint32_t i = 0; row != nullptr && i < row->no_literals; ++i) {
        if (std::strcmp(row->literals[i].name, name) == 0) {
            return static_cast<std::uint32_t>(row->literals[i].value.num);
        }
    }
    return std::nullopt;
}

void composer::collect_messages()
{
    for (const auto &row : messages) {
        const auto src = stack_ != nullptr ? literal(stack_->row->module_enum, row.src) : std::nullopt;
        const auto dest = stack_ != nullptr ? literal(stack_->row->module_enum, row.dest) : std::nullopt;
        const auto sap = stack_ != nullptr ? literal(stack_->row->sap_enum, row.sap) : std::nullopt;
        const auto msg = stack_ != nullptr ? literal(stack_->row->msg_enum, row.msg) : std::nullopt;
        if (!src || !dest || !sap || !msg) {
            continue;
        }
        layer_message made;
        made.src_mod_id = static_cast<std::uint8_t>(*src);
        made.dest_mod_id = static_cast<std::uint8_t>(*dest);
        made.sap_id = static_cast<std::uint8_t>(*sap);
        made.msg_id = static_cast<std::uint16_t>(*msg);
        made.peer = parse_hex(row.peer).value;
        messages_.push_back(made);
    }
}

const tsc_db_item_struct &composer::statement()
{
    return *statements_[below(static_cast<std::uint32_t>(statements_.size()))];
}

std::string composer::argument(char letter)
{
    static constexpr const char *words[] = {"idle", "active", "MM", "W23.06.6", "pending"};
    switch (letter) {
    case 's': return words[below(5)];
    case 'c': return std::string(1, static_cast<char>('A' + below(26)));
    case 'x': return fmt::format("{:x}", below(65536));
    case 'X': return fmt::format("{:X}", below(65536));
    case 'p': return fmt::format("{:08x}", random_());
    default: return std::to_string(below(1000));
    }
}

octets composer::string_trace()
{
    const tsc_db_item_struct &item = statement();
    std::vector<std::string>  texts;
    for (const char letter : argument_letters(item.trace_format, false)) {
        texts.push_back(argument(letter));
    }
    return make_string_trace(item.trace_id, texts);
}

/* Least significant octet first, as the targets of this stack store words; a text cannot travel as a word. */
octets composer::integer_trace()
{
    const tsc_db_item_struct *item = &statement();
    const auto                has_text = [&] {
        return argument_letters(item->trace_format, false).find('s') != std::string::npos;
    };
    for (int tries = 0; tries < 50 && has_text(); ++tries) {
        item = &statement();
    }
    octets     out = {report_trace_words};
    const auto put = [&out](std::uint32_t word) {
        for (unsigned i = 0; i < 4; ++i) {
            out.push_back(static_cast<std::uint8_t>(word >> (8 * i)));
        }
    };
    put(item->trace_id);
    for ([[maybe_unused]] const char letter : argument_letters(item->trace_format, true)) {
        put(letter == 'c' ? 'A' + below(26) : below(1000));
    }
    return out;
}

octets composer::message()
{
    if (messages_.empty()) {
        return string_trace();
    }
    layer_message now = messages_[next_message_++ % messages_.size()];
    now.frame_number = frame_;
    return make_layer_message(now);
}

std::uint32_t composer::some_value(const char *enumeration)
{
    const rw_enum_row *row = stack_ != nullptr ? find_enum(*stack_, enumeration) : nullptr;
    return row == nullptr || row->no_literals < 2
               ? 0
               : static_cast<std::uint32_t>(row->literals[below(row->no_literals - 1U)].value.num);
}

/* A print, a log or a failed assertion: they have the same members as far as they go. */
octets composer::module_statement(std::uint8_t code)
{
    std::optional<wire_form> form;
    for (std::size_t i = 0; i < domains_.size() && !form; ++i) {
        form = wire_form_of(domains_[i], report_struct(code));
    }
    if (!form || stack_ == nullptr) {
        return string_trace();
    }
    const auto  bits = [this](std::uint32_t value) { return std::uint64_t{value}; };
    wire_record values = {
        {"channel", bits(some_value(stack_->row->channels_enum))},
        {"file_entity_code", bits(ENTITY_STACK)},
        {"module_entity_code", bits(ENTITY_STACK)},
        {"modulecode", bits(some_value(stack_->row->module_enum))},
        {"opcode", bits(below(64))},
        {"level", bits(below(5))},
        {"lineno", bits(1 + below(2000))},
        {"filecode", bits(some_value(stack_->row->file_code_enum))},
        {"frame_number", bits(frame_)},
    };
    if (code == MTA_TT_PRINT) {
        values.insert({"prelems", std::vector<std::uint64_t>(1 + below(4), below(100))});
    } else if (code == MTA_TT_LOG) {
        values.insert({"parameters", std::vector<std::uint64_t>{below(100), below(100), below(100)}});
    } else {
        static constexpr std::string_view expression = "timer != NULL";
        wire_record text = {{"str", std::vector<std::uint64_t>(expression.begin(), expression.end())}};
        values.insert({"str", std::vector<wire_record>{text}});
    }
    octets out = {code};
    octets body = write_wire(*form, values);
    out.insert(out.end(), body.begin(), body.end());
    return out;
}

octets composer::packet()
{
    frame_ += below(5);
    const std::uint32_t draw = below(100);
    if (draw < 60) {
        return string_trace();
    }
    if (draw < 75) {
        return integer_trace();
    }
    if (draw < 90) {
        return message();
    }
    return module_statement(draw < 98 ? MTA_TT_PRINT : draw == 98 ? MTA_TT_LOG : MTA_TT_ASSERT_TBD);
}

} // namespace

std::vector<timed_packet> made_up_run(const plugin &loaded, std::size_t count, std::uint32_t seed)
{
    composer                  from(loaded, seed); /* throws without statements */
    std::mt19937              pauses(seed + 1);
    std::vector<timed_packet> run;
    std::int64_t              at = 0;
    for (std::size_t i = 0; i < count; ++i) {
        run.push_back({at, from.packet()});
        at += shortest_pause + static_cast<std::int64_t>(pauses()) % (longest_pause - shortest_pause);
    }
    return run;
}

} // namespace solvane::tools
