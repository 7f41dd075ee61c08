// Lengths, numbers and checked fields one behind the other out of any frame, up to the first error: nothing behind
// the frame is read, each step ends, and what came out whole goes back in and comes out the same.
//
// Input: bit offset and lower bound; then the frame, with a selector octet for each step taken from its end.
#include <cstdlib>

#include "bit_model.h"

namespace {

void require(bool holds)
{
    if (!holds)
        std::abort();
}

// Packs by `pack` and unpacks by `unpack` again.
template <typename Word, typename Pack, typename Unpack> Word there_and_back(Pack pack, Unpack unpack)
{
    std::uint8_t     room[16] = {};
    pack_info_struct to       = {room, 3};
    pack(&to);
    PerError           error{};
    unpack_info_struct from  = {room, 3, static_cast<std::int32_t>((to.bits + 7) / 8), &error};
    Word               value = 0;
    unpack(&value, &from);
    require(error.code == PER_NO_ERROR && from.bits == to.bits);
    return value;
}

void step(unpack_info_struct *stream, std::uint8_t selector, AsnInt lower)
{
    const unpack_info_struct before = *stream;
    const auto *const        error  = static_cast<const PerError *>(stream->err_hndl);
    const auto               semi   = [&](AsnInt *value, unpack_info_struct *from) {
        AsnIntSemiConstrained_unpack(value, from, lower);
    };
    const auto length = [](AsnLen *value, unpack_info_struct *from) {
        AsnLenSemiConstrained_unpack(value, from, 0, "");
    };
    if (selector < 64) {
        AsnLen value = 0;
        length(&value, stream);
        if (error->code == PER_NO_ERROR)
            require(value ==
                    there_and_back<AsnLen>([&](auto *to) { AsnLenSemiConstrained_pack(to, value, 0, ""); }, length));
    } else if (selector < 128) {
        AsnInt value = 0;
        semi(&value, stream);
        if (error->code == PER_NO_ERROR && value >= lower)
            require(value == there_and_back<AsnInt>(
                                 [&](auto *to) { AsnIntSemiConstrained_pack(to, value, lower, ""); }, semi));
    } else if (selector < 192) {
        AsnInt value = 0;
        AsnIntUnconstrained_unpack(&value, stream);
        if (error->code == PER_NO_ERROR)
            require(value == there_and_back<AsnInt>([&](auto *to) { AsnIntUnconstrained_pack(to, value); },
                                                    AsnIntUnconstrained_unpack));
    } else {
        const std::uint32_t n     = selector % 33;
        const std::uint32_t value = per_get_bits_checked(stream, n);
        if (error->code == PER_NO_ERROR)
            require(value == model_read(before.frame, before.bits & 7, n));
        else
            require(stream->bits == before.bits && value == 0);
    }
    require(stream->fr_size >= 0 && stream->frame + stream->fr_size == before.frame + before.fr_size);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size < 2)
        return 0;
    const tight_octets frame(std::span(data, size).subspan(2));
    PerError           error{};
    unpack_info_struct stream = {frame.data.get(), size > 2 ? data[0] & 7u : 0, static_cast<std::int32_t>(size - 2),
                                 &error};
    const auto         lower  = static_cast<AsnInt>(data[1] * 0x01010101u);
    for (std::size_t i = 1; i <= size - 2 && error.code == PER_NO_ERROR; ++i)
        step(&stream, data[size - i], lower);
    return 0;
}
