// Prints a syntax tree in the language again, in one fixed form.
#include <array>

#include <fmt/format.h>

#include "def/parse.h"

namespace solvane::gen::def {
namespace {

template <typename... Visitors> struct overloaded : Visitors... {
    using Visitors::operator()...;
};
template <typename... Visitors> overloaded(Visitors...) -> overloaded<Visitors...>;

/// Operands that are operations themselves stand in parentheses, so that the shape of the tree shows.
std::string print(const expression &e)
{
    const auto operand = [&](std::size_t n) {
        const expression &o = e.operands[n];
        return o.operands.empty() ? print(o) : fmt::format("({})", print(o));
    };
    switch (e.kind) {
    case expression::what::number: return std::to_string(e.number);
    case expression::what::name: return e.id;
    case expression::what::negate: return "-" + operand(0);
    case expression::what::add: return operand(0) + " + " + operand(1);
    case expression::what::subtract: return operand(0) + " - " + operand(1);
    case expression::what::multiply: return operand(0) + " * " + operand(1);
    case expression::what::divide: return operand(0) + " / " + operand(1);
    case expression::what::shift_left: return operand(0) + " << " + operand(1);
    case expression::what::bit_or: return operand(0) + " | " + operand(1);
    }
    return {};
}

std::string print(const declarator &d)
{
    std::string out = std::string(d.pointers, '*') + d.id.text;
    for (const expression &size : d.arrays)
        out += fmt::format("[{}]", print(size));
    return out;
}

std::string print(const attribute &a)
{
    constexpr std::array words = {"counted", "uncounted", "optional", "selected", "case", "hidden", "rt_selector"};
    std::string          out = words[static_cast<std::size_t>(a.kind)];
    if (a.target)
        out += fmt::format("({})", a.target->text);
    if (a.value)
        out += fmt::format("({})", print(*a.value));
    return out;
}

std::string print(const member_def &m)
{
    std::string out = m.type.written.text + " " + print(m.decl);
    if (m.width)
        out += " : " + print(*m.width);
    for (const attribute &a : m.attributes)
        out += fmt::format(" {}", print(a));
    return out + ";";
}

std::string print(const record_def &r)
{
    std::string out = fmt::format("{} {} {{\n", r.is_union ? "union" : "struct", r.id.text);
    for (const member_def &m : r.members)
        out += fmt::format("    {}\n", print(m));
    return out + "}\n";
}

std::string print(const literal_def &l)
{
    if (!l.evaluated)
        return l.id.text + " = unevaluated";
    return l.value ? l.id.text + " = " + print(*l.value) : l.id.text;
}

std::string print(const enum_def &e)
{
    if (e.from == enum_def::source::messages)
        return fmt::format("enum {} from messages;\n", e.id.text);
    if (e.from == enum_def::source::trace_modules)
        return fmt::format("enum {} from trace_modules;\n", e.id.text);
    std::string out = e.anonymous ? "typedef enum {\n" : fmt::format("enum {} {{\n", e.id.text);
    for (const literal_def &l : e.literals)
        out += fmt::format("    {},\n", print(l));
    return out + (e.anonymous ? fmt::format("}} {}\n", e.id.text) : "}\n");
}

std::string print(const definition_def &definition)
{
    return std::visit(overloaded{
                          [](const typedef_def &t) {
                              return fmt::format("typedef {} {};\n", t.type.written.text, print(t.decl));
                          },
                          [](const list_def &l) {
                              return fmt::format("list {} of {};\n", l.id.text, l.element.written.text);
                          },
                          [](const constant_def &c) {
                              return fmt::format("const {} = {};\n", c.id.text, print(c.value));
                          },
                          [](const enum_def &e) { return print(e); },
                          [](const record_def &r) { return print(r); },
                      },
                      definition);
}

std::string print_values(const std::vector<text_def> &values, const std::string &indent)
{
    std::string out;
    for (const text_def &v : values)
        out += fmt::format("{}{} = {};\n", indent, quoted(v.text.text), print(v.value));
    return out;
}

std::string print(const value_field_def &f)
{
    std::string out = "    field " + f.id.text;
    if (f.comment)
        out += " comment " + quoted(f.comment->text);
    out += " {\n" + print_values(f.values, "        ");
    for (const value_case_def &c : f.cases) {
        out += c.selector ? "        case " + print(*c.selector) : "        default";
        out += " {\n" + print_values(c.values, "            ") + "        }\n";
    }
    return out + "    }\n";
}

std::string print(const module_row_def &row)
{
    return row.machine ? fmt::format("{}.{}: {};", row.module, *row.machine, row.enumeration.text)
                       : fmt::format("{}: {};", row.module, row.enumeration.text);
}

std::string print(const domain_def &d)
{
    std::string out = "domain " + d.id.text + " {\n";
    for (const domain_row_def &row : d.rows)
        out += "    " + row.key.text + " " + row.value.text + ";\n";
    for (const module_table_def &table : d.tables) {
        out += "    " + table.key.text + " {\n";
        for (const module_row_def &row : table.rows)
            out += "        " + print(row) + "\n";
        out += "    }\n";
    }
    for (const name &word : d.indexed)
        out += "    " + word.text + ";\n";
    return out + "}\n";
}

} // namespace

std::string dump_tree(const unit_def &unit)
{
    std::string out;
    for (const name &path : unit.imports)
        out += "import " + quoted(path.text) + ";\n";
    if (unit.declared_in)
        out += "declared in " + quoted(unit.declared_in->text) + ";\n";
    for (const definition_def &definition : unit.definitions)
        out += print(definition);
    return out;
}

std::string dump_tree(const values_def &values)
{
    std::string out;
    for (const value_record_def &r : values.records) {
        out += "values " + r.id.text + " {\n";
        if (r.comment)
            out += "    comment " + quoted(r.comment->text) + ";\n";
        out += print_values(r.values, "    ");
        for (const value_field_def &f : r.fields)
            out += print(f);
        out += "}\n";
    }
    return out;
}

std::string dump_tree(const baseline_def &baseline)
{
    std::string out;
    for (const name &text : baseline.baseline)
        out += "baseline " + quoted(text.text) + ";\n";
    for (const name &text : baseline.version)
        out += "version " + quoted(text.text) + ";\n";
    for (const name &id : baseline.variables)
        out += "variables " + id.text + ";\n";
    for (const name &id : baseline.entities)
        out += "entities " + id.text + ";\n";
    for (const domain_def &d : baseline.domains)
        out += print(d);
    return out;
}

std::string dump_tree(const peers_def &peers)
{
    std::string out;
    for (const peer_family_def &family : peers.families) {
        out += "family " + family.id.text + " {\n";
        for (const peer_row_def &row : family.rows) {
            out += fmt::format("    {} {{ pack {}; unpack {}; }}\n", row.structure.text, row.pack.text,
                               row.unpack.text);
        }
        out += "}\n";
    }
    return out;
}

} // namespace solvane::gen::def
