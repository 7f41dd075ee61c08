// Framing: sixteen octets at a time where none of them is a delimiter or an escape.
//
// The two special octets are neighbours, 0x7D and 0x7E, so one comparison of a block against each finds them all.
// Blocks with many of them go octet by octet without a branch.
#include "com_frame.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#if defined __SSE2__
#include <emmintrin.h>
#endif

#include "tt_assert.h"

namespace {

constexpr std::uint8_t  delimiter = 0x7E;
constexpr std::uint8_t  escape = 0x7D;
constexpr std::uint8_t  flip = 0x20;
constexpr std::uint32_t block_size = 16;
constexpr std::uint32_t max_payload = COM_PACH_CODE_BUFF_SIZE_MAX * 4;

// Specials in a block from which on the branch-free loop wins.
constexpr int dense = 4;

constexpr bool is_special(std::uint8_t octet)
{
    return octet == escape || octet == delimiter;
}

/// Bit n is set where octet n of the block is a delimiter or an escape.
#if defined __SSE2__

inline std::uint32_t specials(const std::uint8_t *block)
{
    const __m128i octets = _mm_loadu_si128(reinterpret_cast<const __m128i *>(block));
    const __m128i found = _mm_or_si128(_mm_cmpeq_epi8(octets, _mm_set1_epi8(static_cast<char>(escape))),
                                       _mm_cmpeq_epi8(octets, _mm_set1_epi8(static_cast<char>(delimiter))));
    return static_cast<std::uint32_t>(_mm_movemask_epi8(found));
}

#else

/// 0x80 in each octet of `word` that is zero.
inline std::uint64_t zero_octets(std::uint64_t word)
{
    constexpr std::uint64_t low = 0x7F7F7F7F7F7F7F7F;
    return ~(((word & low) + low) | word | low);
}

inline std::uint32_t specials(const std::uint8_t *block)
{
    constexpr std::uint64_t ones = 0x0101010101010101;
    std::uint32_t           found = 0;
    for (unsigned half = 0; half < 2; ++half) {
        std::uint64_t word;
        std::memcpy(&word, block + 8 * half, 8);
        if constexpr (std::endian::native == std::endian::big)
            word = __builtin_bswap64(word);
        const std::uint64_t hits = zero_octets(word ^ ones * escape) | zero_octets(word ^ ones * delimiter);
        // Gathers the top bits of the eight octets, lowest octet first.
        found |= static_cast<std::uint32_t>((hits >> 7) * 0x0102040810204080 >> 56) << 8 * half;
    }
    return found;
}

#endif

inline void copy_block(std::uint8_t *to, const std::uint8_t *from)
{
    std::memcpy(to, from, block_size);
}

std::uint32_t count_specials(const std::uint8_t *data, std::uint32_t length)
{
    std::uint32_t count = 0;
    std::uint32_t n = 0;
    for (; length - n >= block_size; n += block_size)
        count += static_cast<std::uint32_t>(std::popcount(specials(data + n)));
    for (; n < length; ++n)
        count += is_special(data[n]);
    return count;
}

/// Escapes one octet; writes two octets in any case and answers how many of them count.
inline std::uint32_t escape_octet(std::uint8_t *to, std::uint8_t octet)
{
    const bool special = is_special(octet);
    to[0] = special ? escape : octet;
    to[1] = octet ^ flip;
    return 1u + special;
}

std::uint8_t *escape_octets(std::uint8_t *to, const std::uint8_t *data, std::uint32_t count)
{
    for (std::uint32_t n = 0; n < count; ++n)
        to += escape_octet(to, data[n]);
    return to;
}

/// Escapes `length` octets to `to`.  Behind the octets that they become one more may be written.
std::uint8_t *escape_all(std::uint8_t *to, const std::uint8_t *data, std::uint32_t length)
{
    std::uint32_t n = 0;
    while (length - n >= block_size) {
        const std::uint32_t found = specials(data + n);
        if (found == 0) {
            copy_block(to, data + n);
            to += block_size;
            n += block_size;
        } else if (std::popcount(found) >= dense) {
            to = escape_octets(to, data + n, block_size);
            n += block_size;
        } else {
            // Up to and with the first special octet.  The block itself has room: what it becomes is longer.
            const auto plain = static_cast<std::uint32_t>(std::countr_zero(found));
            copy_block(to, data + n);
            to = escape_octets(to + plain, data + n + plain, 1);
            n += plain + 1;
        }
    }
    return escape_octets(to, data + n, length - n);
}

/// Octets in front of the first special one among `length`.
inline std::uint32_t plain_run(const std::uint8_t *data, std::uint32_t length)
{
    std::uint32_t n = 0;
    for (; length - n >= block_size; n += block_size)
        if (const std::uint32_t found = specials(data + n); found != 0)
            return n + static_cast<std::uint32_t>(std::countr_zero(found));
    while (n < length && !is_special(data[n]))
        ++n;
    return n;
}

/// An octet of a chunk, or the one behind it, which an escape at its end takes in.
inline std::uint8_t octet_at(const std::uint8_t *input, std::uint32_t length, std::uint32_t index)
{
    return index < std::max(length, COM_READ_SIZE) ? input[index] : std::uint8_t{0};
}

struct measure {
    std::uint32_t payload;  ///< octets between the first octet and the end of the scan, escapes undone
    bool          complete; ///< a delimiter ended the scan
};

/// Walks from octet 1 to the octet before the last, or to a delimiter.
measure measure_frame(const std::uint8_t *input, std::uint32_t length)
{
    const std::uint32_t end = length - 1;
    std::uint32_t       index = 1;
    std::uint32_t       payload = 0;
    while (index < end) {
        const std::uint32_t run = plain_run(input + index, end - index);
        index += run;
        payload += run;
        if (index >= end || input[index] == delimiter)
            break;
        index += 2;
        payload += 1;
    }
    // An escape in front of the last octet lets the scan end behind the chunk.
    return {payload, octet_at(input, length, index) == delimiter};
}

/// Undoes the escapes of a chunk up to a delimiter that is not its first octet.  Stores `room` octets at most;
/// answers how many.
std::uint32_t unescape(std::uint8_t *to, std::uint32_t room, const std::uint8_t *input, std::uint32_t length)
{
    std::uint32_t stored = 0;
    std::uint32_t index = input[0] == delimiter ? 1 : 0;
    while (index < length && stored < room) {
        const std::uint32_t run = plain_run(input + index, std::min(length - index, room - stored));
        std::memcpy(to + stored, input + index, run);
        stored += run;
        index += run;
        if (index >= length || stored == room || input[index] == delimiter)
            break;
        to[stored++] = octet_at(input, length, index + 1) ^ flip;
        index += 2;
    }
    return stored;
}

} // namespace

