// Values that stand for "none" among the ids and indices of the model.
#pragma once

#include <cstdint>

namespace solvane::gen {

inline constexpr std::uint32_t no_ref = 0xFFFF;        ///< of a member row
inline constexpr std::uint32_t no_index = 0xFFFFFFFF;  ///< of any dictionary row, of an id

} // namespace solvane::gen
