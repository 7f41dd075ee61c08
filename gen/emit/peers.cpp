// The rows of the peer table.
//
// A row's size comes from the compiler, so its source sees the record.  A family stands in the sources of the
// domain that has its records: literals of two domains never meet.
#include <algorithm>
#include <cctype>
#include <set>

#include "emit/emit.h"
#include "emit/record.h"
#include "emit/tables.h"
#include "emit/text.h"

namespace solvane::gen {

namespace {

/// The unit that defines the type of a row.
std::uint32_t unit_of(const model &m, const type_use &use)
{
    if (use.base == kind::type_name)
        return m.aliases[use.id].unit_id;
    return use.base == kind::enumeration ? m.enums[use.id].unit_id : m.records[use.id].unit_id;
}

std::size_t records_in(const model &m, const domain &d, const peer_family &family)
{
    return static_cast<std::size_t>(std::ranges::count_if(family.rows, [&](const peer_row &row) {
        return std::ranges::find(d.units, unit_of(m, row.type)) != d.units.end();
    }));
}

/// The domain that has most of the family's records, the first of equals.
std::size_t domain_of(const model &m, const peer_family &family)
{
    std::size_t best = 0;
    std::size_t most = 0;
    for (std::size_t n = 0; n < m.domains.size(); ++n) {
        const std::size_t records = records_in(m, m.domains[n], family);
        if (records > most) {
            best = n;
            most = records;
        }
    }
    return best;
}

std::string rows_name(const peer_family &family)
{
    return "tt_peer_rows_" + family.name;
}

std::string family_id(const peer_family &family)
{
    std::string id = "TT_PEER_" + family.name;
    for (char &c : id)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return id;
}

std::string rows_declaration(const peer_family &family)
{
    return "extern const tt_peer_row " + rows_name(family) + "[" + std::to_string(family.rows.size()) + "];\n";
}

/// A schema's entry answers whether it failed, which a row drops: it passes through the type that fits every function.
std::string unpack_entry(const peer_row &row)
{
    return row.of_schema ? "reinterpret_cast<void (*)()>(" + row.unpack + ")" : row.unpack;
}

void put_family(std::string &out, const model &m, const peer_family &family)
{
    cell_table rows;
    out += '\n';
    for (const peer_row &row : family.rows) {
        const std::string type = cpp_type(m, row.type);
        put(out, R"(
void $pack$(pack_info_struct *stream, $const$$type$ *value);
$result$ $unpack$($type$ *value, unpack_info_struct *stream);
)", {{"pack", row.pack},
     {"unpack", row.unpack},
     {"type", type},
     {"const", row.of_schema ? "" : "const "}, // packing corrects what is out of bounds in the caller's record
     {"result", row.of_schema ? "std::uint32_t" : "void"}});
        rows.add({text_literal(row.struct_name), "sizeof(" + type + ")",
                  "reinterpret_cast<tt_pack_func>(" + row.pack + ")",
                  "reinterpret_cast<tt_unpack_func>(" + unpack_entry(row) + ")", "0"});
    }
    out += '\n';
    put(out, "$declaration$const tt_peer_row $rows$[] = {\n",
        {{"declaration", rows_declaration(family)}, {"rows", rows_name(family)}});
    put_initialisers(out, rows);
    out += "};\n";
}

using families = std::vector<const peer_family *>;

std::string domain_peers(const model &m, const domain &d, const families &of_domain)
{
    std::string out;
    put_head(out, "Rows of the peer table with structures of the domain " + d.name + ".", "peers.def");
    out += "#include \"tt_stack_build.h\"\n";
    std::set<std::uint32_t> units;
    for (const peer_family *family : of_domain)
        for (const peer_row &row : family->rows)
            units.insert(unit_of(m, row.type));
    if (!units.empty())
        out += '\n';
    for (const std::uint32_t id : units)
        put(out, "#include \"$stem$.h\"\n", {{"stem", m.units[id].stem}});
    for (const peer_family *family : of_domain)
        put_family(out, m, *family);
    return out;
}

std::string peer_families(const model &m)
{
    std::string out;
    put_head(out, "The families of the peer table in the order of their registration.", "peers.def");
    out += "#include \"tt_stack_build.h\"\n";
    cell_table rows;
    bool       declared = false;
    for (const peer_family &family : m.peer_families) {
        const bool empty = family.rows.empty();
        if (!empty) {
            out += declared ? "" : "\n";
            out += rows_declaration(family);
            declared = true;
        }
        rows.add({text_literal(family.name), std::to_string(family.rows.size()),
                  empty ? "nullptr" : rows_name(family)});
    }
    out += '\n';
    for (std::size_t n = 0; n < m.peer_families.size(); ++n)
        put(out, "static_assert($id$ == $row$);\n",
            {{"id", family_id(m.peer_families[n])}, {"row", std::to_string(n)}});
    out += "\nconst tt_peer_family tt_peer_families[TT_NO_PEER_FAMILIES] = {\n";
    put_initialisers(out, rows);
    out += "};\n";
    return out;
}

} // namespace

void emit_peers(const model &m, std::vector<output_file> &files)
{
    std::vector<families> by_domain(m.domains.size());
    for (const peer_family &family : m.peer_families)
        if (!family.rows.empty())
            by_domain[domain_of(m, family)].push_back(&family);
    for (std::size_t n = 0; n < m.domains.size(); ++n)
        files.push_back({"production/" + m.domains[n].name + "_peers.cpp",
                         domain_peers(m, m.domains[n], by_domain[n])});
    files.push_back({"production/peer_rows.cpp", peer_families(m)});
}

} // namespace solvane::gen
