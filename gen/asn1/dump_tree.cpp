// Modules as text again.
#include "asn1/dump_tree.h"

#include <fmt/format.h>

namespace solvane::gen::asn1 {
namespace {

std::string type_text(const type &t, std::size_t depth);

std::string end_text(const std::optional<value> &v, std::string_view none)
{
    return v ? spelled(*v) : std::string(none);
}

std::string set_text(const constraint_set &set, std::size_t depth);

std::string element_text(const constraint &c, std::size_t depth)
{
    switch (c.kind) {
    case constraint::what::range:
        return end_text(c.low, "MIN") + (c.low && c.high && spelled(*c.low) == spelled(*c.high)
                                             ? "" : ".." + end_text(c.high, "MAX"));
    case constraint::what::size: return "SIZE " + set_text(c.inner.front(), depth);
    case constraint::what::alphabet: return "FROM " + set_text(c.inner.front(), depth);
    case constraint::what::containing: return "CONTAINING " + type_text(c.types.front(), depth);
    case constraint::what::components: return "WITH COMPONENTS {}";
    case constraint::what::table: return "{}";
    case constraint::what::described: return "CONSTRAINED BY {}";
    case constraint::what::subtype: return type_text(c.types.front(), depth);
    }
    return {};
}

std::string set_text(const constraint_set &set, std::size_t depth)
{
    std::string out;
    for (const constraint &c : set.any_of)
        out += (out.empty() ? "" : " | ") + element_text(c, depth);
    return "(" + out + (set.extensible ? ", ...)" : ")");
}

std::string tags_text(const type &t)
{
    static constexpr std::string_view classes[] = {"UNIVERSAL ", "APPLICATION ", "", "PRIVATE "};
    static constexpr std::string_view modes[] = {"", "EXPLICIT ", "IMPLICIT "};
    std::string                       out;
    for (const tag &g : t.tags)
        out += fmt::format("[{}{}] {}", classes[static_cast<std::size_t>(g.where_from)], spelled(g.number),
                           modes[static_cast<std::size_t>(g.mode)]);
    return out;
}

std::string numbers_text(const type &t)
{
    std::string out;
    bool        marked = false;
    for (const named_number &n : t.numbers) {
        if (n.is_addition && !marked)
            out += ", ...";
        marked = marked || n.is_addition;
        out += (out.empty() ? "" : ", ") + n.id.text + (n.number ? "(" + spelled(*n.number) + ")" : "");
    }
    if (t.extensible && !marked)
        out += ", ...";
    return out.empty() ? "" : " { " + out + " }";
}

std::string member_text(const member &m, std::size_t depth)
{
    if (m.is_components_of)
        return "COMPONENTS OF " + type_text(m.of.front(), depth);
    std::string out = m.id.text + " " + type_text(m.of.front(), depth);
    if (m.presence == presence::optional)
        out += m.is_group ? " -- group" : " OPTIONAL";
    if (m.presence == presence::with_default)
        out += " DEFAULT " + spelled(*m.fallback);
    return out;
}

std::string members_text(const type &t, std::size_t depth)
{
    std::string out = " {\n";
    bool        added = false;
    const auto  marker = [&] { out += std::string(4 * (depth + 1), ' ') + "...\n"; };
    for (const member &m : t.members) {
        if (m.is_addition != added)
            marker();
        added = m.is_addition;
        out += std::string(4 * (depth + 1), ' ') + member_text(m, depth + 1) + "\n";
    }
    if (t.extensible && !added && (t.members.empty() || !t.members.back().is_addition))
        marker();
    return out + std::string(4 * depth, ' ') + "}";
}

std::string_view kind_text(type_kind kind)
{
    switch (kind) {
    case type_kind::boolean: return "BOOLEAN";
    case type_kind::integer: return "INTEGER";
    case type_kind::enumerated: return "ENUMERATED";
    case type_kind::null: return "NULL";
    case type_kind::octets: return "OCTET STRING";
    case type_kind::bits: return "BIT STRING";
    case type_kind::real: return "REAL";
    case type_kind::object_identifier: return "OBJECT IDENTIFIER";
    case type_kind::any: return "ANY";
    case type_kind::sequence: return "SEQUENCE";
    case type_kind::set: return "SET";
    case type_kind::sequence_of: return "SEQUENCE";
    case type_kind::set_of: return "SET";
    case type_kind::choice: return "CHOICE";
    case type_kind::characters:
    case type_kind::reference:
    case type_kind::class_field: break;
    }
    return {};
}

std::string arguments_text(const type &t, std::size_t depth)
{
    std::string out;
    for (const type &argument : t.arguments)
        out += (out.empty() ? "" : ", ") + type_text(argument, depth);
    return out.empty() ? "" : " { " + out + " }";
}

std::string type_text(const type &t, std::size_t depth)
{
    std::string out = tags_text(t) + std::string(kind_text(t.kind));
    switch (t.kind) {
    case type_kind::characters: out += t.text; break;
    case type_kind::reference:
        out += (t.module.empty() ? "" : t.module + ".") + t.text + arguments_text(t, depth);
        break;
    case type_kind::class_field: out += t.text + ".&" + t.field; break;
    case type_kind::sequence:
    case type_kind::set:
    case type_kind::choice: out += members_text(t, depth); break;
    default: out += numbers_text(t); break;
    }
    for (const constraint_set &set : t.constraints)
        out += " " + set_text(set, depth);
    if (!t.element.empty())
        out += " OF " + type_text(t.element.front(), depth);
    return out;
}

std::string assignment_text(const assignment &a)
{
    std::string out = a.id.text;
    for (const name &p : a.parameters)
        out += (&p == &a.parameters.front() ? " { " : ", ") + p.text;
    out += a.parameters.empty() ? "" : " }";
    switch (a.kind) {
    case assignment_kind::type: return out + " ::= " + type_text(a.of.front(), 0);
    case assignment_kind::value:
    case assignment_kind::object: return out + " " + type_text(a.of.front(), 0) + " ::= " + spelled(*a.content);
    case assignment_kind::value_set:
    case assignment_kind::object_set: return out + " " + type_text(a.of.front(), 0) + " ::= {}";
    case assignment_kind::object_class: break;
    }
    return out + " ::= CLASS {}";
}

} // namespace

std::string spelled(const value &v)
{
    switch (v.kind) {
    case value::what::number: return std::to_string(v.number);
    case value::what::reference: return (v.module.empty() ? "" : v.module + ".") + v.text;
    case value::what::boolean: return v.number != 0 ? "TRUE" : "FALSE";
    case value::what::null: return "NULL";
    case value::what::bits: return "'" + v.text + "'B";
    case value::what::hex: return "'" + v.text + "'H";
    case value::what::text: return "\"" + v.text + "\"";
    case value::what::braces: break;
    }
    std::string out;
    for (const name &word : v.names)
        out += (out.empty() ? "" : ", ") + word.text;
    return "{" + out + "}";
}

std::string dump_tree(const module &m)
{
    std::string out = m.id.text + " DEFINITIONS" + (m.automatic_tags ? " AUTOMATIC TAGS" : "") + " ::=\n";
    for (const import_list &list : m.imports) {
        out += "import";
        for (const name &symbol : list.symbols)
            out += " " + symbol.text;
        out += " from " + list.from.text + "\n";
    }
    for (const assignment &a : m.assignments)
        out += assignment_text(a) + "\n";
    return out + "\n";
}

} // namespace solvane::gen::asn1
