#include <fmt/format.h>

#include "commands.h"
#include "failure.h"
#include "json_out.h"
#include "print.h"
#include "session.h"

namespace solvane::tools {

namespace {

struct message_options {
    std::string name;
    bool        no_layout = false;
    bool        expand = false;
};

const char *text_or_empty(const char *text)
{
    return text != nullptr ? text : "";
}

/// The dense number of a message in the domains that have one.
struct dense_index {
    std::uint32_t number = 0;
    std::uint32_t back = 0; ///< code that the number leads back to
};

std::optional<dense_index> index_of(const plugin &loaded, const found_message &found)
{
    const auto &info = *loaded.info;
    const auto  code = static_cast<std::uint16_t>(found.row->msg_code);
    const bool  indexed = found.where->row->msg_table->index_count != 0 && code == found.row->msg_code;
    if (!indexed || (found.where->number != ENTITY_SIGNAL && found.where->number != ENTITY_TD_LTE_STACK)) {
        return std::nullopt;
    }
    const bool signal = found.where->number == ENTITY_SIGNAL;
    const auto number = (signal ? info.signal_msg_code_to_index : info.lte_msg_code_to_index)(code);
    const auto back =
        (signal ? info.signal_msg_index_to_code : info.lte_msg_index_to_code)(static_cast<std::uint16_t>(number));
    return dense_index{number, back};
}

json describe(session &work, const found_message &found)
{
    json out = json_object("message");
    out["domain"] = json_enum(found.where->number, found.where->name);
    out["message"] = json_enum(found.row->msg_code, text_or_empty(found.row->msg_name));
    out["sap"] = json_enum(found.row->sap_code, text_or_empty(found.row->sap_name));
    out["struct"] = text_or_empty(found.row->struct_name);
    if (const auto index = index_of(work.started(), found)) {
        out["index"] = index->number;
    }
    return out;
}

std::string line_of(session &work, const found_message &found)
{
    const std::string body = text_or_empty(found.row->struct_name);
    return work.paint.padded(ink::module, found.where->name, 15) +
           work.paint(ink::number, fmt::format("{:>6} {:#06x}", found.row->msg_code, found.row->msg_code)) + "  " +
           work.paint.padded(ink::name, text_or_empty(found.row->msg_name), 36) + "  " +
           fmt::format("{:>3} {:<16}", found.row->sap_code, text_or_empty(found.row->sap_name)) + "  " +
           (body.empty() ? work.paint(ink::note, "no body") : work.paint(ink::type, body));
}

void check_index(session &work, const found_message &found)
{
    const auto index = index_of(work.started(), found);
    if (index && (index->number == 0 || index->back != found.row->msg_code)) {
        work.finding(fmt::format("{}: its dense index {} leads back to code {:#x}",
                                 text_or_empty(found.row->msg_name), index->number, index->back));
    } else if (index && !work.settings.json) {
        work.line(work.paint(ink::note, fmt::format("/* dense index {} */", index->number)));
    }
}

void show(session &work, const found_message &found, const message_options &options)
{
    const domain     &in = *found.where;
    const std::string body = text_or_empty(found.row->struct_name);
    const auto        use = body.empty() ? std::nullopt : find_type(in, body);
    const auto        type = use ? resolve(in, *use) : resolved_type();
    json              out = work.settings.json ? describe(work, found) : json();
    if (!body.empty() && !type.is_record()) {
        work.finding(fmt::format("the dictionary of domain {} does not know structure {}", in.name, body));
    }
    if (!work.settings.json) {
        work.line(line_of(work, found));
    }
    check_index(work, found);
    if (type.is_record() && !options.no_layout) {
        const auto record = lay_out(in, struct_row(in, type), type.rt_tag);
        if (work.settings.json) {
            out["layout"] = json_layout(in, record, options.expand);
        } else {
            print_layout(work, in, record, options.expand);
        }
    }
    if (work.settings.json) {
        work.line(json_line(out));
    }
}

int run_message(session &work, const message_options &options)
{
    const auto found = find_messages(work.domains(), options.name);
    if (found.empty()) {
        suggestions near(options.name);
        for (const auto &in : work.domains()) {
            for (const auto &row : in.messages()) {
                near.offer(text_or_empty(row.msg_name));
            }
        }
        throw failure(exit_findings, fmt::format("no message {}{}", options.name, near.text()));
    }
    for (const auto &each : found) {
        show(work, each, options);
    }
    return work.result();
}

int run_messages(session &work, const std::string &pattern)
{
    bool any = false;
    for (const auto &in : work.domains()) {
        for (const auto &row : in.messages()) {
            const found_message found = {&in, &row};
            if (!pattern.empty() && !matches(text_or_empty(row.msg_name), pattern)) {
                continue;
            }
            any = true;
            work.line(work.settings.json ? json_line(describe(work, found)) : line_of(work, found));
        }
    }
    if (!any) {
        work.finding(pattern.empty() ? "no messages" : fmt::format("no message fits {}", pattern));
    }
    return work.result();
}

} // namespace

command message_command()
{
    const auto options = std::make_shared<message_options>();
    return {
        "message",
        "a message code or name followed to the structure that it carries",
        "A code can stand for different messages in different domains; all are shown unless --domain says which.",
        {{"message 2", "the messages of code 2 with their structures laid out"},
         {"message MSG_ID_RLC_DATA_REQ", "the same by name"},
         {"message 0xb101 --domain signal --no-layout", "only the row and its dense index"}},
        {{"CODE|NAME", "decimal or 0x code, or the name", &options->name}},
        {{"--no-layout", "", "only the row of the message table", &options->no_layout},
         {"--expand", "", "open the structures held in place", &options->expand}},
        [options](session &work) { return run_message(work, *options); },
    };
}

command messages_command()
{
    const auto pattern = std::make_shared<std::string>();
    return {
        "messages",
        "the message tables",
        "",
        {{"messages", "all rows of all domains"}, {"messages '*_DATA_REQ' --domain stack", "some rows of one"}},
        {{"PATTERN", "the names wanted, as for types", pattern.get(), false}},
        {},
        [pattern](session &work) { return run_messages(work, *pattern); },
    };
}

} // namespace solvane::tools
