// Framing: sixteen octets at a time where none of them is a delimiter or an escape.
//
// A block without a special octet is copied as it stands.  One with a few goes from special octet to special octet, one
// with many octet by octet without a branch, and one of nothing else is taken apart or put together as a whole.
#include "com_frame.h"

#include <algorithm>
#include <bit>
#include <cstddef>
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

constexpr bool is_special(std::uint8_t octet)
{
    return octet == escape || octet == delimiter;
}

// Of a block, bit n speaks of octet n.
constexpr std::uint32_t all_special = 0xFFFF;
constexpr std::uint32_t all_pairs = 0x5555; ///< escapes, each with the octet that it escapes

/// True from three octets in a block on: from there a loop without a branch wins.
constexpr bool are_many(std::uint32_t found)
{
    found &= found - 1;
    return (found & (found - 1)) != 0;
}

#if defined __SSE2__

inline __m128i load(const std::uint8_t *block)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(block));
}

inline void store(std::uint8_t *to, __m128i octets)
{
    _mm_storeu_si128(reinterpret_cast<__m128i *>(to), octets);
}

inline __m128i all(std::uint8_t octet)
{
    return _mm_set1_epi8(static_cast<char>(octet));
}

inline __m128i where_special(__m128i octets)
{
    return _mm_or_si128(_mm_cmpeq_epi8(octets, all(escape)), _mm_cmpeq_epi8(octets, all(delimiter)));
}

inline std::uint32_t specials(const std::uint8_t *block)
{
    return static_cast<std::uint32_t>(_mm_movemask_epi8(where_special(load(block))));
}

inline std::uint32_t escapes(const std::uint8_t *block)
{
    return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(load(block), all(escape))));
}

/// Special octets in `blocks` blocks.  Each lane counts to 255 at most before its count is taken out.
std::uint32_t count_in_blocks(const std::uint8_t *data, std::uint32_t blocks)
{
    __m128i sum = _mm_setzero_si128();
    while (blocks > 0) {
        const std::uint32_t part = std::min<std::uint32_t>(blocks, 255);
        __m128i             lanes = _mm_setzero_si128();
        for (std::uint32_t n = 0; n < part; ++n, data += block_size)
            lanes = _mm_sub_epi8(lanes, where_special(load(data)));
        sum = _mm_add_epi64(sum, _mm_sad_epu8(lanes, _mm_setzero_si128()));
        blocks -= part;
    }
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(sum) + _mm_cvtsi128_si32(_mm_srli_si128(sum, 8)));
}

/// Escapes each octet of a block: 32 octets.
inline void escape_block(std::uint8_t *to, const std::uint8_t *block)
{
    const __m128i flipped = _mm_xor_si128(load(block), all(flip));
    store(to, _mm_unpacklo_epi8(all(escape), flipped));
    store(to + block_size, _mm_unpackhi_epi8(all(escape), flipped));
}

/// Undoes the escapes of a block of pairs: 8 octets.
inline void unescape_block(std::uint8_t *to, const std::uint8_t *block)
{
    const __m128i escaped = _mm_srli_epi16(load(block), 8);
    const __m128i octets = _mm_xor_si128(_mm_packus_epi16(escaped, escaped), all(flip));
    _mm_storel_epi64(reinterpret_cast<__m128i *>(to), octets);
}

#else

/// 0x80 in each octet of `word` that equals `octet`.
inline std::uint64_t equal_octets(std::uint64_t word, std::uint8_t octet)
{
    constexpr std::uint64_t ones = 0x0101010101010101;
    constexpr std::uint64_t low = 0x7F7F7F7F7F7F7F7F;
    word ^= ones * octet;
    return ~(((word & low) + low) | word | low);
}

inline std::uint64_t load_half(const std::uint8_t *data)
{
    std::uint64_t word;
    std::memcpy(&word, data, sizeof word);
    if constexpr (std::endian::native == std::endian::big)
        word = __builtin_bswap64(word);
    return word;
}

inline std::uint64_t special_octets(std::uint64_t word)
{
    return equal_octets(word, escape) | equal_octets(word, delimiter);
}

/// Gathers the top bits of eight octets, lowest octet first.
inline std::uint32_t gather(std::uint64_t hits)
{
    return static_cast<std::uint32_t>((hits >> 7) * 0x0102040810204080 >> 56);
}

