// The plug-in frame: what the units of start-up offer to init_dll, and the slots that they fill.
//
// All of it runs on the host's thread inside init_dll; the look-ups are safe from any thread afterwards.
#pragma once

#include <cstdint>

#include "solvane/solvane.h"
#include "tt_stack_build.h"

// -------------------------------------------------------------------------------- layout of bit-fields and types

/// Measures how this library's compiler places the bit-fields of a domain, and completes the domain's tool
/// record: `offsize` from `sup`, `no_bit_map` and `bit_map` by probing, `bt_info`.  A record with no `offsize`
/// entries is left alone.
void tt_layout_domain(rw_debug_info_struct *tool, const rw_offsize_sup_struct *sup);

// -------------------------------------------------------------------------------- registry

extern tt_entity_info tt_entity_infos[ENTITY_LAST];

/// Fills the registry rows of the domains, and the per-module tables of ENTITY_STACK.
void tt_fill_entity_info();

/// Dense index of a message code; 0 at a miss.
std::uint32_t tt_msg_code_to_index(const tt_msg_index &table, std::uint16_t msg_code);
/// Message code at a dense index; `miss` for index 0 and for one at or above the count.
std::uint32_t tt_msg_index_to_code(const tt_msg_index &table, std::uint16_t index, std::uint32_t miss);

std::uint32_t signal_msg_code_to_index(std::uint16_t msg_code);
std::uint32_t signal_msg_index_to_code(std::uint16_t index);
std::uint32_t lte_msg_code_to_index(std::uint16_t msg_code);
std::uint32_t lte_msg_index_to_code(std::uint16_t index);

// -------------------------------------------------------------------------------- value texts

/// Fills the map of each valid domain from its value description table.  The last step of start-up.
void tt_build_value_maps();

// All answer 0 at a miss.  Texts point to constant data.
std::uint32_t db_struct_known(std::int32_t domain, const char *struct_name);
const char   *db_struct_value_text(std::int32_t domain, const char *struct_name, std::uint32_t value);
const char   *db_field_value_text(std::int32_t domain, const char *struct_name, const char *field,
                                  std::uint32_t value);
const char   *db_field_case_value_text(std::int32_t domain, const char *struct_name, const char *field,
                                       std::uint32_t selector, std::uint32_t value);
const char   *db_struct_comment(std::int32_t domain, const char *struct_name);
const char   *db_field_comment(std::int32_t domain, const char *struct_name, const char *field);
