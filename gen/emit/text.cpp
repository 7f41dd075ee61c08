// Blocks, tables and names of generated text.
#include "emit/text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

#include <fmt/format.h>

namespace solvane::gen {

namespace {

[[noreturn]] void broken(std::string_view what, std::string_view block)
{
    std::fprintf(stderr, "solvane-gen: %.*s in the block\n%.*s\n", static_cast<int>(what.size()), what.data(),
                 static_cast<int>(block.size()), block.data());
    std::abort();
}

std::string_view find_value(std::string_view name, std::string_view block, std::initializer_list<named> values)
{
    for (const named &candidate : values)
        if (candidate.name == name)
            return candidate.value;
    broken("no value for $" + std::string(name) + "$", block);
}

} // namespace

void put(std::string &out, std::string_view block, std::initializer_list<named> values)
{
    if (block.starts_with('\n'))
        block.remove_prefix(1);
    for (std::size_t at = 0; at < block.size();) {
        const std::size_t open = block.find('$', at);
        out += block.substr(at, open - at);
        if (open == std::string_view::npos)
            return;
        const std::size_t close = block.find('$', open + 1);
        if (close == std::string_view::npos)
            broken("a lone '$'", block);
        out += find_value(block.substr(open + 1, close - open - 1), block, values);
        at = close + 1;
    }
}

void put_head(std::string &out, std::string_view holds, std::string_view input)
{
    put(out, R"(
// $holds$
// Made by solvane-gen from $input$; do not edit.
)", {{"holds", holds}, {"input", input}});
}

std::string text_literal(std::string_view text)
{
    std::string out = "\"";
    char        before = 0;
    for (const char c : text) {
        const auto octet = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            (out += '\\') += c;
        else if (c == '\n')
            out += "\\n";
        else if (c == '\t')
            out += "\\t";
        else if (c == '?' && before == '?')
            out += "\\?"; // two in a row look like a trigraph
        else if (octet < 0x20 || octet > 0x7E)
            for (const int shift : {9, 6, 3, 0})
                out += shift == 9 ? '\\' : static_cast<char>('0' + (octet >> shift & 7));
        else
            out += c;
        before = c;
    }
    return out += '"';
}

std::string cpp_identifier(std::string_view name)
{
    // Sorted: keywords and operators of C++20 that are plain names in C11.
    static constexpr auto words = std::to_array<std::string_view>({
        "alignas",   "alignof",       "and",         "and_eq",           "asm",          "bitand",    "bitor",
        "bool",      "catch",         "char16_t",    "char32_t",         "char8_t",      "class",     "co_await",
        "co_return", "co_yield",      "compl",       "concept",          "const_cast",   "consteval", "constexpr",
        "constinit", "decltype",      "delete",      "dynamic_cast",     "explicit",     "export",    "false",
        "friend",    "mutable",       "namespace",   "new",              "noexcept",     "not",       "not_eq",
        "nullptr",   "operator",      "or",          "or_eq",            "private",      "protected", "public",
        "reinterpret_cast",           "requires",    "static_assert",    "static_cast",  "template",  "this",
        "thread_local",               "throw",       "true",             "try",          "typeid",    "typename",
        "using",     "virtual",       "wchar_t",     "xor",              "xor_eq",
    });
    static_assert(std::is_sorted(words.begin(), words.end()));
    return std::string(name) + (std::binary_search(words.begin(), words.end(), name) ? "_" : "");
}

std::string index_text(std::uint32_t index)
{
    return index == no_index ? "RW_NO_INDEX" : std::to_string(index);
}

std::string ref_text(std::uint32_t ref)
{
    return ref == no_ref ? "RW_NO_REF" : std::to_string(ref);
}

std::string declarator(std::string_view name, const std::vector<dimension> &dims, std::size_t first_level)
{
    std::string out(name);
    for (std::size_t level = first_level; level < dims.size(); ++level) {
        const bool behind_pointer = level > first_level && dims[level - 1].pointer;
        if (dims[level].pointer)
            out = fmt::format("*{}", out);
        else if (behind_pointer)
            out = fmt::format("({})[{}]", out, dims[level].count);
        else
            out += fmt::format("[{}]", dims[level].count);
    }
    return out;
}

// ------------------------------------------------------------------------------------------------- cell tables

void cell_table::add(std::vector<std::string> cells, std::string note)
{
    rows.push_back({std::move(cells), std::move(note)});
}

void cell_table::heading(std::string text)
{
    rows.push_back({{}, std::move(text)});
}

namespace {

/// Widths of the columns.
std::vector<std::size_t> column_widths(const cell_table &table)
{
    std::vector<std::size_t> widths;
    for (const cell_table::row &row : table.rows)
        for (std::size_t n = 0; n < row.cells.size(); ++n) {
            if (widths.size() <= n)
                widths.resize(n + 1);
            if (row.cells[n].size() <= table.widest)
                widths[n] = std::max(widths[n], row.cells[n].size());
        }
    return widths;
}

void pad(std::string &out, std::size_t width, std::size_t used)
{
    if (used < width)
        out.append(width - used, ' ');
}

/// Cells with `separator` and padding between them.
void put_cells(std::string &out, const cell_table::row &row, const std::vector<std::size_t> &widths,
               std::string_view separator)
{
    for (std::size_t n = 0; n < row.cells.size(); ++n) {
        out += row.cells[n];
        if (n + 1 == row.cells.size())
            return;
        out += separator;
        pad(out, widths[n], row.cells[n].size());
    }
}

/// The end of a row: its note at the column where the widest last cell ends.
void put_note(std::string &out, const cell_table::row &row, const std::vector<std::size_t> &widths)
{
    if (!row.note.empty()) {
        pad(out, widths[row.cells.size() - 1], row.cells.back().size());
        (out += " // ") += row.note;
    }
    out += '\n';
}

} // namespace

void put_initialisers(std::string &out, const cell_table &table)
{
    const std::vector<std::size_t> widths = column_widths(table);
    for (const cell_table::row &row : table.rows) {
        if (row.cells.empty()) {
            ((out += "    // ") += row.note) += '\n';
            continue;
        }
        const bool braced = row.cells.size() > 1;
        out += braced ? "    {" : "    ";
        put_cells(out, row, widths, ", ");
        out += braced ? "}," : ",";
        put_note(out, row, widths);
    }
}

void put_array(std::string &out, std::string_view comment, std::string_view definition, const cell_table &table)
{
    if (table.rows.empty())
        return;
    put(out, "// $comment$\n$definition$ = {\n", {{"comment", comment}, {"definition", definition}});
    put_initialisers(out, table);
    out += "};\n\n";
}

void put_columns(std::string &out, const cell_table &table, std::string_view margin)
{
    const std::vector<std::size_t> widths = column_widths(table);
    for (const cell_table::row &row : table.rows) {
        out += margin;
        put_cells(out, row, widths, " ");
        put_note(out, row, widths);
    }
}

// ------------------------------------------------------------------------------------------- declarator levels

dim_pool::cells dim_pool::add(const std::vector<dimension> &dims, const std::vector<std::uint32_t> &dim_index)
{
    if (dims.empty())
        return {"0", "nullptr"};
    std::size_t at = rows_.size();
    const bool  only_points = std::ranges::all_of(dims, &dimension::pointer);
    if (only_points) {
        pointers_.resize(std::max(pointers_.size(), dims.size()), std::string::npos);
        std::size_t &shared = pointers_[dims.size() - 1];
        if (shared == std::string::npos)
            shared = at;
        at = shared;
    }
    if (at == rows_.size())
        rows_.insert(rows_.end(), dim_index.begin(), dim_index.end());
    return {std::to_string(dims.size()), at == 0 ? "dims" : "dims + " + std::to_string(at)};
}

void dim_pool::put_rows(std::string &out) const
{
    cell_table table;
    for (std::size_t n = 0; n < rows_.size(); ++n)
        table.add({rows_[n] == no_index ? "RW_PC_POINTERTO" : "RW_PC_ARRAYOF", index_text(rows_[n])},
                  std::to_string(n));
    put_array(out, "Declarator levels of the rows below, outermost first; those that only point are shared.",
              "static const rw_dim_row dims[]", table);
}

} // namespace solvane::gen
