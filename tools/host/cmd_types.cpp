#include <fmt/format.h>

#include "commands.h"
#include "json_out.h"
#include "print.h"
#include "session.h"

namespace solvane::tools {

namespace {

struct types_options {
    std::string              pattern;
    std::vector<std::string> kinds;
    std::string              member;
};

/* A name that is a tag of its own is a struct, union or enum; one that stands for another type is a typedef. */
std::string kind_of(const domain &in, const type_use &use)
{
    if (use.kind != RW_KIND_TYPEDEF) {
        return kind_word(use.kind);
    }
    const rw_type_row &row = in.types->types[use.index];
    const bool         tag = row.no_dims == 0 && row.base_name != nullptr && use.name == row.base_name;
    return tag ? kind_word(row.kind) : "typedef";
}

bool has_member(const domain &in, const resolved_type &type, const std::string &pattern)
{
    if (!type.is_record()) {
        return false;
    }
    const rw_struct_row &row = struct_row(in, type);
    for (std::uint32_t i = 0; i < row.no_members; ++i) {
        if (matches(row.members[i].name, pattern)) {
            return true;
        }
    }
    return false;
}

bool wanted(const types_options &options, const domain &in, std::string_view name, const std::string &kind,
            const resolved_type &type)
{
    const bool kind_fits = options.kinds.empty() ||
                           std::find(options.kinds.begin(), options.kinds.end(), kind) != options.kinds.end();
    return kind_fits && (options.pattern.empty() || matches(name, options.pattern)) &&
           (options.member.empty() || has_member(in, type, options.member));
}

/* A typedef of a structure need not be resolved again for every name, but a broken row is told where it stands. */
int run(session &work, const types_options &options)
{
    std::uint64_t shown = 0;
    for (const auto &in : work.domains()) {
        for (const std::string_view name : type_names(in)) {
            if (!options.pattern.empty() && !matches(name, options.pattern)) {
                continue;
            }
            const auto          use = *find_type(in, name);
            const resolved_type type = resolve(in, use);
            const std::string   kind = kind_of(in, use);
            if (!wanted(options, in, name, kind, type)) {
                continue;
            }
            ++shown;
            const auto size = size_of(in, type);
            if (work.settings.json) {
                json out = json_object("type-name");
                out["domain"] = json_enum(in.number, in.name);
                out["name"] = name;
                out["kind"] = kind;
                out["octets"] = size;
                work.line(json_line(out));
            } else {
                work.line(work.paint.padded(ink::module, in.name, 15) + work.paint.padded(ink::type, kind, 8) +
                          fmt::format("{:>6}  ", size) + work.paint(ink::name, name));
            }
        }
    }
    if (shown == 0) {
        work.finding(options.pattern.empty() ? "no type fits" : fmt::format("no type fits {}", options.pattern));
    }
    return work.result();
}

} // namespace

command types_command()
{
    const auto options = std::make_shared<types_options>();
    return {
        "types",
        "the names of types, with kind and size",
        "A pattern with * or ? has to fit the whole name; any other is found wherever it stands.  Case is ignored.",
        {{"types 'mm_peer_*'", "all types whose names begin so"},
         {"types --kind union --domain lte", "the unions of the LTE domain"},
         {"types --member no_touple", "structures that have such a member"}},
        {{"PATTERN", "the names wanted", &options->pattern, false}},
        {{"--kind", "KIND", "struct, union, enum or typedef; may be repeated", &options->kinds,
          {"struct", "union", "enum", "typedef"}},
         {"--member", "PATTERN", "only structures with such a member", &options->member}},
        [options](session &work) { return run(work, *options); },
    };
}

} // namespace solvane::tools
