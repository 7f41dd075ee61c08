// The steps of `lay_rows`, one file each.
#pragma once

#include <vector>

#include "base/diagnostics.h"
#include "model/model.h"

namespace solvane::gen {

/// Rows of a domain's tables by the ids of the model; no_index for what the domain does not hold.
struct row_numbers {
    std::vector<std::uint32_t> structs;  ///< by record id
    std::vector<std::uint32_t> enums;    ///< by enumeration id
    std::vector<std::uint32_t> types;    ///< by alias id
    std::vector<std::uint32_t> record_types;  ///< row of a record's own name in the type table, by record id
    std::vector<std::uint32_t> enum_types;    ///< the same by enumeration id; none for an anonymous one
    std::vector<std::uint32_t> lists;    ///< ids of the domain's list families in the order of their definition
    std::uint32_t              bits_record = no_index;  ///< record id of AsnBits

    // Run-time tags, 0 for none.
    std::vector<std::uint32_t> record_tags;  ///< by record id
    std::vector<std::uint32_t> alias_tags;   ///< by alias id
};

/// Rows of structures, unions, enumerations and types in the order of the domain's units, their members with
/// every index but those into `offsize` and `bit_map`.
void lay_dictionary(const model &m, domain &d, const row_numbers &rows);

/// Which definition stands in which row of the domain.
row_numbers number_rows(const model &m, const domain &d);

/// `offsize` and `bit_map`: every index is the next free one of a fixed walk over the tables.
void lay_offsize(const model &m, domain &d);

/// Rules and types for members whose declared type does not say enough.
void lay_rt_rules(const model &m, domain &d, const row_numbers &rows, diagnostics &diag);

/// Dense index over the messages and its runs of codes.
void lay_message_index(domain &d);

} // namespace solvane::gen
