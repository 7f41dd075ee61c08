// Strings out of any frame: they end, read nothing behind it, leak nothing, and leave value, error record and cursor
// as one checked read an octet does.  What came out goes back in and comes out the same.
//
// Input: unit, bit offset and whether 16384 octets stand behind the first one of the frame, so that a fragment fits;
// mode, lower bound, two octets of upper bound; then the frame.
#include <cstdlib>

#include "asn_heap.h"
#include "asn_string.h"
#include "bit_model.h"

namespace {

struct string_case {
    std::uint32_t unit, offset, mode, lower;
    std::int32_t  upper;
};

void require(bool holds)
{
    if (!holds)
        std::abort();
}

// Either type by its octets and its length.
struct value {
    std::uint8_t *octets;
    AsnLen        length;
};

value unpack(unpack_info_struct *stream, const string_case &by)
{
    if (by.unit == 8) {
        AsnOcts octets{};
        AsnOcts_unpack(&octets, stream, by.upper, by.lower, by.mode);
        return {octets.octs, octets.octetLen};
    }
    AsnBits bits{};
    AsnBits_unpack(&bits, stream, by.upper, by.lower, by.mode);
    return {bits.bits, bits.bitLen};
}

void pack(pack_info_struct *stream, const value &string, const string_case &by)
{
    if (by.unit == 8) {
        const AsnOcts octets = {string.length, string.octets};
        AsnOcts_pack(stream, &octets, by.upper, by.lower, by.mode);
    } else {
        const AsnBits bits = {string.length, string.octets};
        AsnBits_pack(stream, &bits, by.upper, by.lower, by.mode);
    }
}

bool same_octets(const value &one, const std::uint8_t *octets, std::uint32_t unit)
{
    const std::size_t count = (std::size_t{one.length} * unit + 7) / 8;
    return count == 0 || std::memcmp(one.octets, octets, count) == 0;
}

void expect_round_trip(const value &string, const string_case &by)
{
    octet_list       room(std::size_t{string.length} * by.unit / 8 + 16 + string.length / 8192);
    pack_info_struct to = {room.data(), by.offset};
    pack(&to, string, by);

    const std::size_t  octets = (to.bits + 7) / 8;
    const tight_octets frame(std::span<const std::uint8_t>(room).first(octets));
    PerError           error{};
    unpack_info_struct from = {frame.data.get(), by.offset, static_cast<std::int32_t>(octets), &error};
    const value        back = unpack(&from, by);
    require(error.code == PER_NO_ERROR && from.bits == to.bits);
    require(back.length == string.length && same_octets(back, string.octets, by.unit));
    AsnMemFree(back.octets);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size < 5)
        return 0;
    const string_case by = {data[0] & 8 ? 8u : 1u, size > 5 ? data[0] & 7u : 0, data[1] % 3u, data[2],
                            data[3] << 9 | data[4]};
    octet_list        octets(data + 5, data + size);
    if (data[0] & 16 && !octets.empty())
        octets.insert(octets.begin() + 1, ASN_FRAGMENT, 0x5A);
    const tight_octets frame(octets);
    const auto         frame_size = static_cast<std::int32_t>(octets.size());

    PerError           error{}, model_error{};
    unpack_info_struct stream = {frame.data.get(), by.offset, frame_size, &error};
    unpack_info_struct model  = {frame.data.get(), by.offset, frame_size, &model_error};
    const value        is     = unpack(&stream, by);
    const model_string should = model_unpack_string(&model, by.upper, by.lower, by.mode, by.unit);

    require(is.length == should.length && same_octets(is, should.octets.data(), by.unit));
    require(error.code == model_error.code && error.detail == model_error.detail);
    require(stream.frame == model.frame && stream.bits == model.bits && stream.fr_size == model.fr_size);
    if (error.code == PER_NO_ERROR)
        expect_round_trip(is, by);
    AsnMemFree(is.octets);
    return 0;
}
