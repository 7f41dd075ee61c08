// Where the System V ABI (i386 and x86-64, chapter 3.1.2, "Aggregates and unions", "Bit-fields") puts the members of
// a record, computed from the definitions alone.  The tables under test hold what the compiler did.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "model/model.h"

namespace solvane::gen {

struct abi_member {
    std::uint32_t bit = 0; ///< from the start of the record, bit 0 of an octet first; a multiple of 8 but for bit-fields
};

struct abi_record {
    std::uint32_t           size = 0; ///< octets
    std::uint32_t           align = 1;
    std::vector<abi_member> members;
};

/// Size and alignment of a type in octets.
struct abi_type {
    std::uint32_t size = 0;
    std::uint32_t align = 1;
};

class abi_layout {
public:
    explicit abi_layout(const model &m) : model_(m) {}

    const abi_record &of_record(std::uint32_t record_id);
    abi_type          of_use(const type_use &use);
    /// The type that is left behind the first `level` declarator levels of `dims`.
    abi_type of_level(const type_use &use, const std::vector<dimension> &dims, std::size_t level);

private:
    const model                        &model_;
    std::map<std::uint32_t, abi_record> records_;
};

} // namespace solvane::gen
