#include <fmt/format.h>

#include "commands.h"
#include "json_out.h"
#include "print.h"
#include "session.h"

namespace solvane::tools {

namespace {

/// What the dictionaries say of a peer structure.
struct described {
    std::string   domains;
    std::uint64_t size = 0; ///< of the first domain that has it
};

described describe(session &work, const char *name)
{
    described out;
    for (const auto &in : work.domains()) {
        const auto use = find_type(in, name);
        if (!use) {
            continue;
        }
        out.size = out.domains.empty() ? size_of(in, resolve(in, *use)) : out.size;
        out.domains += (out.domains.empty() ? "" : ", ") + std::string(in.name);
    }
    return out;
}

void show(session &work, std::uint32_t number, const tt_peer_row &row, const described &known)
{
    if (work.settings.json) {
        json out = json_object("peer");
        out["row"] = number;
        out["name"] = row.name;
        out["octets"] = row.size;
        out["domains"] = known.domains;
        work.line(json_line(out));
        return;
    }
    work.line(fmt::format("{:>5} {:>7}  ", number, row.size) + work.paint.padded(ink::name, row.name, 44) + "  " +
              (known.domains.empty() ? work.paint(ink::bad, "not in the dictionary") : known.domains));
}

int run(session &work, const std::string &pattern)
{
    const tt_peer_table_struct &table = *work.started().peers;
    std::uint64_t               shown = 0;
    for (std::uint32_t i = 0; i < table.count; ++i) {
        const tt_peer_row &row = table.rows[i];
        if (!pattern.empty() && !matches(row.name, pattern)) {
            continue;
        }
        const described known = describe(work, row.name);
        if (known.domains.empty() && !work.settings.domain.empty()) {
            continue; /* of another domain */
        }
        ++shown;
        show(work, i, row, known);
        if (known.domains.empty()) {
            work.note_finding();
        } else if (known.size != row.size) {
            work.finding(fmt::format("{} has {} in the peer table and {} in the dictionary", row.name,
                                     counted(row.size, "octet"), known.size));
        }
    }
    if (shown == 0) {
        work.finding(pattern.empty() ? "no peer structures" : fmt::format("no peer structure fits {}", pattern));
    }
    return work.result();
}

} // namespace

command peers_command()
{
    const auto pattern = std::make_shared<std::string>();
    return {
        "peers",
        "the structures that the library can code, with their sizes",
        "Row number, octets in memory, name, and the domains whose dictionary describes the structure.  A size that\n"
        "differs from the dictionary's, or a structure that no dictionary knows, is a finding.",
        {{"peers", "the whole table"}, {"peers 'emm_*'", "the EPS mobility management messages"}},
        {{"PATTERN", "the names wanted, as for types", pattern.get(), false}},
        {},
        [pattern](session &work) { return run(work, *pattern); },
    };
}

} // namespace solvane::tools