int EncodeData(const std::uint8_t *payload, std::uint32_t length, std::uint8_t **out, std::uint32_t *out_length)
{
    const std::uint32_t framed = length + count_specials(payload, length) + 2;
    auto               *frame = static_cast<std::uint8_t *>(std::malloc(framed));
    if (frame == nullptr)
        return 0;
    frame[0] = delimiter;
    std::uint8_t *end = escape_all(frame + 1, payload, length);
    *end = delimiter;
    *out = frame;
    *out_length = framed;
    return 1;
}

bool DecodeData(const std::uint8_t *input, std::uint32_t length, std::uint8_t **out, std::uint32_t *out_length)
{
    // Two octets more than a payload has: the walk that fills it begins one octet earlier than the one that
    // measures, and ends one later.
    static std::uint8_t     decoded[max_payload + 2];
    constexpr std::uint32_t room = sizeof decoded;

    *out = nullptr;
    *out_length = 0;
    if (length < 4)
        return true;
    const measure frame = measure_frame(input, length);
    const auto    dest_len = static_cast<std::int32_t>(frame.payload);
    if (frame.payload > max_payload) {
        tt_assert(dest_len > 0, "dest_len > (COM_PACH_CODE_BUFF_SIZE_MAX * 4)",
                  R"(ms_code\ps\sdi\conn\common\src\com_pch)", __LINE__);
        return true;
    }
    *out_length = unescape(decoded, room, input, length);
    *out = decoded;
    return frame.complete;
}
