// How the compiler lays the types of a domain out: the `offsize` table, the setter of the bit-fields and the storage
// of both layouts.
//
// Sizes and offsets are expressions over the records, so that they are the compiler's and never ours.  This is
// the source of a domain that sees all its records, and only those: literals of two domains never meet.
#include <map>

#include <fmt/format.h>

#include "emit/checks.h"
#include "emit/emit.h"
#include "emit/record.h"
#include "emit/tables.h"
#include "emit/text.h"

namespace solvane::gen {

namespace {

// -------------------------------------------------------------------------------------------- sizes and offsets

std::string subscripts(std::uint32_t level)
{
    std::string out;
    while (level-- != 0)
        out += "[0]";
    return out;
}

std::string alias_array_size(const model &m, const offsize_entry &entry)
{
    const alias &a = m.aliases[entry.id];
    if (entry.level == 0 && has_typedef(m, entry.id))
        return "sizeof(" + alias_name(m, entry.id) + ")";
    return "sizeof(" + cpp_type(m, a.base) + declarator("", a.dims, entry.level) + ")";
}

std::string entry_text(const model &m, const offsize_entry &entry)
{
    switch (entry.kind) {
    case offsize_entry::what::enum_size:
        return "sizeof(" + enum_name(m, entry.id) + ")";
    case offsize_entry::what::record_size:
        return "sizeof(" + record_name(m, entry.id) + ")";
    case offsize_entry::what::member_offset:
        return "offsetof(" + record_name(m, entry.id) + ", " + member_name(m, entry.id, entry.member) + ")";
    case offsize_entry::what::array_size:
        return "sizeof(" + record_name(m, entry.id) + "::" + member_name(m, entry.id, entry.member) +
               subscripts(entry.level) + ")";
    case offsize_entry::what::alias_array_size:
        return alias_array_size(m, entry);
    }
    return {};
}

void put_offsize(std::string &out, const model &m, const domain &d)
{
    if (d.offsize.empty())
        return;
    cell_table rows{.rows = {}, .widest = 60};
    for (const offsize_entry &entry : d.offsize)
        rows.add({entry_text(m, entry)}, std::to_string(rows.rows.size()));
    out += "// Enumeration sizes; by structure its size and by member the offset and the array sizes; array sizes of\n"
           "// the types.  What does not fit into 16 bits does not compile.\n";
    out += "static const rw_offsize_type offsize[] = {\n";
    put_initialisers(out, rows);
    out += "};\n\n";
}

// --------------------------------------------------------------------------------------------------- bit-fields

/// What decides where a bit-field lies: the members up to it.  Fields alike in this share a case of the setter.
std::string place_of(const model &m, const bit_field_row &field)
{
    const record &r = m.records[field.record_id];
    std::string   place;
    for (std::uint32_t n = r.is_union ? field.member : 0; n <= field.member; ++n) {
        const member &step = r.members[n];
        place += cpp_type(m, step.type) + declarator("", step.dims) + ":" + std::to_string(step.bit_width) + ";";
    }
    return place;
}

bool is_signed(const model &m, const member &field)
{
    switch (base_of(m, field.type).base) {
    case kind::signed_long:
    case kind::signed_int:
    case kind::signed_short:
    case kind::plain_char:
    case kind::signed_char:
    case kind::enumeration:
        return true;
    default:
        return false;
    }
}

/// The value as the field takes it: cut to the width, so that no conversion loses anything.
std::string field_value(const model &m, const member &field)
{
    const std::string type = cpp_type(m, field.type);
    if (is_signed(m, field))
        return "static_cast<" + type + ">(value)";
    if (field.bit_width == 32)
        return "value";
    return fmt::format("value & 0x{:X}", (UINT32_C(1) << field.bit_width) - 1);
}

/// Fields that share a case of the setter.
struct setter_case {
    const bit_field_row       *field = nullptr; ///< the first one, whose record the assignment names
    std::vector<std::uint32_t> indices;
};

std::vector<setter_case> setter_cases(const model &m, const domain &d)
{
    std::vector<setter_case>           cases;
    std::map<std::string, std::size_t> by_place;
    for (std::uint32_t index = 0; index < d.bit_fields.size(); ++index) {
        const auto [place, is_new] = by_place.try_emplace(place_of(m, d.bit_fields[index]), cases.size());
        if (is_new)
            cases.push_back({&d.bit_fields[index], {}});
        cases[place->second].indices.push_back(index);
    }
    return cases;
}

/// A line a case; where many fields share one, their labels fill lines ahead of it.
void put_case(std::string &out, const model &m, const setter_case &shared)
{
    const bit_field_row &row = *shared.field;
    std::string          line = "   ";
    for (const std::uint32_t index : shared.indices) {
        const std::string label = " case " + std::to_string(index) + ":";
        if (line.size() + label.size() > 80) {
            (out += line) += '\n';
            line = "   ";
        }
        line += label;
    }
    put(out, "$labels$ at<$record$>(buffer).$member$ = $value$; break;\n",
        {{"labels", line},
         {"record", record_name(m, row.record_id)},
         {"member", member_name(m, row.record_id, row.member)},
         {"value", field_value(m, m.records[row.record_id].members[row.member])}});
}

void put_bit_sizes(std::string &out, const model &m, const domain &d)
{
    cell_table rows;
    for (const bit_field_row &field : d.bit_fields)
        rows.add({std::to_string(field.width)}, std::to_string(rows.rows.size()) + " " +
                                                    m.records[field.record_id].name + "." +
                                                    m.records[field.record_id].members[field.member].name);
    put_array(out, "Declared widths of the bit-fields.", "static const std::uint8_t bit_sizes[]", rows);
}

void put_fit_checks(std::string &out, const model &m, const domain &d)
{
    out += "// The layout step measures in a buffer of 60000 octets.\n";
    std::uint32_t last = no_index;
    for (const bit_field_row &field : d.bit_fields) {
        if (field.record_id != last)
            put(out, "static_assert(sizeof($record$) <= 60000);\n", {{"record", record_name(m, field.record_id)}});
        last = field.record_id;
    }
    out += '\n';
}

constexpr std::string_view signed_pragma = R"(
// No cast leads to the width of a signed bit-field: the value is cut as it is stored.
#pragma GCC diagnostic ignored "-Wconversion"
)";

void put_bit_fields(std::string &out, const model &m, const domain &d)
{
    if (d.bit_fields.empty()) {
        out += R"(// The domain has no bit-fields.
static void set_bit_field(std::uint8_t *, std::uint32_t, unsigned)
{
}

)";
        return;
    }
    std::string cases;
    bool        has_signed = false;
    for (const setter_case &shared : setter_cases(m, d)) {
        put_case(cases, m, shared);
        has_signed = has_signed || is_signed(m, m.records[shared.field->record_id].members[shared.field->member]);
    }
    put_bit_sizes(out, m, d);
    put_fit_checks(out, m, d);
    put(out, R"(
template <typename record> static record &at(std::uint8_t *buffer)
{
    return *reinterpret_cast<record *>(buffer);
}
$pragma$
// Fields at the same place of structures that begin alike share a case.
static void set_bit_field(std::uint8_t *buffer, std::uint32_t index, unsigned value)
{
    switch (index) {
$cases$    default: break;
    }
}

)", {{"cases", cases},
     {"pragma", has_signed ? signed_pragma : ""}});
}

