#include <algorithm>

#include <fmt/format.h>

#include "agent_packet.h"
#include "commands.h"
#include "failure.h"
#include "interrupt.h"
#include "json_out.h"
#include "layout_answers.h"
#include "layout_compare.h"
#include "live.h"
#include "lookup.h"
#include "order.h"
#include "peer_message.h"
#include "print.h"

namespace solvane::tools {

namespace {

constexpr std::uint64_t usual_time = 10; /* seconds */
constexpr std::size_t   widest_name = 40;
constexpr std::size_t   most_named = 6; /* members in a line of the list */

struct layout_options {
    std::string                  name;
    std::string                  read;
    std::optional<std::uint64_t> within;
    bool                         all = false;
    live_options                 live;
};

void take(session &work, layout_answers &answers, const packet &what)
{
    std::string complaint = what.complaint;
    if (complaint.empty() && what.kind == packet_kind::agent && what.way != direction::out) {
        answers.take(what.content, complaint);
    }
    if (!complaint.empty()) {
        work.finding(fmt::format("packet {}: {}", what.number, complaint));
    }
}

void read_recording_of(session &work, const layout_options &options, layout_answers &answers)
{
    const auto source = open_recording(options.read, [&work]() -> const plugin & { return work.started(); });
    while (const auto next = source->next()) {
        take(work, answers, *next);
    }
    if (!answers.complete()) {
        throw failure(exit_findings, fmt::format("{} does not tell the target's layout of {}", options.read,
                                                 answers.missing()));
    }
}

/* Answers 4 when the target is of another build, else 0. */
int ask_target(session &work, layout_options &options, layout_answers &answers)
{
    options.live.orders = {"MTA_TT_OFFSIZE_REQ"};
    options.live.once = true;
    live_stream        stream(work, options.live);
    const std::int64_t limit =
        steady_now() + static_cast<std::int64_t>(options.within.value_or(usual_time)) * 1'000'000'000;
    while (!answers.complete()) {
        const auto next = stream.next(limit);
        if (!next && interrupted()) {
            throw failure(exit_interrupted, "interrupted");
        }
        if (!next) {
            throw failure(exit_expectation,
                          fmt::format("{}: no layout of {}",
                                      stream.expired(limit) ? "the time is over" : "the agent left",
                                      answers.missing()));
        }
        take(work, answers, *next);
    }
    return stream.mismatch() ? exit_mismatch : exit_done;
}

std::string place_text(const member_place &place)
{
    return place.bits.empty() ? fmt::format("{:5} {:5}", place.offset, place.size) : fmt::format("{:>11}", place.bits);
}

json place_json(const member_place &place)
{
    return place.bits.empty() ? json{{"offset", place.offset}, {"octets", place.size}} : json{{"bits", place.bits}};
}

void print_record(session &work, const domain &in, const compared_record &found)
{
    const std::string title = fmt::format("{} {}", kind_word(found.row->kind), found.row->name);
    std::size_t       column = std::min(title.size(), widest_name);
    for (const auto &member : found.members) {
        column = std::max(column, std::min(std::string_view(member.row->name).size(), widest_name));
    }
    work.line(work.paint(ink::note, fmt::format("/* {} */", in.name)));
    work.line(fmt::format("  {}  {:>11}  {:>11}",
                          work.paint.padded(ink::type, title, column), "target", "tool"));
    for (const auto &member : found.members) {
        const std::string places = fmt::format("{}  {}", place_text(member.target), place_text(member.tool));
        work.line((member.differs() ? work.paint(ink::bad, "! ") : "  ") +
                  work.paint.padded(ink::name, member.row->name, column) + "  " +
                  work.paint(member.differs() ? ink::bad : ink::plain, places));
    }
    const bool sizes = found.target_size != found.tool_size;
    work.line((sizes ? work.paint(ink::bad, "! ") : "  ") + work.paint.padded(ink::note, "(size)", column) +
              work.paint(sizes ? ink::bad : ink::plain,
                         fmt::format("  {:>11}  {:>11}", found.target_size, found.tool_size)));
}

std::string differing_members(const compared_record &found)
{
    std::string out;
    std::size_t count = 0;
    for (const auto &member : found.members) {
        if (member.differs() && ++count <= most_named) {
            out.append(out.empty() ? "" : ", ").append(member.row->name);
        }
    }
    return count > most_named ? fmt::format("{} and {} more", out, count - most_named) : out;
}

void list_record(session &work, const domain &in, const compared_record &found)
{
    const std::string sizes = found.target_size == found.tool_size
                                  ? counted(found.tool_size, "octet")
                                  : fmt::format("{} octets, here {}", found.target_size, found.tool_size);
    const std::string members = differing_members(found);
    work.line(work.paint.padded(ink::module, in.name, 15) + work.paint(ink::type, found.row->name) + "  " + sizes +
              (members.empty() ? "" : "  " + members));
}

void json_record(session &work, const domain &in, const compared_record &found)
{
    json out = json_object("layout");
    out["domain"] = json_enum(in.number, in.name);
    out["name"] = found.row->name;
    out["differs"] = found.differs();
    out["octets"] = {{"target", found.target_size}, {"tool", found.tool_size}};
    out["members"] = json::array();
    for (const auto &member : found.members) {
        out["members"].push_back({{"name", member.row->name},
                                  {"differs", member.differs()},
                                  {"target", place_json(member.target)},
                                  {"tool", place_json(member.tool)}});
    }
    work.line(json_line(out));
}

void show_named(session &work, const std::string &name)
{
    for (const auto &found : find_in_domains(work, name)) {
        const resolved_type type = resolve(*found.in, found.use);
        if (!type.is_record()) {
            throw failure(exit_findings, fmt::format("{} is no structure", name));
        }
        const auto compared =
            compare_layouts(on_target(work.started(), *found.in), *found.in, struct_row(*found.in, type));
        (work.settings.json ? json_record : print_record)(work, *found.in, compared);
        if (compared.differs()) {
            work.note_finding();
        }
    }
}

void show_list(session &work, bool all)
{
    std::size_t differing = 0;
    std::size_t count = 0;
    for (const auto &in : work.domains()) {
        const domain target = on_target(work.started(), in);
        const std::string theirs = basic_types_text(target);
        const std::string ours = basic_types_text(in);
        if (theirs != ours) {
            work.finding(fmt::format("domain {}: the target has {}, the plug-in {}", in.name, theirs, ours));
        }
        for (const auto &row : in.structs()) {
            const auto found = compare_layouts(target, in, row);
            ++count;
            differing += found.differs() ? 1 : 0;
            if (found.differs() || all) {
                (work.settings.json ? json_record : list_record)(work, in, found);
            }
        }
    }
    if (differing != 0) {
        work.note_finding();
    }
    work.remark(fmt::format("{} of {} differ", differing, counted(count, "structure")));
}

int run(session &work, layout_options &options)
{
    lend_memory(*work.loaded().version);
    layout_answers answers(work.started());
    int            mismatch = exit_done;
    if (options.read.empty()) {
        mismatch = ask_target(work, options, answers);
    } else {
        read_recording_of(work, options, answers);
    }
    if (options.name.empty()) {
        show_list(work, options.all);
    } else {
        show_named(work, options.name);
    }
    return mismatch != exit_done ? mismatch : work.result();
}

} // namespace

command layout_command()
{
    const auto options = std::make_shared<layout_options>();
    return {
        "layout",
        "where the target lays structures out otherwise than this library does",
        "The target is asked for its layout, or a recording is read in which it told it.  Without a name every\n"
        "structure that differs gets a line; with one its members stand side by side: offset and octets, or a\n"
        "bit-field's place.  Exit code 1 when something differs, 5 when the target does not answer in time.",
        {{"layout --port 4711", "what differs"},
         {"layout mta_bit_map_struct --port 4711", "a structure side by side"},
         {"layout -r run.pcapng --domain lte --json", "from a recording, for programs"}},
        {{"NAME", "a structure or union", &options->name, false}},
        [&] {
            std::vector<option_spec> table = {
                {"-r,--read", "FILE", "a recording with the target's answers", &options->read, {}, completes::file},
                {"--within", "SECONDS", "wait no longer for the answers; 10 unless told", &options->within},
                {"--all", "", "also structures that do not differ", &options->all},
            };
            const auto more = live_option_table(options->live);
            table.insert(table.end(), more.begin(), more.end());
            return table;
        }(),
        [options](session &work) { return run(work, *options); },
    };
}

} // namespace solvane::tools
