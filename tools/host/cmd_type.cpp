#include <fmt/format.h>

#include "commands.h"
#include "json_out.h"
#include "lookup.h"
#include "print.h"
#include "session.h"

namespace solvane::tools {

namespace {

struct type_options {
    std::string name;
    bool        expand = false;
};

/* "typedef unsigned char uint8", with the declarator levels of the row. */
std::string typedef_text(const domain &in, const rw_type_row &row)
{
    laid_member   declared;
    rw_member_row as_member = {};
    as_member.name = row.name;
    as_member.no_dims = row.no_dims;
    declared.row = &as_member;
    declared.levels = levels_of(in, resolve(in, use_of(row)));
    const bool tag = row.kind == RW_KIND_STRUCT || row.kind == RW_KIND_UNION || row.kind == RW_KIND_ENUM;
    return fmt::format("typedef {}{} {};", tag ? std::string(kind_word(row.kind)) + " " : "",
                       row.base_name != nullptr ? row.base_name : "?", declarator_of(declared));
}

/* Every typedef on the way to the type itself; the row of a tag says nothing and is left out. */
std::vector<std::string> typedef_chain(const domain &in, const type_use &use)
{
    std::vector<std::string> chain;
    resolve(in, use); /* ends a chain without end */
    type_use now = use;
    while (now.kind == RW_KIND_TYPEDEF) {
        const rw_type_row &row = in.types->types[now.index];
        if (row.no_dims != 0 || now.name != use_of(row).name) {
            chain.push_back(typedef_text(in, row));
        }
        now = use_of(row);
    }
    return chain;
}

std::string literal_text(const rw_literal_row &literal)
{
    return literal.value.valstat == RW_VS_VALID_VAL ? std::to_string(literal.value.num)
           : literal.value.valstat == RW_VS_INVAL_ASSIGNED ? "not evaluated" : "not assigned";
}

void print_enum(session &work, const rw_enum_row &row)
{
    work.line(work.paint(ink::type, fmt::format("enum {} {{", row.name)));
    for (std::uint32_t i = 0; i < row.no_literals; ++i) {
        work.line("    " + work.paint(ink::name, row.literals[i].name) + " = " +
                  work.paint(ink::number, literal_text(row.literals[i])) + ",");
    }
    work.line(work.paint(ink::type, "}; ") +
              work.paint(ink::note, "/* " + counted(row.no_literals, "literal") + " */"));
}

std::string headline(const std::vector<found_type> &found, const resolved_type &type, std::uint64_t size)
{
    std::string out = fmt::format("/* {}, {}", found[0].in->name, counted(size, "octet"));
    const auto  element = list_element(*found[0].in, type);
    out += element ? fmt::format(", list of {}", element->name) : "";
    out += found.size() > 1 ? ", also in " + other_domains(found) : "";
    return out + " */";
}

void print_type(session &work, const std::vector<found_type> &found, bool expand)
{
    const domain       &in = *found[0].in;
    const resolved_type type = resolve(in, found[0].use);
    work.line(work.paint(ink::note, headline(found, type, size_of(in, type))));
    for (const auto &line : typedef_chain(in, found[0].use)) {
        work.line(work.paint(ink::type, line));
    }
    if (type.is_record()) {
        const auto record = lay_out(in, struct_row(in, type), type.rt_tag);
        if (const char *comment = work.started().info->db_struct_comment(in.number, record.row->name)) {
            work.line(work.paint(ink::note, fmt::format("/* {} */", one_line(comment))));
        }
        print_layout(work, in, record, expand);
    } else if (type.kind == RW_KIND_ENUM) {
        print_enum(work, enum_row(in, type));
    }
}

void json_type(session &work, const std::vector<found_type> &found, bool expand)
{
    const domain       &in = *found[0].in;
    const resolved_type type = resolve(in, found[0].use);
    json                out = json_object("type");
    out["domain"] = json_enum(in.number, in.name);
    out["name"] = found[0].use.name;
    if (const auto chain = typedef_chain(in, found[0].use); !chain.empty()) {
        out["typedefs"] = chain;
    }
    if (const auto element = list_element(in, type)) {
        out["list_of"] = element->name;
    }
    if (type.is_record()) {
        out.update(json_layout(in, lay_out(in, struct_row(in, type), type.rt_tag), expand));
    } else {
        out["kind"] = json_enum(type.kind, kind_word(type.kind));
        out["octets"] = size_of(in, type);
    }
    work.line(json_line(out));
}

int run(session &work, const type_options &options)
{
    const auto found = find_in_domains(work, options.name);
    (work.settings.json ? json_type : print_type)(work, found, options.expand);
    return work.result();
}

} // namespace

command type_command()
{
    const auto options = std::make_shared<type_options>();
    return {
        "type",
        "a type laid out member by member",
        "Behind each member stand its offset and size in octets, for a bit-field its place (octet.highest-lowest "
        "bit,\n"
        "bit 7 being the most significant one, parts from the most significant on), and how it depends on others.\n"
        "Holes are octets and bits that no member takes.  A type of several domains is shown from the first of them.",
        {{"type mta_bit_map_struct", "offsets, sizes, array extents and holes"},
         {"type --expand tt_msg_struct", "with the structures inside it opened"},
         {"type qos_struct --domain umts --json", "the same for programs"}},
        {{"NAME", "a structure, union, enumeration or typedef", &options->name}},
        {{"--expand", "", "open the structures held in place", &options->expand}},
        [options](session &work) { return run(work, *options); },
    };
}

} // namespace solvane::tools
