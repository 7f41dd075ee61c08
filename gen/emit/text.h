// How generated text is put together: blocks in the shape of the output, constant tables, texts, declarators.
//
// A missing name in a block is a fault of the emitter and ends the generator; no input can cause it.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "model/model.h"

namespace solvane::gen {

/// A value of a block by its name.
struct named {
    std::string_view name;
    std::string_view value;
};

/// Appends `block` to `out` with every $name$ replaced.  The line feed that opens a raw string is left out.
void put(std::string &out, std::string_view block, std::initializer_list<named> values = {});

/// The head of a generated file: what it holds and from which input.
void put_head(std::string &out, std::string_view holds, std::string_view input);

/// `text` as a C++ string literal: octets above 126 and controls as octal escapes, so that any locale reads it.
std::string text_literal(std::string_view text);

/// A name of the definitions as a C++ identifier: words that C++ has and C has not get a trailing '_'.
std::string cpp_identifier(std::string_view name);

/// A table index or a reference: a number, RW_NO_INDEX or RW_NO_REF.
std::string index_text(std::uint32_t index);
std::string ref_text(std::uint32_t ref);

/// Declarator of `name` with its levels, outermost first: "*name[4]".  An empty name makes an abstract one.
std::string declarator(std::string_view name, const std::vector<dimension> &dims, std::size_t first_level = 0);

/// Rows of cells in aligned columns.  A cell beyond `widest` octets runs over and does not widen its column.
struct cell_table {
    struct row {
        std::vector<std::string> cells;
        std::string              note;   ///< behind the row; in a row without cells a line of its own
    };
    std::vector<row> rows;
    std::size_t      widest = 44;

    void add(std::vector<std::string> cells, std::string note = {});
    void heading(std::string text);
};

/// `    {a, b, c}, // note` a row.
void put_initialisers(std::string &out, const cell_table &table);
/// The array `definition` of such rows, `comment` ahead of it and an empty line behind; nothing without rows.
void put_array(std::string &out, std::string_view comment, std::string_view definition, const cell_table &table);
/// `a b c // note` a row behind the margin: columns of a declaration.
void put_columns(std::string &out, const cell_table &table, std::string_view margin = "    ");

/// The declarator levels of a table's rows, one array of rw_dim_row for all; levels that only point are shared.
class dim_pool {
public:
    /// Text for the `no_dims` and `dims` cells of a row.
    struct cells {
        std::string count;
        std::string rows;
    };
    cells add(const std::vector<dimension> &dims, const std::vector<std::uint32_t> &dim_index);

    /// The definition of the array `dims`; nothing when no row has a level.
    void put_rows(std::string &out) const;

private:
    std::vector<std::uint32_t> rows_;     ///< index of an array level, no_index for a pointer
    std::vector<std::size_t>   pointers_; ///< [n]: where n + 1 pointer levels stand, or npos
};

} // namespace solvane::gen
