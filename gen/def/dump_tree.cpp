// Prints a syntax tree in the language again, in one fixed form.
#include <array>

#include <fmt/format.h>

#include "def/parse.h"
#include "def/parse_members.h"

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
    std::string out(spelled(a.kind));
    if (a.target)
        out += fmt::format("({})", a.target->text);
    if (a.second)
        out += fmt::format("({}, {})", print(*a.value), print(*a.second));
    else if (a.value)
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

std::string print(const std::vector<condition_def> &conditions)
{
    constexpr std::array signs = {"", "!", " == ", " != ", " < ", " <= ", " > ", " >= ", " & "}; // ORDER conditions
    std::string          out;
    for (const condition_def &c : conditions) {
        out += out.empty() ? "" : " && ";
        if (c.kind == condition_def::what::left)
            out += c.value ? fmt::format("left({})", print(*c.value)) : "left";
        else if (c.value)
            out += c.member.text + signs[static_cast<std::size_t>(c.kind)] + print(*c.value);
        else
            out += signs[static_cast<std::size_t>(c.kind)] + c.member.text;
    }
    return out;
}

std::string print(const wire_item_def::part &p)
{
    std::string out;
    for (const part_ref::step &step : p.ref.steps) {
        out += (out.empty() ? "" : ".") + step.member.text;
        if (step.index)
            out += fmt::format("[{}]", print(*step.index));
    }
    return p.width ? fmt::format("{} : {}", out, print(*p.width)) : out;
}

std::string print_line(const wire_item_def &i)
{
    constexpr std::array presences = {" M", " O", " C"};
    constexpr std::array formats = {" V", " V1", " LV", " LV-E", " T", " TV", " TV1", " TLV", " TLV-E"};
    std::string          out = i.is_spare ? "spare" : i.id.text;
    if (i.member)
        out = i.member->type.written.text + " " + print(i.member->decl);
    if (i.identifier)
        out += fmt::format(" 0x{:02X}", *i.identifier);
    out += presences[static_cast<std::size_t>(i.need)];
    out += formats[static_cast<std::size_t>(i.format)];
    if (i.half_length)
        out += " 1/2";
    else if (i.shortest)
        out += " " + print(*i.shortest) + (i.exact ? "" : i.longest ? ".." + print(*i.longest) : "..n");
    if (i.member) {
        for (const attribute &a : i.member->attributes)
            out += " " + print(a);
    }
    return out + (i.clause.empty() ? ";\n" : " " + quoted(i.clause) + ";\n");
}

std::string print(const wire_item_def &i, const std::string &indent);

std::string print(const std::vector<wire_item_def> &items, const std::string &indent)
{
    std::string out = "{\n";
    for (const wire_item_def &i : items)
        out += indent + "    " + print(i, indent + "    ");
    return out + indent + "}";
}

std::string print(const wire_item_def &i, const std::string &indent)
{
    using what = wire_item_def::what;
    std::string out;
    switch (i.kind) {
    case what::member: return print(*i.member) + "\n";
    case what::spare:
        return fmt::format("spare : {}{};\n", print(*i.width), i.value ? " = " + print(*i.value) : "");
    case what::parts:
        for (const wire_item_def::part &p : i.parts)
            out += (out.empty() ? "wire " : ", ") + print(p);
        return out + ";\n";
    case what::flag:
        out = fmt::format("flag {}{}", i.inverse ? "!" : "", i.any ? fmt::format("any({})", i.id.text) : i.id.text);
        return out + (i.conditions.empty() ? "" : " = " + print(i.conditions)) + ";\n";
    case what::group:
        out = fmt::format("if ({}) {}", print(i.conditions), print(i.items, indent));
        return out + (i.otherwise.empty() ? "" : " else " + print(i.otherwise, indent)) + "\n";
    case what::block:
        out = fmt::format("length({}) {}", print(*i.width), i.id.text);
        if (i.trim)
            out += fmt::format(" trim({})", i.trim->text);
        return out + " " + print(i.items, indent) + "\n";
    case what::within:
        out = fmt::format("within({}) {}", i.id.text, i.title.text.empty() ? "" : i.title.text + " ");
        return out + print(i.items, indent) + "\n";
    case what::align: return "align;\n";
    case what::line: return print_line(i);
    }
    return out;
}

std::string print_wire(const record_def &r)
{
    const wire_def &w = *r.wire;
    std::string     out = fmt::format("{} {}", w.is_message ? "message" : "element", r.id.text);
    if (w.length)
        out += fmt::format(" length({})", print(*w.length));
    if (w.length_name)
        out += " " + w.length_name->text;
    if (w.trim)
        out += fmt::format(" trim({})", w.trim->text);
    if (w.direction != wire_direction::none)
        out += w.direction == wire_direction::uplink ? " uplink" : " downlink";
    return out + " " + print(w.items, "") + "\n";
}

std::string print(const record_def &r)
{
    if (r.wire)
        return print_wire(r);
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
            out += "    " + row.structure.text;
            out += row.pack.text.empty() ? ";\n"
                                         : fmt::format(" {{ pack {}; unpack {}; }}\n", row.pack.text, row.unpack.text);
        }
        out += "}\n";
    }
    return out;
}

} // namespace solvane::gen::def
