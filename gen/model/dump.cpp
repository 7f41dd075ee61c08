// Prints the model as text.
#include "model/dump.h"

#include <array>
#include <string_view>

#include <fmt/format.h>

#include "model/dump_per.h"
#include "model/dump_wire.h"

namespace solvane::gen {
namespace {

std::string_view kind_name(kind k)
{
    switch (k) {
    case kind::structure: return "struct";
    case kind::union_: return "union";
    case kind::enumeration: return "enum";
    case kind::type_name: return "typedef";
    case kind::bit_field: return "bit-field";
    default: return "basic";
    }
}

std::string_view role_name(role r)
{
    switch (r) {
    case role::plain: return "plain";
    case role::pointer: return "pointer";
    case role::count: return "count";
    case role::array: return "array";
    case role::structure: return "structure";
    case role::union_: return "union";
    case role::selector: return "selector";
    case role::optional: return "optional";
    case role::presence: return "presence";
    }
    return {};
}

std::string type_name(const model &m, const type_use &use)
{
    if (use.base == kind::enumeration && m.enums[use.id].name.empty())
        return "(anonymous)";
    const std::string_view basic = basic_name(use.base);
    return basic.empty() ? cpp_type(m, use) : std::string(basic);
}

std::string dims_text(const std::vector<dimension> &dims)
{
    std::string out;
    for (const dimension &d : dims)
        out += d.pointer ? "*" : fmt::format("[{}]", d.count);
    return out;
}

/// `dims` with the index of each array level into `offsize`.
std::string dims_text(const std::vector<dimension> &dims, const std::vector<std::uint32_t> &index)
{
    std::string out;
    for (std::size_t n = 0; n < dims.size(); ++n)
        out += dims[n].pointer ? "*" : fmt::format("[@{}]", index[n]);
    return out;
}

std::string index_text(std::string_view sign, std::uint32_t index)
{
    return index == no_index ? std::string() : fmt::format(" {}{}", sign, index);
}

// ------------------------------------------------------------------------------------------- definitions

std::string print(const model &m, const member &member)
{
    std::string out = fmt::format("    {}{} {}", type_name(m, member.type), dims_text(member.dims), member.name);
    if (member.bit_width != 0)
        out += fmt::format(" :{}", member.bit_width);
    if (member.hidden)
        return out + " hidden\n";
    out += fmt::format(" {}", role_name(member.role));
    if (member.ref != no_ref)
        out += fmt::format(" {}", member.ref);
    if (member.rt_selector != 0)
        out += fmt::format(" rt_selector {}", member.rt_selector);
    return out + "\n";
}

std::string print(const model &m, const record &r)
{
    std::string out = fmt::format("{} {}\n", r.is_union ? "union" : "struct", r.name);
    for (const member &member : r.members)
        out += print(m, member);
    return out;
}

std::string print(const enumeration &e)
{
    std::string out = e.name.empty() ? "enum\n" : fmt::format("enum {}\n", e.name);
    for (const literal &l : e.literals)
        out += l.evaluated ? fmt::format("    {} {}\n", l.name, l.value) : fmt::format("    {} not evaluated\n", l.name);
    return out;
}

std::string print(const model &m, const definition &what)
{
    switch (what.kind) {
    case definition::what::enumeration: return print(m.enums[what.id]);
    case definition::what::record: return print(m, m.records[what.id]) + dump_wire(m, m.records[what.id]);
    case definition::what::alias: {
        const alias &a = m.aliases[what.id];
        return fmt::format("typedef {}{} {}\n", type_name(m, a.base), dims_text(a.dims), a.name);
    }
    case definition::what::constant:
        return fmt::format("const {} {}\n", m.constants[what.id].name, m.constants[what.id].value);
    }
    return {};
}

// ------------------------------------------------------------------------------------------- tables of a domain

std::string print_registry(const domain &d)
{
    std::string out = fmt::format("domain {} entity {} {}\n", d.name, d.entity_value, d.entity);
    const std::array<std::pair<std::string_view, const std::string *>, 8> rows = {{
        {"file_codes", &d.file_codes},
        {"saps", &d.saps},
        {"messages", &d.messages_enum},
        {"modules", &d.modules},
        {"channels", &d.channels},
        {"error_actions", &d.error_actions},
        {"peer_params", &d.peer_params},
        {"context", &d.context},
    }};
    for (const auto &[key, value] : rows) {
        if (!value->empty())
            out += fmt::format("  {} {}\n", key, *value);
    }
    constexpr std::array<std::string_view, no_module_tables> tables = {"file_codes", "peer_msgs", "proto_errors",
                                                                       "timers",     "fsms",      "states"};
    for (std::size_t n = 0; n < no_module_tables; ++n) {
        for (const module_enum_row &row : d.module_tables[n])
            out += fmt::format("  module {} {} {}\n", tables[n], row.index, row.name);
    }
    return out;
}

std::string print(const record &r, const member_row &row)
{
    const member &member = r.members[row.member];
    std::string   out = fmt::format("      {}", member.name);
    if (row.kind == kind::bit_field)
        return out + fmt::format(" bit-field {} {}{}\n", row.offsize_index, role_name(row.role),
                                 row.ref == no_ref ? "" : fmt::format(" {}", row.ref));
    out += fmt::format("{} {}", index_text("@", row.offsize_index), role_name(row.role));
    if (row.ref != no_ref)
        out += fmt::format(" {}", row.ref);
    out += fmt::format(" {} {}{}{}", kind_name(row.kind), row.type_name, dims_text(member.dims, row.dim_index),
                       index_text("row ", row.type_index));
    if (row.rt_tag != 0)
        out += fmt::format(" tag {}", row.rt_tag);
    if (row.rt_selector != 0)
        out += fmt::format(" rt_selector {}", row.rt_selector);
    return out + "\n";
}

std::string print_structs(const model &m, const domain &d)
{
    std::string out;
    for (std::size_t n = 0; n < d.structs.size(); ++n) {
        const struct_row &row = d.structs[n];
        const record     &r = m.records[row.record_id];
        out += fmt::format("  struct {}: {} {} @{}\n", n, r.is_union ? "union" : "struct", r.name, row.size_index);
        for (const member_row &member : row.members)
            out += print(r, member);
    }
    return out;
}

std::string print_types(const domain &d)
{
    std::string out;
    for (std::size_t n = 0; n < d.types.size(); ++n) {
        const type_row &row = d.types[n];
        out += fmt::format("  type {}: {} {} {}{}{}{}\n", n, row.name, kind_name(row.base), row.base_name,
                           dims_text(row.dims, row.dim_index), index_text("row ", row.type_index),
                           row.rt_tag == 0 ? "" : fmt::format(" tag {}", row.rt_tag));
    }
    return out;
}

std::string print(const model &m, const offsize_entry &entry)
{
    switch (entry.kind) {
    case offsize_entry::what::enum_size: return "size " + cpp_type(m, {kind::enumeration, entry.id});
    case offsize_entry::what::record_size: return "size " + m.records[entry.id].name;
    case offsize_entry::what::member_offset:
        return fmt::format("offset {}.{}", m.records[entry.id].name, m.records[entry.id].members[entry.member].name);
    case offsize_entry::what::array_size:
        return fmt::format("array {}.{} level {}", m.records[entry.id].name,
                           m.records[entry.id].members[entry.member].name, entry.level);
    case offsize_entry::what::alias_array_size:
        return fmt::format("array {} level {}", m.aliases[entry.id].name, entry.level);
    }
    return {};
}

std::string print_layout(const model &m, const domain &d)
{
    std::string out;
    for (std::size_t n = 0; n < d.enums.size(); ++n) {
        out += fmt::format("  enum {}: {}, {} literals\n", n, d.enums[n].name,
                           m.enums[d.enums[n].enum_id].literals.size());
    }
    for (std::size_t n = 0; n < d.offsize.size(); ++n)
        out += fmt::format("  offsize {}: {}\n", n, print(m, d.offsize[n]));
    for (std::size_t n = 0; n < d.bit_fields.size(); ++n) {
        const bit_field_row &row = d.bit_fields[n];
        const record        &r = m.records[row.record_id];
        out += fmt::format("  bit-field {}: {}.{} width {}\n", n, r.name, r.members[row.member].name, row.width);
    }
    for (const rt_rule_row &row : d.rt_rules) {
        out += fmt::format("  rule selector {} tag {}: {}\n", row.selector, row.tag,
                           row.has_length_func ? "length function" : fmt::format("type {}", row.rt_type));
    }
    for (const rt_type_row &row : d.rt_types)
        out += fmt::format("  run-time type {}: {}\n", row.id, row.name);
    return out;
}

std::string print_messages(const domain &d)
{
    std::string out;
    for (const message_row &row : d.messages) {
        out += fmt::format("  message {} {} {} {} {}\n", row.code, row.name, row.sap_code, row.sap_name,
                           row.struct_name.empty() ? "-" : row.struct_name);
    }
    for (const message_range &r : d.ranges) {
        out += fmt::format("  range {} code {:#x} to {} code {:#x}\n", r.first_index, r.first_code, r.last_index,
                           r.last_code);
    }
    return out;
}

std::string print_values(const std::vector<value_row> &values, std::string_view indent)
{
    std::string out;
    for (const value_row &v : values)
        out += fmt::format("{}{} = {}\n", indent, v.value, v.text);
    return out;
}

std::string print(const value_record &r)
{
    std::string out = fmt::format("  values {}{}\n", r.name, r.comment ? " comment " + *r.comment : "");
    out += print_values(r.values, "    ");
    for (const value_field &f : r.fields) {
        out += fmt::format("    field {}{}\n", f.name, f.comment ? " comment " + *f.comment : "");
        out += print_values(f.values, "      ");
        for (const value_case &c : f.cases) {
            out += c.selector == no_index ? "      default\n" : fmt::format("      case {}\n", c.selector);
            out += print_values(c.values, "        ");
        }
    }
    return out;
}

/// A text on one line.
std::string escaped(std::string_view text)
{
    std::string out;
    for (const char c : text) {
        switch (c) {
        case '\n': out += "\\n"; break;
        case '\t': out += "\\t"; break;
        case '\\': out += "\\\\"; break;
        default: out += c;
        }
    }
    return out;
}

} // namespace

std::string dump_unit(const model &m, const unit &u)
{
    std::string out = fmt::format("unit {}\n", u.path);
    for (const std::uint32_t id : u.imports)
        out += fmt::format("import {}\n", m.units[id].path);
    if (!u.declared_in.empty())
        out += fmt::format("declared in {}\n", u.declared_in);
    for (const std::uint32_t id : u.forward_records)
        out += fmt::format("forward {}\n", m.records[id].name);
    for (const definition &what : u.definitions)
        out += print(m, what);
    return out;
}

std::string dump_domain(const model &m, const domain &d)
{
    std::string out = print_registry(d);
    for (const std::uint32_t id : d.units)
        out += fmt::format("  unit {}\n", m.units[id].path);
    out += print_structs(m, d) + print_types(d) + print_layout(m, d) + print_messages(d);
    for (const value_record &r : d.values)
        out += print(r);
    return out;
}

std::string dump_peers(const model &m)
{
    std::string out;
    for (const peer_family &family : m.peer_families) {
        out += fmt::format("family {}\n", family.name);
        for (const peer_row &row : family.rows)
            out += fmt::format("  {} {} {}\n", row.struct_name, row.pack, row.unpack);
    }
    return out;
}

std::string dump_traces(const model &m)
{
    std::string out;
    for (std::size_t n = 0; n < m.trace_modules.size(); ++n)
        out += fmt::format("trace module {}: {}\n", n, m.trace_modules[n]);
    for (const trace_item &item : m.traces)
        out += fmt::format("trace {:#010x} {:#04x} {}:{} {}\n", item.id, item.status, item.file, item.line,
                           escaped(item.format));
    return out;
}

std::string dump_model(const model &m)
{
    std::string out = fmt::format("baseline {}\nversion {}\nvariables {}\nentities {}\n", m.baseline, m.version_text,
                                  m.variables_root, m.entities_enum);
    for (std::uint32_t id = 0; id < m.units.size(); ++id)
        out += fmt::format("\n{}{}", dump_unit(m, m.units[id]), dump_codecs(m, id));
    for (const domain &d : m.domains)
        out += fmt::format("\n{}", dump_domain(m, d));
    return fmt::format("{}\n{}\n{}", out, dump_peers(m), dump_traces(m));
}

} // namespace solvane::gen
