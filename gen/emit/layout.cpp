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
    out += "// Enumeration sizes; by structure its size and by member the offset and the array sizes; then the array\n"
           "// sizes of the types.  What does not fit into 16 bits does not compile.\n"
           "static const rw_offsize_type offsize[] = {\n";
    for (std::size_t n = 0; n < d.offsize.size(); ++n)
        put(out, "    $entry$, // $row$\n", {{"entry", entry_text(m, d.offsize[n])}, {"row", std::to_string(n)}});
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

/// Cases of the setter, one a line; `has_signed` tells whether a field is signed.
std::string setter_cases(const model &m, const domain &d, bool &has_signed)
{
    std::map<std::string, std::size_t> groups;
    std::vector<std::string>           labels; // of a group, in the order of their first field
    std::vector<const bit_field_row *> firsts;
    for (std::size_t n = 0; n < d.bit_fields.size(); ++n) {
        const auto [group, is_new] = groups.try_emplace(place_of(m, d.bit_fields[n]), firsts.size());
        if (is_new) {
            firsts.push_back(&d.bit_fields[n]);
            labels.emplace_back();
        }
        labels[group->second] += "case " + std::to_string(n) + ": ";
    }

    std::string out;
    for (std::size_t n = 0; n < firsts.size(); ++n) {
        const bit_field_row &row = *firsts[n];
        const member        &field = m.records[row.record_id].members[row.member];
        has_signed = has_signed || is_signed(m, field);
        put(out, "    $cases$at<$record$>(buffer).$member$ = $value$; break;\n",
            {{"cases", labels[n]},
             {"record", record_name(m, row.record_id)},
             {"member", member_name(m, row.record_id, row.member)},
             {"value", field_value(m, field)}});
    }
    return out;
}

void put_bit_sizes(std::string &out, const model &m, const domain &d)
{
    cell_table rows;
    for (const bit_field_row &field : d.bit_fields)
        rows.add({std::to_string(field.width)}, std::to_string(rows.rows.size()) + " " +
                                                    m.records[field.record_id].name + "." +
                                                    m.records[field.record_id].members[field.member].name);
    out += "// Declared widths of the bit-fields.\nstatic const std::uint8_t bit_sizes[] = {\n";
    put_initialisers(out, rows);
    out += "};\n\n";
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

void put_bit_fields(std::string &out, const model &m, const domain &d)
{
    if (d.bit_fields.empty()) {
        out += "// The domain has no bit-fields.\nstatic void set_bit_field(std::uint8_t *, std::uint32_t, unsigned)\n"
               "{\n}\n\n";
        return;
    }
    bool              has_signed = false;
    const std::string cases = setter_cases(m, d, has_signed);
    put_bit_sizes(out, m, d);
    put_fit_checks(out, m, d);
    put(out, R"(
template <typename record> static record &at(std::uint8_t *buffer)
{
    return *reinterpret_cast<record *>(buffer);
}

$silence$// Fields at the same place of structures that begin alike share a case.
static void set_bit_field(std::uint8_t *buffer, std::uint32_t index, unsigned value)
{
    switch (index) {
$cases$    default: break;
    }
}

)", {{"cases", cases},
     {"silence", has_signed ? "// A value cannot be cast to the width of a signed bit-field; it is cut as it is stored.\n"
                              "#pragma GCC diagnostic ignored \"-Wconversion\"\n\n"
                            : ""}});
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
    if (!d.offsize.empty())
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
