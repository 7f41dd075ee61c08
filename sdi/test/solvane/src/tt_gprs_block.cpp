// GPRS RLC/MAC blocks in a build that knows none of them.
#include "tt_gprs_block.h"

namespace {

constexpr std::uint32_t unknown_name = 1;
constexpr std::uint32_t radio_block_octets = 23; // TS 44.060 §10.3.1, CS-1

} // namespace

std::uint32_t gprs_block_pack(const char *, pack_info_struct *, const void *)
{
    return unknown_name;
}

std::uint32_t gprs_block_unpack(const char *, void *, unpack_info_struct *)
{
    return unknown_name;
}

std::uint32_t gprs_struct_size(const char *)
{
    return radio_block_octets;
}

const char *gprs_block_identify(std::uintptr_t, unpack_info_struct *)
{
    return "";
}
