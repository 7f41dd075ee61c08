// The bit stream as its rules read, one bit and one octet at a time: what the run-time must come to.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "asn_len_int.h"
#include "per_stream.h"

using octet_list = std::vector<std::uint8_t>;

inline bool model_bit(const std::uint8_t *octets, std::uint32_t bit)
{
    return octets[bit / 8] & 0x80 >> bit % 8;
}

inline void model_set_bit(std::uint8_t *octets, std::uint32_t bit, bool on)
{
    const auto at   = static_cast<std::uint8_t>(0x80 >> bit % 8);
    octets[bit / 8] = static_cast<std::uint8_t>(on ? octets[bit / 8] | at : octets[bit / 8] & ~at);
}

inline std::uint32_t model_read(const std::uint8_t *octets, std::uint32_t bit, std::uint32_t n)
{
    std::uint32_t value = 0;
    for (std::uint32_t i = 0; i < n; ++i)
        value = value << 1 | model_bit(octets, bit + i);
    return value;
}

inline void model_write(std::uint8_t *octets, std::uint32_t bit, std::uint32_t n, std::uint32_t value)
{
    for (std::uint32_t i = 0; i < n; ++i)
        model_set_bit(octets, bit + i, value >> (n - 1 - i) & 1);
}

// A block that ends where its contents end, so that the address sanitizer sees each octet read behind them.
struct tight_octets {
    std::unique_ptr<std::uint8_t[]> data;

    explicit tight_octets(std::span<const std::uint8_t> octets) : data(new std::uint8_t[octets.size()])
    {
        std::copy(octets.begin(), octets.end(), data.get());
    }
};

// What a string unpack leaves, done by one checked read an octet.
struct model_string {
    octet_list octets;
    AsnLen     length = 0;
};

// `unit` is 8 for octets and 1 for bits.
inline model_string model_unpack_string(unpack_info_struct *stream, std::int32_t upper, std::uint32_t lower,
                                        std::uint32_t mode, std::uint32_t unit)
{
    const bool   bounded = mode == 2 && upper < 65536;
    model_string string;
    for (;;) {
        AsnLen length = 0;
        if (bounded)
            length = per_get_bits_checked(stream, asn_bit_width(static_cast<std::uint32_t>(upper) - lower)) + lower;
        else
            AsnLenSemiConstrained_unpack(&length, stream, lower, "");
        const std::uint64_t octets = unit == 8 ? length : (std::uint64_t{length} + 7) / 8;
        if (static_cast<std::int64_t>(octets) > stream->fr_size) {
            per_set_error(stream, PER_HARD_ERROR);
            string.length = 0;
            return string;
        }
        std::uint64_t left = std::uint64_t{length} * unit;
        for (; left > 8; left -= 8)
            string.octets.push_back(static_cast<std::uint8_t>(per_get_8_checked(stream, 8)));
        if (left > 0) {
            const auto n = static_cast<std::uint32_t>(left);
            string.octets.push_back(static_cast<std::uint8_t>(per_get_8_checked(stream, n) << (8 - n)));
        }
        string.length += length;
        if (bounded || length < 16384)
            return string;
    }
}
