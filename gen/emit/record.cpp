// Records, enumerations, typedefs and constants as C++: one header a definition file.
#include "emit/record.h"

#include <algorithm>
#include <limits>

#include "emit/emit.h"
#include "emit/text.h"

namespace solvane::gen {

std::string enum_name(const model &m, std::uint32_t enum_id)
{
    const enumeration &e = m.enums[enum_id];
    return e.name.empty() ? alias_name(m, e.alias_id) : cpp_identifier(e.name);
}

std::string record_name(const model &m, std::uint32_t record_id)
{
    return cpp_identifier(m.records[record_id].name);
}

std::string alias_name(const model &m, std::uint32_t alias_id)
{
    return cpp_identifier(m.aliases[alias_id].name);
}

std::string member_name(const model &m, std::uint32_t record_id, std::uint32_t member)
{
    return cpp_identifier(m.records[record_id].members[member].name);
}

bool has_typedef(const model &m, std::uint32_t alias_id)
{
    const alias &a = m.aliases[alias_id];
    if (a.list_id != no_index)
        return m.lists[a.list_id].list_alias == alias_id;
    return a.base.base != kind::enumeration || !m.enums[a.base.id].name.empty() ||
           m.enums[a.base.id].alias_id != alias_id;
}

type_use base_of(const model &m, type_use use)
{
    while (use.base == kind::type_name)
        use = m.aliases[use.id].base;
    return use;
}

// ------------------------------------------------------------------------------------------------ definitions

void put_enumeration(std::string &out, const model &m, std::uint32_t enum_id)
{
    cell_table literals;
    for (const literal &l : m.enums[enum_id].literals)
        literals.add({cpp_identifier(l.name), "= " + std::to_string(l.value) + ","},
                     l.evaluated ? "" : "the stack's own initialiser cannot be evaluated");
    put(out, "enum $name$ : std::int32_t {\n", {{"name", enum_name(m, enum_id)}});
    put_columns(out, literals);
    out += "};\n";
}

namespace {

/// Names of the members that the dictionary has, at the indices that references use.
std::vector<std::string> dictionary_members(const record &r)
{
    std::vector<std::string> names;
    for (const member &field : r.members)
        if (!field.hidden)
            names.push_back(cpp_identifier(field.name));
    return names;
}

/// What the role of a member says to a reader, or nothing.
std::string member_note(const record &r, const member &field, const std::vector<std::string> &names)
{
    if (field.hidden)
        return "not in the dictionary";
    if (field.ref == no_ref)
        return {};
    if (r.is_union)
        return "case " + std::to_string(field.ref);
    switch (field.role) {
    case role::pointer:
        return names[field.ref] + " elements";
    case role::union_:
        return "selected by " + names[field.ref];
    case role::array:
    case role::optional:
        return "present by " + names[field.ref];
    case role::plain:
    case role::count:
    case role::structure:
    case role::selector:
    case role::presence:
        break;
    }
    return {};
}

/// The type of a member.  A member that bears the name of a type would hide it from the members behind it.
std::string member_type(const model &m, const record &r, const member &field)
{
    std::string spelled = cpp_type(m, field.type);
    const bool  hidden_by_member = std::ranges::any_of(
        r.members, [&](const member &other) { return cpp_identifier(other.name) == spelled; });
    return hidden_by_member ? "::" + spelled : spelled;
}

} // namespace

void put_record(std::string &out, const model &m, std::uint32_t record_id)
{
    const record                  &r = m.records[record_id];
    const std::vector<std::string> names = dictionary_members(r);

    cell_table members;
    for (const member &field : r.members) {
        std::string declared = declarator(cpp_identifier(field.name), field.dims);
        if (field.bit_width != 0)
            declared += " : " + std::to_string(field.bit_width);
        members.add({member_type(m, r, field), declared + ";"}, member_note(r, field, names));
    }
    put(out, "$key$ $name$ {\n", {{"key", r.is_union ? "union" : "struct"}, {"name", record_name(m, record_id)}});
    put_columns(out, members);
    out += "};\n";
}

void put_typedef(std::string &out, const model &m, std::uint32_t alias_id)
{
    const alias &a = m.aliases[alias_id];
    std::string  note;
    if (a.list_id != no_index) {
        const alias &element = m.aliases[m.lists[a.list_id].element_alias];
        note = " // of " + cpp_type(m, element.base);
    }
    put(out, "typedef $base$ $declarator$;$note$\n",
        {{"base", cpp_type(m, a.base)},
         {"declarator", declarator(alias_name(m, alias_id), a.dims)},
         {"note", note}});
}

void put_forward(std::string &out, const model &m, std::uint32_t record_id)
{
    put(out, "$key$ $name$;\n",
        {{"key", m.records[record_id].is_union ? "union" : "struct"}, {"name", record_name(m, record_id)}});
}

namespace {

void put_constant(std::string &out, const constant &c)
{
    const bool  fits = c.value >= std::numeric_limits<std::int32_t>::min() &&
                      c.value <= std::numeric_limits<std::int32_t>::max();
    const bool  fits_unsigned = c.value >= 0 && c.value <= std::numeric_limits<std::uint32_t>::max();
    put(out, "inline constexpr std::$type$ $name$ = $value$;\n",
        {{"type", fits ? "int32_t" : fits_unsigned ? "uint32_t" : "int64_t"},
         {"name", cpp_identifier(c.name)},
         {"value", std::to_string(c.value)}});
}

/// One-line definitions of a kind follow each other closely; everything else has an empty line ahead of it.
void put_definitions(std::string &out, const model &m, const unit &u)
{
    auto last = definition::what::record;
    for (const definition &d : u.definitions) {
        if (d.kind == definition::what::alias && !has_typedef(m, d.id))
            continue;
        const bool one_line = d.kind == definition::what::alias || d.kind == definition::what::constant;
        if (!one_line || d.kind != last)
            out += '\n';
        last = d.kind;
        switch (d.kind) {
        case definition::what::enumeration: put_enumeration(out, m, d.id); break;
        case definition::what::record: put_record(out, m, d.id); break;
        case definition::what::alias: put_typedef(out, m, d.id); break;
        case definition::what::constant: put_constant(out, m.constants[d.id]); break;
        }
    }
}

std::string unit_header(const model &m, const unit &u)
{
    const bool  by_hand = !u.declared_in.empty();
    std::string out;
    put_head(out, by_hand ? "The types of " + u.declared_in + "." : "Records of " + u.stem + ".", u.path);
    out += "#pragma once\n\n";
    if (by_hand)
        put(out, "#include \"$header$\"\n", {{"header", u.declared_in}});
    else
        out += "#include <cstdint>\n";
    if (!u.imports.empty())
        out += '\n';
    for (const std::uint32_t id : u.imports)
        put(out, "#include \"$stem$.h\"\n", {{"stem", m.units[id].stem}});
    if (by_hand)
        return out;
    if (!u.forward_records.empty())
        out += '\n';
    for (const std::uint32_t id : u.forward_records)
        put_forward(out, m, id);
    put_definitions(out, m, u);
    return out;
}

} // namespace

void emit_records(const model &m, std::vector<output_file> &files)
{
    for (const unit &u : m.units)
        files.push_back({"production/" + u.stem + ".h", unit_header(m, u)});
}

} // namespace solvane::gen