inline std::uint32_t specials(const std::uint8_t *block)
{
    return gather(special_octets(load_half(block))) | gather(special_octets(load_half(block + 8))) << 8;
}

inline std::uint32_t escapes(const std::uint8_t *block)
{
    return gather(equal_octets(load_half(block), escape)) | gather(equal_octets(load_half(block + 8), escape)) << 8;
}

std::uint32_t count_in_blocks(const std::uint8_t *data, std::uint32_t blocks)
{
    std::uint32_t count = 0;
    for (const std::uint8_t *end = data + std::size_t{blocks} * block_size; data < end; data += 8)
        count += static_cast<std::uint32_t>(std::popcount(special_octets(load_half(data))));
    return count;
}

inline void escape_block(std::uint8_t *to, const std::uint8_t *block)
{
    for (std::uint32_t n = 0; n < block_size; ++n) {
        to[2 * n] = escape;
        to[2 * n + 1] = block[n] ^ flip;
    }
}

inline void unescape_block(std::uint8_t *to, const std::uint8_t *block)
{
    for (std::uint32_t n = 0; n < block_size / 2; ++n)
        to[n] = block[2 * n + 1] ^ flip;
}

#endif

inline void copy_block(std::uint8_t *to, const std::uint8_t *from)
{
    std::memcpy(to, from, block_size);
}

std::uint32_t count_specials(const std::uint8_t *data, std::uint32_t length)
{
    const std::uint32_t blocks = length / block_size;
    std::uint32_t       count = count_in_blocks(data, blocks);
    for (std::uint32_t n = blocks * block_size; n < length; ++n)
        count += is_special(data[n]);
    return count;
}

// ------------------------------------------------------------------------------------------ escaping

/// Escapes octet by octet.  Behind the octets that they become one more may be written.
std::uint8_t *escape_octets(std::uint8_t *to, const std::uint8_t *data, std::uint32_t count)
{
    for (std::uint32_t n = 0; n < count; ++n) {
        const bool special = is_special(data[n]);
        to[0] = special ? escape : data[n];
        to[1] = data[n] ^ flip;
        to += 1 + special;
    }
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
        } else if (found == all_special) {
            escape_block(to, data + n);
            to += 2 * block_size;
            n += block_size;
        } else if (are_many(found)) {
            to = escape_octets(to, data + n, block_size);
            n += block_size;
        } else {
            // Up to and with the first special octet.  The block itself has room: what it becomes is longer.
            const auto plain = static_cast<std::uint32_t>(std::countr_zero(found));
            copy_block(to, data + n);
            to[plain] = escape;
            to[plain + 1] = data[n + plain] ^ flip;
            to += plain + 2;
            n += plain + 1;
        }
    }
    return escape_octets(to, data + n, length - n);
}

// ------------------------------------------------------------------------------------------ undoing it

/// An octet of a chunk, or the one behind it, which an escape at its end takes in.
inline std::uint8_t octet_at(const std::uint8_t *input, std::uint32_t length, std::uint32_t index)
{
    return index < std::max(length, COM_READ_SIZE) ? input[index] : std::uint8_t{0};
}

/// Where a walk over a chunk stands.
struct walk {
    std::uint8_t *to;
    std::uint32_t index;
};

/// Undoes the escapes of a block, all of which have their octet in the block or are its last octet: that one is left.
inline walk unescape_mixed(walk at, const std::uint8_t *block, std::uint32_t escaped)
{
    const std::uint32_t count = block_size - (escaped >> (block_size - 1));
    for (std::uint32_t n = 0; n < count; ++n) {
        const std::uint32_t after_escape = escaped << 1 >> n & 1;
        *at.to = block[n] ^ static_cast<std::uint8_t>(after_escape * flip);
        at.to += ~escaped >> n & 1;
    }
    at.index += count;
    return at;
}

