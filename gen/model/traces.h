// The trace table: which id each statement has.
#pragma once

#include <cstdint>

#include "model/model.h"

namespace solvane::gen {

inline constexpr std::uint32_t ids_of_a_module = 0x80000;  ///< the first is its head's
inline constexpr std::uint32_t most_trace_modules = 0xFFFFFFFF / ids_of_a_module;  ///< the last id of all is taken

// Status of an item, as the host sees it.
inline constexpr std::uint32_t trace_single = 0;   ///< a statement without arguments
inline constexpr std::uint32_t trace_args = 1;     ///< a statement with arguments
inline constexpr std::uint32_t trace_head = 0xFE;  ///< the head item of a module
inline constexpr std::uint32_t trace_last = 0xFF;  ///< the closing item

/// Numbers the statements of `m.traces`, which stand in any order with the first id of their module, and adds the
/// head items and the closing item.  Inside a module the order stays.
void lay_traces(model &m);

} // namespace solvane::gen
