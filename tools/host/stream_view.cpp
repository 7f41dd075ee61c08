#include "stream_view.h"

#include <algorithm>

#include <fmt/format.h>
#include <fnmatch.h>

#include "failure.h"
#include "json_out.h"
#include "lookup.h"
#include "message_tree.h"
#include "print.h"
#include "times.h"
#include "trace_print.h"

namespace solvane::tools {

namespace {

constexpr std::size_t longest_peer = 16; /* octets of a message that its line shows */

/// One record, made ready for filters and lines.
struct record {
    const char                  *kind = "";     ///< as --only names it
    const char                  *schema = "";
    std::string                  head;          ///< in the module's column
    ink                          colour = ink::module;
    std::vector<std::string>     modules;       ///< that it belongs to
    std::string                  file;
    std::string                  text;
    std::string                  place;
    std::string                  peer;          ///< structure of a message
    std::optional<std::uint32_t> trace_id;
    std::optional<std::uint64_t> level;
    std::string                  complaint;     ///< shown, but not as it should be
    json                         object;        ///< behind packet, time and direction
    std::optional<value_node>    body;          ///< with --bodies
};

const value_node *member_of(const value_node &node, std::string_view name)
{
    const auto found = std::find_if(node.children.begin(), node.children.end(),
                                    [name](const value_node &child) { return child.name == name; });
    return found != node.children.end() && found->form != shape::cut ? &*found : nullptr;
}

std::uint32_t number_in(const value_node &node, std::string_view name)
{
    const value_node *member = member_of(node, name);
    return member != nullptr ? static_cast<std::uint32_t>(member->number) : 0;
}

std::string or_number(const std::string &literal, std::uint32_t number)
{
    return literal.empty() ? std::to_string(number) : literal;
}

/* The literals of the modules of all domains, for the filters. */
std::vector<std::string> module_names(const std::vector<domain> &all)
{
    std::vector<std::string> out;
    for (const auto &in : all) {
        const char        *name = in.row->module_enum;
        const rw_enum_row *row = name != nullptr && *name != '\0' ? find_enum(in, name) : nullptr;
        for (std::uint32_t i = 0; row != nullptr && i < row->no_literals; ++i) {
            out.emplace_back(row->literals[i].name);
        }
    }
    return out;
}

} // namespace

struct stream_view::state {
    state(session &session, const view_options &chosen)
        : work(session), options(chosen), all(domains_of(session.started())), times(chosen.times),
          filter(chosen.filter, session.started(), module_names(all))
    {
        const auto entities = chosen_domains(session.started(), session.settings.domain.empty()
                                                                    ? "stack" : session.settings.domain);
        entity = entities.front();
    }

    const domain *domain_numbered(std::uint32_t number) const;
    std::string   code_name(const char *enumeration, std::uint8_t code) const;

    record trace_record(const trace_line &line) const;
    record note_record(const packet &what) const;
    record message_record(const layer_message &message);
    record code_record(const packet &what);
    void   fill_statement(record &out, const value_node &tree) const;
    void   classify_message(const layer_message &message, record &out);
    std::optional<record> record_of(const packet &what, std::string &complaint);

    bool wanted(const record &what) const;
    void show(const packet &what, const record &found, const std::optional<trace_line> &line);
    void bad(const packet &what, const std::string &why);