// ------------------------------------------------------------------------------------------------- the records

void put_sup(std::string &out, const domain &d)
{
    const bool has_offsize = !d.offsize.empty();
    const bool has_fields = !d.bit_fields.empty();
    put(out, R"(
const rw_offsize_sup_struct $sup$ = {
    .uuid = tt_baseline_text,
    .no_offsize = $no_offsize$,
    .offsize = $offsize$,
    .no_bit_sizes = $no_bit_sizes$,
    .bit_sizes = $bit_sizes$,
    .set_bit_func = set_bit_field,
};
)", {{"sup", table_name(d, "offsize_sup")},
     {"no_offsize", has_offsize ? "std::size(offsize)" : "0"},
     {"offsize", has_offsize ? "offsize" : "nullptr"},
     {"no_bit_sizes", has_fields ? "std::size(bit_sizes)" : "0"},
     {"bit_sizes", has_fields ? "bit_sizes" : "nullptr"}});
}

/// Zeroed storage.  A domain without bit-fields has one row that stands for none.
void put_storage(std::string &out, const domain &d)
{
    const std::string bit_map_rows = std::to_string(d.bit_fields.empty() ? 1 : d.bit_fields.size());
    put(out, R"(

// Completed by the layout step.
rw_bt_info         $tool_bt_info$;
mta_bit_map_struct $tool_bit_map$[$bit_map_rows$];

// Filled by the host from what the target answers.
rw_bt_info         $target_bt_info$;
mta_bit_map_struct $target_bit_map$[$bit_map_rows$];
)", {{"tool_bt_info", table_name(d, "tool_bt_info")},
     {"tool_bit_map", table_name(d, "tool_bit_map")},
     {"target_bt_info", table_name(d, "target_bt_info")},
     {"target_bit_map", table_name(d, "target_bit_map")},
     {"bit_map_rows", bit_map_rows}});
    if (!d.offsize.empty())
        put(out, "rw_offsize_type    $offsize$[$count$];\n",
            {{"offsize", table_name(d, "target_offsize")}, {"count", std::to_string(d.offsize.size())}});
}

std::string layout_source(const model &m, const domain &d)
{
    std::string out;
    put_head(out, "Layout of the types of the domain " + d.name + ".", domain_input(d));
    out += "#include <cstddef>\n#include <iterator>\n\n" + tables_include(d) + '\n';
    for (const std::uint32_t id : d.units)
        put(out, "#include \"$stem$.h\"\n", {{"stem", m.units[id].stem}});
    out += '\n';
    for (const std::uint32_t id : d.units)
        if (!m.units[id].declared_in.empty() && checking_domain(m, id) == &d)
            put_checks(out, m, m.units[id]);
    put_offsize(out, m, d);
    put_bit_fields(out, m, d);
    put_sup(out, d);
    put_storage(out, d);
    return out;
}

} // namespace

void emit_layout(const model &m, std::vector<output_file> &files)
{
    for (const domain &d : m.domains)
        files.push_back({"production/" + d.name + "_layout.cpp", layout_source(m, d)});
}

} // namespace solvane::gen
