// Record layout by the System V ABI.
#include "abi_layout.h"

#include <algorithm>

namespace solvane::gen {

namespace {

constexpr std::uint32_t round_up(std::uint32_t value, std::uint32_t multiple)
{
    return (value + multiple - 1) / multiple * multiple;
}

/// First bit of a bit-field that may start at bit `next`: it must not cross a boundary of its storage type.
std::uint32_t place_bit_field(std::uint32_t next, std::uint32_t width, std::uint32_t storage_bits)
{
    const bool crosses = next / storage_bits != (next + width - 1) / storage_bits;
    return crosses ? round_up(next, storage_bits) : next;
}

} // namespace

abi_type abi_layout::of_use(const type_use &use)
{
    switch (use.base) {
    case kind::unsigned_long:
    case kind::signed_long:
    case kind::unsigned_int:
    case kind::signed_int:
    case kind::enumeration: return {4, 4};
    case kind::unsigned_short:
    case kind::signed_short: return {2, 2};
    case kind::unsigned_char:
    case kind::plain_char:
    case kind::signed_char: return {1, 1};
    case kind::structure:
    case kind::union_: return {of_record(use.id).size, of_record(use.id).align};
    case kind::type_name: return of_level(model_.aliases[use.id].base, model_.aliases[use.id].dims, 0);
    case kind::nothing:
    case kind::bit_field: break;
    }
    return {};
}

abi_type abi_layout::of_level(const type_use &use, const std::vector<dimension> &dims, std::size_t level)
{
    if (level == dims.size())
        return of_use(use);
    if (dims[level].pointer)
        return {sizeof(void *), sizeof(void *)};
    abi_type inner = of_level(use, dims, level + 1);
    inner.size *= dims[level].count;
    return inner;
}

const abi_record &abi_layout::of_record(std::uint32_t record_id)
{
    if (const auto known = records_.find(record_id); known != records_.end())
        return known->second;

    const record &r = model_.records[record_id];
    abi_record    out;
    std::uint32_t next = 0; // bit behind the members so far
    std::uint32_t widest = 0;
    for (const member &field : r.members) {
        const abi_type type = of_level(field.type, field.dims, 0);
        const bool     is_bit_field = field.bit_width != 0;
        const auto     bits = is_bit_field ? field.bit_width : type.size * 8;
        const auto     from = r.is_union ? 0 : next;
        const auto bit = is_bit_field ? place_bit_field(from, bits, type.size * 8) : round_up(from, type.align * 8);
        out.members.push_back({bit});
        out.align = std::max(out.align, type.align);
        next = bit + bits;
        widest = std::max(widest, next);
    }
    // A record without members has one octet in C++.
    out.size = std::max(round_up(round_up(widest, 8) / 8, out.align), 1U);
    return records_.emplace(record_id, std::move(out)).first->second;
}

} // namespace solvane::gen