    session            &work;
    const view_options &options;
    std::vector<domain> all;
    domain              entity;
    time_format         times;
    trace_filter        filter;
    std::uint64_t       shown = 0;
    std::uint64_t       bad_count = 0;
    bool                died = false;
};

const domain *stream_view::state::domain_numbered(std::uint32_t number) const
{
    const auto found = std::find_if(all.begin(), all.end(), [number](const domain &each) {
        return static_cast<std::uint32_t>(each.number) == number;
    });
    return found != all.end() ? &*found : nullptr;
}

/* The literal of a report or command; the list of the plug-in decides, whatever build this tool comes from. */
std::string stream_view::state::code_name(const char *enumeration, std::uint8_t code) const
{
    for (const auto &in : all) {
        const rw_enum_row    *row = find_enum(in, enumeration);
        const rw_literal_row *literal = row != nullptr ? find_literal(*row, code) : nullptr;
        if (literal != nullptr) {
            return literal->name;
        }
    }
    return {};
}

record stream_view::state::trace_record(const trace_line &line) const
{
    record out;
    out.kind = "traces";
    out.head = line.module;
    out.modules = {line.module};
    out.file = line.file;
    out.text = line.text;
    out.trace_id = line.id;
    out.complaint = !line.known ? "unknown trace id" : line.wrong_count ? "too few arguments" : "";
    return out;
}

record stream_view::state::note_record(const packet &what) const
{
    record out;
    out.kind = "link";
    out.schema = "link";
    out.head = "link";
    out.colour = ink::note;
    out.text = what.note;
    out.object["text"] = what.note;
    return out;
}

void stream_view::state::classify_message(const layer_message &message, record &out)
{
    const verdict found = classify(work.started(), message, static_cast<std::uint8_t>(entity.number));
    if (found.died) {
        died = true;
        out.complaint = "the library died on this message";
    }
    out.peer = found.name;
    if (found.name.empty() || !options.bodies || peer_row(work.started(), found.name) == nullptr) {
        return;
    }
    const message_tree tree = tree_of(work, found.name, message.peer, options.isolate);
    died = died || tree.died;
    out.complaint = tree.died ? "the library died on this message" : tree.remarks;
    if (tree.read) {
        out.body = tree.value;
    }
}

record stream_view::state::message_record(const layer_message &message)
{
    const auto literal = [this](const char *tt_entity_info::*field, std::uint32_t value) {
        return literal_text(entity, field, value);
    };
    const std::string src = literal(&tt_entity_info::module_enum, message.src_mod_id);
    const std::string dest = literal(&tt_entity_info::module_enum, message.dest_mod_id);
    const std::string sap = literal(&tt_entity_info::sap_enum, message.sap_id);
    const std::string msg = literal(&tt_entity_info::msg_enum, message.msg_id);
    record            out;
    out.kind = "messages";
    out.schema = "message";
    classify_message(message, out);
    out.head = or_number(src, message.src_mod_id);
    out.modules = {src, dest};
    out.text = fmt::format("> {}  {}  {}", or_number(dest, message.dest_mod_id), or_number(msg, message.msg_id),
                           out.peer.empty() ? "no peer structure" : out.peer);
    const auto shown_octets = std::span(message.peer).first(std::min(message.peer.size(), longest_peer));
    out.place = message.peer.empty() ? "" : to_hex(shown_octets);
    out.place += shown_octets.size() < message.peer.size() ? fmt::format("... {} octets", message.peer.size()) : "";
    out.object["frame"] = message.frame_number;
    out.object["domain"] = json_enum(entity.number, entity.name);
    out.object["src"] = json_enum(message.src_mod_id, src);
    out.object["dest"] = json_enum(message.dest_mod_id, dest);
    out.object["sap"] = json_enum(message.sap_id, sap);
    out.object["message"] = json_enum(message.msg_id, msg);
    out.object["local"] = to_hex(message.local_params);
    out.object["peer"] = to_hex(message.peer);
    out.object["struct"] = out.peer.empty() ? json(nullptr) : json(out.peer);
    return out;
}

/* Prints, logs and failed assertions: statements of a module at a place in its sources. */
void stream_view::state::fill_statement(record &out, const value_node &tree) const
{
    const domain *of = domain_numbered(number_in(tree, "module_entity_code"));
    const domain *place = domain_numbered(number_in(tree, "file_entity_code"));
    const auto    name = [](const domain *in, const char *tt_entity_info::*field, std::uint32_t value) {
        return or_number(in != nullptr ? literal_text(*in, field, value) : "", value);
    };
    out.head = name(of, &tt_entity_info::module_enum, number_in(tree, "modulecode"));
    out.modules = {out.head};
    out.file = name(place, &tt_entity_info::file_code_enum, number_in(tree, "filecode"));
    out.place = fmt::format("({}:{})", out.file, number_in(tree, "lineno"));
    out.text += "  " + name(of, &tt_entity_info::channels_enum, number_in(tree, "channel"));
    if (member_of(tree, "level") != nullptr) {
        out.level = number_in(tree, "level");
        out.text += fmt::format(" level {}", *out.level);
    }
    out.text += fmt::format(" opcode {}", number_in(tree, "opcode"));
    for (const char *member : {"prelems", "parameters", "parameter", "str"}) {
        if (const value_node *values = member_of(tree, member)) {
            out.text += "  " + inline_text(*values);
        }
    }
}

/* Any other packet: its code, and what its structure holds. */
record stream_view::state::code_record(const packet &what)
{
    const bool         command = what.way == direction::out;
    const std::uint8_t code = what.content[0];
    const char        *structure = command ? command_struct(code) : report_struct(code);
    const char        *codes = command ? "mta_tt_command_enum" : "mta_tt_report_enum";
    const std::string  name = structure != nullptr ? code_name(codes, code) : ""; /* the lists end in their lengths */
    const octets       message(what.content.begin() + 1, what.content.end());
    record             out;
    out.kind = command ? "commands" : "reports";
    out.schema = command ? "command" : "report";
    out.head = command ? "host" : "agent";
    out.colour = ink::type;
    out.text = or_number(name, code);
    out.object["code"] = json_enum(code, name);
    const message_tree tree =
        structure != nullptr ? tree_of(work, structure, message, options.isolate) : message_tree();
    died = died || tree.died;
    if (!tree.read) {
        out.complaint = structure == nullptr ? "a code that there is no structure for"
                        : tree.died          ? "the library died"
                                             : "";
        out.text += message.empty() ? "" : "  " + octets_text(message);
        out.object["octets"] = to_hex(message);
        return out;
    }
    out.complaint = tree.remarks;
    out.object["struct"] = structure;
    out.object["value"] = json_value(tree.value);
    if (member_of(tree.value, "modulecode") != nullptr) {
        out.kind = "prints";
        out.schema = "print";
        out.colour = ink::module;
        fill_statement(out, tree.value);
        out.object["module"] = out.head;
        out.object["file"] = out.file;
    } else if (const std::string members = inline_text(tree.value); !members.empty()) {
        out.text += "  " + members;
    }
    return out;
}

std::optional<record> stream_view::state::record_of(const packet &what, std::string &complaint)
{
    if (what.kind == packet_kind::other) {
        return std::nullopt;
    }
    if (what.kind == packet_kind::note) {
        return note_record(what);
    }
    if (what.content.empty()) {
        complaint = "an empty packet";
        return std::nullopt;
    }
    if (carries_message(what)) {
        const auto message = parse_layer_message(std::span(what.content).subspan(1), complaint);
        return message ? std::optional(message_record(*message)) : std::nullopt;
    }
    return code_record(what);
}

bool stream_view::state::wanted(const record &what) const
{
    const auto fits = [&](const std::string &pattern) { return fnmatch(pattern.c_str(), what.peer.c_str(), 0) == 0; };
    const auto &only = options.only;
    if (!only.empty() && std::find(only.begin(), only.end(), what.kind) == only.end()) {
        return false;
    }
    if ((options.level && what.level && *what.level > *options.level) ||
        (!options.peers.empty() && std::none_of(options.peers.begin(), options.peers.end(), fits)) ||
        std::any_of(options.not_peers.begin(), options.not_peers.end(), fits)) {
        return false;
    }
    filter_subject subject = {what.trace_id, {what.modules.begin(), what.modules.end()}, what.file, what.text};
    return filter.passes(subject);
}

void stream_view::state::show(const packet &what, const record &found, const std::optional<trace_line> &line)
{
    ++shown;
    const std::string time = times.text(what.time);
    if (line) {
        work.line(work.settings.json ? json_line(trace_json(what, *line)) : trace_text(work, time, *line));
    } else if (work.settings.json) {
        json out = packet_json(found.schema, what);
        out.update(found.object);
        if (found.body) {
            out["value"] = json_value(*found.body);
        }
        if (!found.complaint.empty()) {
            out["error"] = found.complaint;
        }
        work.line(json_line(out));
    } else {
        const std::string text = one_line(found.text);
        const std::string remark = found.complaint.empty() ? "" : "  " + work.paint(ink::bad, found.complaint);
        work.line(stream_line(work, time, found.colour, found.head, text + remark, found.place));
        if (found.body) {
            print_value(work, brief(*found.body));
        }
    }
    if (!found.complaint.empty()) {
        work.note_finding();
    }
}

void stream_view::state::bad(const packet &what, const std::string &why)
{
    ++bad_count;
    work.note_finding();
    work.line(work.settings.json ? json_line(bad_packet_json("bad-packet", what, why))
                                 : bad_packet_line(work, times.text(what.time), what, why));
}

std::vector<option_spec> view_option_table(view_options &into)
{
    std::vector<option_spec> out = {
        {"-c,--count", "COUNT", "end after so many records shown", &into.count},
        {"-t,--time", "FORMAT", "relative, delta, absolute, epoch or none", &into.times},
        {"--only", "KIND", "only these; can be given more than once", &into.only,
         {"traces", "messages", "prints", "reports", "commands", "link"}},
        {"--way", "WAY", "only what came in or went out", &into.way, {"in", "out"}},
        {"--level", "MAX", "prints and failed assertions up to this level", &into.level},
        {"--peer", "NAME", "only messages of this structure, * and ? fit any text", &into.peers},
        {"--not-peer", "NAME", "no messages of this structure", &into.not_peers},
        {"--bodies", "", "show what the messages hold, member by member", &into.bodies},
        {"--isolate", "", "decode everything in a child process", &into.isolate},
    };
    const auto filters = filter_options(into.filter);
    out.insert(out.end(), filters.begin(), filters.end());
    return out;
}

stream_view::stream_view(session &work, const view_options &options)
{
    lend_memory(*work.loaded().version);
    state_ = std::make_unique<state>(work, options);
}

stream_view::~stream_view() = default;

void stream_view::take(const packet &what)
{
    state &at = *state_;
    at.times.pass(what.time);
    const bool other_way = !at.options.way.empty() && what.way != direction::unknown &&
                           (at.options.way == "in") != (what.way == direction::in);
    if (other_way) {
        return;
    }
    if (!what.complaint.empty()) {
        at.bad(what, what.complaint);
        return;
    }
    const auto line = decode_trace(at.work.started(), what, at.options.isolate);
    if (line && (line->died || !line->complaint.empty())) {
        at.died = at.died || line->died;
        at.bad(what, line->died ? fmt::format("the decoder died on trace {:#010x}", line->id) : line->complaint);
    }
    if (line && (line->died || (line->text.empty() && !line->known))) {
        return;
    }
    std::string complaint;
    const auto  found = line ? std::optional(at.trace_record(*line)) : at.record_of(what, complaint);
    if (!complaint.empty()) {
        at.bad(what, complaint);
    } else if (found && at.wanted(*found)) {
        at.show(what, *found, line);
    }
}

bool stream_view::enough() const
{
    return state_->options.count && state_->shown >= *state_->options.count;
}

int stream_view::end()
{
    if (state_->bad_count != 0) {
        state_->work.remark(fmt::format("{} shown, {} bad", state_->shown, state_->bad_count));
    }
    return state_->died ? exit_decoder_died : state_->work.result();
}

} // namespace solvane::tools