/// Undoes the escapes block by block, to the block with a delimiter or the octet `last` at the latest.  Needs a block
/// of room more than what the octets become.
walk unescape_blocks(walk at, const std::uint8_t *input, std::uint32_t last)
{
    while (at.index + block_size <= last) {
        const std::uint8_t *block = input + at.index;
        const std::uint32_t found = specials(block);
        if (found == 0) {
            copy_block(at.to, block);
            at.to += block_size;
            at.index += block_size;
            continue;
        }
        const std::uint32_t escaped = escapes(block);
        if (found != escaped || (escaped & escaped << 1) != 0)
            break; // a delimiter, or an escape that is escaped
        if (escaped == all_pairs) {
            unescape_block(at.to, block);
            at.to += block_size / 2;
            at.index += block_size;
        } else if (are_many(escaped)) {
            at = unescape_mixed(at, block, escaped);
        } else {
            const auto plain = static_cast<std::uint32_t>(std::countr_zero(escaped));
            copy_block(at.to, block);
            at.to[plain] = block[plain + 1] ^ flip;
            at.to += plain + 1;
            at.index += plain + 2;
        }
    }
    return at;
}

/// Undoes the escapes of a chunk up to a delimiter that is not its first octet, or to its last octet, which is left,
/// unless an escape takes it in.  Stores to `end` at most, and a block behind it that does not count.
walk unescape(std::uint8_t *to, const std::uint8_t *end, const std::uint8_t *input, std::uint32_t last)
{
    walk at = {to, input[0] == delimiter ? 1u : 0u};
    while (at.index < last && at.to < end) {
        if (end - at.to >= static_cast<std::ptrdiff_t>(last - at.index))
            at = unescape_blocks(at, input, last);
        // A block's worth octet by octet: what stopped the blocks is in it.
        for (std::uint32_t n = 0; n < block_size && at.index < last && at.to < end; ++n) {
            if (input[at.index] == delimiter)
                return at;
            const bool escaped = input[at.index] == escape;
            *at.to++ = escaped ? input[at.index + 1] ^ flip : input[at.index];
            at.index += 1u + escaped;
        }
    }
    return at;
}

/// The last octet of a chunk, when the walk stopped there: an escape takes in the octet behind the chunk.
std::uint8_t *unescape_last(walk at, const std::uint8_t *end, const std::uint8_t *input, std::uint32_t length)
{
    if (at.index + 1 == length && at.to < end && input[at.index] != delimiter)
        *at.to++ = input[at.index] == escape ? octet_at(input, length, length) ^ flip : input[at.index];
    return at.to;
}

struct measure {
    std::uint32_t payload;  ///< octets between the first octet and the end of the scan, escapes undone
    bool          complete; ///< a delimiter ended the scan
};

/// Walks from octet 1 to the octet before the last, or to a delimiter.
measure measure_frame(const std::uint8_t *input, std::uint32_t length)
{
    std::uint32_t index = 1;
    std::uint32_t payload = 0;
    for (; index < length - 1 && input[index] != delimiter; ++payload)
        index += input[index] == escape ? 2 : 1;
    // An escape in front of the last octet lets the scan end behind the chunk.
    return {payload, octet_at(input, length, index) == delimiter};
}

/// True when the walk that measures a chunk meets the octets that the one that undoes its escapes meets, and finds no
/// more than there may be: it then need not be made.
bool measures_itself(const std::uint8_t *input, std::uint32_t length)
{
    return input[0] != escape && length <= max_payload;
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
    // Two octets more than a payload has, since the walk that fills it begins one octet earlier than the one that
    // measures and ends one later; and room for the last block to be stored as a whole.
    constexpr std::uint32_t room = max_payload + 2;
    static std::uint8_t     decoded[room + block_size];

    *out = nullptr;
    *out_length = 0;
    if (length < 4)
        return true;
    const bool simple = measures_itself(input, length);
    measure    frame{};
    if (!simple) {
        frame = measure_frame(input, length);
        if (frame.payload > max_payload) {
            const auto dest_len = static_cast<std::int32_t>(frame.payload);
            tt_assert(dest_len > 0, "dest_len > (COM_PACH_CODE_BUFF_SIZE_MAX * 4)",
                      R"(ms_code\ps\sdi\conn\common\src\com_pch)", __LINE__);
            return true;
        }
    }
    const walk end = unescape(decoded, decoded + room, input, length - 1);
    *out_length = static_cast<std::uint32_t>(unescape_last(end, decoded + room, input, length) - decoded);
    *out = decoded;
    return simple ? octet_at(input, length, end.index) == delimiter : frame.complete;
}
