// Reads, writes and skips against the bit-by-bit model: all offsets and widths, in every form.
#include "per_stream.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <utility>

#include "bit_model.h"

namespace {

// The same operation with the width as a literal and as a variable, and by the function of its band.
using get_function  = std::uint32_t (*)(unpack_info_struct *, std::uint32_t);
using put_function  = void (*)(pack_info_struct *, std::uint32_t, std::uint32_t);
using peek_function = std::uint32_t (*)(const std::uint8_t *, std::uint32_t, std::uint32_t);
using poke_function = void (*)(std::uint8_t *, std::uint32_t, std::uint32_t, std::uint32_t);

struct forms_of_width {
    get_function  get_literal, get_checked_literal;
    put_function  put_literal;
    peek_function peek_literal;
    poke_function poke_literal;
};

template <std::uint32_t n> constexpr forms_of_width forms_of()
{
    return {
        [](unpack_info_struct *stream, std::uint32_t) { return per_get_bits(stream, n); },
        [](unpack_info_struct *stream, std::uint32_t) { return per_get_bits_checked(stream, n); },
        [](pack_info_struct *stream, std::uint32_t, std::uint32_t value) { per_put_bits(stream, n, value); },
        [](const std::uint8_t *octets, std::uint32_t offset, std::uint32_t) {
            return per_peek_bits(octets, offset, n);
        },
        [](std::uint8_t *octets, std::uint32_t offset, std::uint32_t, std::uint32_t value) {
            per_poke_bits(octets, offset, n, value);
        },
    };
}

template <std::uint32_t... n> constexpr auto all_forms(std::integer_sequence<std::uint32_t, n...>)
{
    return std::array<forms_of_width, sizeof...(n)>{forms_of<n>()...};
}

constexpr auto literal_forms = all_forms(std::make_integer_sequence<std::uint32_t, 33>{});

struct band {
    std::uint32_t least, most;
    get_function  get, get_checked;
    put_function  put;
    peek_function peek;
    poke_function poke;
};

const band bands[] = {
    {0, 8, per_get_8, per_get_8_checked, per_put_8, per_peek_8, per_poke_8},
    {9, 16, per_get_16, per_get_16_checked, per_put_16, per_peek_16, per_poke_16},
    {17, 24, per_get_24, per_get_24_checked, per_put_24, per_peek_24, per_poke_24},
    {25, 32, per_get_32, per_get_32_checked, per_put_32, per_peek_32, per_poke_32},
};

const band &band_of(std::uint32_t n)
{
    for (const band &band : bands)
        if (n <= band.most)
            return band;
    throw std::out_of_range("width");
}

octet_list random_octets(std::size_t count, std::uint32_t seed)
{
    std::mt19937 random(seed);
    octet_list   octets(count);
    for (auto &octet : octets)
        octet = static_cast<std::uint8_t>(random());
    return octets;
}

std::string place(std::uint32_t offset, std::uint32_t n, const char *form)
{
    return std::string(form) + " of " + std::to_string(n) + " bits at offset " + std::to_string(offset);
}

// Runs `test(offset, n, octets)` for all offsets and widths; `octets` are those that the field touches, at least
// one.
template <typename Test> void for_all_fields(Test test)
{
    for (std::uint32_t offset = 0; offset < 8; ++offset)
        for (std::uint32_t n = 0; n <= 32; ++n)
            test(offset, n, std::max(1u, (offset + n + 7) / 8));
}

TEST(PerStream, MaskHoldsTheLowBits)
{
    EXPECT_EQ(bit_mask(0), 0u);
    EXPECT_EQ(bit_mask(1), 1u);
    EXPECT_EQ(bit_mask(31), 0x7FFFFFFFu);
    EXPECT_EQ(bit_mask(32), 0xFFFFFFFFu);
    EXPECT_EQ(bit_mask(33), 0xFFFFFFFFu);
    EXPECT_EQ(bit_mask(0xFFFFFFFF), 0xFFFFFFFFu);
}

TEST(PerStream, ReadsMatchTheModelAndTouchNoOtherOctet)
{
    for_all_fields([](std::uint32_t offset, std::uint32_t n, std::uint32_t octets) {
        const band           &band     = band_of(n);
        const forms_of_width &literal  = literal_forms[n];
        const octet_list      contents = random_octets(octets, offset * 64 + n);
        const tight_octets    frame(contents);
        const std::uint32_t   should = model_read(contents.data(), offset, n);

        const std::pair<const char *, get_function> gets[] = {
            {"get_bits", [](unpack_info_struct *stream, std::uint32_t width) { return per_get_bits(stream, width); }},
            {"get_any", per_get_any},
            {"get_bits, literal", literal.get_literal},
            {"get of the band", band.get},
            {"get_bits_checked", per_get_bits_checked},
            {"get_bits_checked, literal", literal.get_checked_literal},
            {"get_checked of the band", band.get_checked}};
        for (const auto &[form, get] : gets) {
            SCOPED_TRACE(place(offset, n, form));
            PerError           error  = {0, 7, 8, 9};
            unpack_info_struct stream = {frame.data.get(), 0xFFFFFFF8u + offset, static_cast<std::int32_t>(octets),
                                         &error};
            EXPECT_EQ(get(&stream, n), should);
            EXPECT_EQ(stream.bits, 0xFFFFFFF8u + offset + n);
            EXPECT_EQ(stream.frame, frame.data.get() + (offset + n) / 8);
            EXPECT_EQ(stream.fr_size, static_cast<std::int32_t>(octets - (offset + n) / 8));
            EXPECT_EQ(stream.err_hndl, &error);
            EXPECT_EQ(error.code, 0u);
            EXPECT_EQ(error.detail, 7u);
        }
        for (const peek_function peek : {per_peek_bits, literal.peek_literal, band.peek})
            EXPECT_EQ(peek(frame.data.get(), offset, n), should) << place(offset, n, "peek");
    });
}

TEST(PerStream, WritesMatchTheModelAndKeepTheirNeighbours)
{
    for_all_fields([](std::uint32_t offset, std::uint32_t n, std::uint32_t octets) {
        const band           &band    = band_of(n);
        const forms_of_width &literal = literal_forms[n];
        for (std::uint32_t pattern = 0; pattern < 6; ++pattern) {
            const octet_list    before = pattern < 2   ? octet_list(octets, 0x00)
                                         : pattern < 4 ? octet_list(octets, 0xFF)
                                                       : random_octets(octets, offset * 64 + n);
            const std::uint32_t value  = pattern % 2 ? 0xFFFFFFFF : pattern == 4 ? 0x5A17C3E9 : 0;
            octet_list          should(before);
            model_write(should.data(), offset, n, value);

            const auto check = [&](const char *form, auto &&write) {
                SCOPED_TRACE(place(offset, n, form));
                const tight_octets frame(before);
                write(frame.data.get());
                EXPECT_EQ(octet_list(frame.data.get(), frame.data.get() + octets), should);
            };
            const std::pair<const char *, put_function> puts[] = {
                {"put_bits", [](pack_info_struct *stream, std::uint32_t width,
                                std::uint32_t field) { per_put_bits(stream, width, field); }},
                {"put_any", per_put_any},
                {"put_bits, literal", literal.put_literal},
                {"put of the band", band.put}};
            for (const auto &[form, write] : puts)
                check(form, [&, put = write](std::uint8_t *frame) {
                    pack_info_struct stream = {frame, 8 + offset};
                    put(&stream, n, value);
                    EXPECT_EQ(stream.bits, 8 + offset + n);
                    EXPECT_EQ(stream.frame, frame + (offset + n) / 8);
                });
            for (const poke_function poke : {per_poke_bits, literal.poke_literal, band.poke})
                check("poke", [&](std::uint8_t *frame) { poke(frame, offset, n, value); });
        }
    });
}

TEST(PerStream, WriteAcrossTheOctetBoundary)
{
    std::uint8_t     frame[2] = {0xA8, 0x55};
    pack_info_struct stream   = {frame, 6};
    per_put_8(&stream, 3, 5);
    EXPECT_EQ(frame[0], 0xAA); // the low two bits: 10
    EXPECT_EQ(frame[1], 0xD5); // the top bit: 1
    EXPECT_EQ(stream.bits, 9u);
    EXPECT_EQ(stream.frame, frame + 1);
}

TEST(PerStream, ThirtyTwoBitsAtOffsetSevenSpanFiveOctets)
{
    std::uint8_t     frame[5] = {0xFE, 0, 0, 0, 0x7F};
    pack_info_struct to       = {frame, 7};
    per_put_32(&to, 32, 0xC0000003);
    EXPECT_EQ(octet_list(frame, frame + 5), (octet_list{0xFF, 0x80, 0x00, 0x00, 0x07}));
    EXPECT_EQ(to.frame, frame + 4);

    unpack_info_struct from = {frame, 7, 5, nullptr};
    EXPECT_EQ(per_get_32(&from, 32), 0xC0000003u);
    EXPECT_EQ(from.fr_size, 1);
}

// Each field against all frames from empty to one octet too long.
TEST(PerStream, CheckedReadsStopExactlyAtTheEnd)
{
    for_all_fields([](std::uint32_t offset, std::uint32_t n, std::uint32_t octets) {
        for (std::uint32_t size = 0; size <= octets + 1; ++size) {
            const octet_list   contents = random_octets(octets + 1, n);
            const bool         fits     = offset + n <= size * 8;
            const get_function gets[]   = {per_get_bits_checked, band_of(n).get_checked};
            for (const get_function get : gets) {
                SCOPED_TRACE(place(offset, n, "checked read") + " of " + std::to_string(size) + " octets");
                PerError           error  = {1, 5, 6, 7};
                unpack_info_struct stream = {contents.data(), offset, static_cast<std::int32_t>(size), &error};
                EXPECT_EQ(get(&stream, n), fits ? model_read(contents.data(), offset, n) : 0);
                EXPECT_EQ(stream.bits, fits ? offset + n : offset);
                EXPECT_EQ(stream.frame, contents.data() + (fits ? (offset + n) / 8 : 0));
                EXPECT_EQ(error.code, fits ? 1u : 2u);
                EXPECT_EQ(error.detail, fits ? 5u : 1u);
                EXPECT_EQ(error.aux, 6u);
                EXPECT_EQ(error.must_understand, 7u);
            }
        }
    });
}

// The end is fr_size in bits as an unsigned 32-bit word, wherever that leads.
TEST(PerStream, CheckedReadsCompareUnsignedWords)
{
    const std::uint8_t frame[2] = {0xAB, 0xCD};
    const struct {
        const char   *name;
        std::int32_t  size;
        std::uint32_t value;
    } rows[] = {
        {"below 0 passes", -1, 0xABC},
        {"far below 0 wraps to nothing", INT32_MIN, 0},
        {"2^29 octets wrap to nothing", 0x20000000, 0},
        {"2^29 + 2 octets wrap to two", 0x20000002, 0xABC},
        {"the last before 2^29 passes", 0x1FFFFFFF, 0xABC},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        PerError           error{};
        unpack_info_struct stream = {frame, 0, row.size, &error};
        EXPECT_EQ(per_get_bits_checked(&stream, 12), row.value);
        EXPECT_EQ(error.code, row.value ? 0u : 2u);
    }
}

TEST(PerStream, CheckedReadOfNothingTouchesNothing)
{
    PerError           error{};
    unpack_info_struct stream = {nullptr, 8, 0, &error};
    EXPECT_EQ(per_get_bits_checked(&stream, 0), 0u);
    EXPECT_EQ(per_get_8_checked(&stream, 0), 0u);
    EXPECT_EQ(error.code, 0u);
}

TEST(PerStream, CheckedReadWithoutErrorRecordStillFails)
{
    const std::uint8_t frame[1] = {0xFF};
    unpack_info_struct stream   = {frame, 0, 1, nullptr};
    EXPECT_EQ(per_get_16_checked(&stream, 9), 0u);
    EXPECT_EQ(stream.bits, 0u);
}

TEST(PerStream, SkipsMoveTheCursor)
{
    const octet_list frame(64);
    const struct {
        const char   *name;
        std::uint32_t bits, n;
        std::int32_t  size, moved;
        bool          checked_moves;
    } rows[] = {
        {"nothing", 3, 0, 4, 0, true},
        {"inside the octet", 3, 4, 4, 0, true},
        {"to the octet's end", 3, 5, 4, 1, true},
        {"count behind the first octet", 19, 5, 4, 1, true},
        {"several octets", 7, 200, 26, 25, true},
        {"to the very end", 1, 31, 4, 4, true},
        {"one past the end", 1, 32, 4, 4, false},
        {"far past the end", 0, 400, 4, 50, false},
        {"eight back", 35, static_cast<std::uint32_t>(-8), 4, -1, false},
        {"nine back", 32, static_cast<std::uint32_t>(-9), 4, -2, false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        const std::uint8_t *const start  = frame.data() + 4;
        unpack_info_struct        stream = {start, row.bits, row.size, nullptr};
        per_skip_bits(&stream, row.n);
        EXPECT_EQ(stream.bits, row.bits + row.n);
        EXPECT_EQ(stream.frame, start + row.moved);
        EXPECT_EQ(stream.fr_size, row.size - row.moved);

        PerError error{};
        stream = {start, row.bits, row.size, &error};
        per_skip_bits_checked(&stream, row.n);
        EXPECT_EQ(error.code, row.checked_moves ? 0u : 2u);
        EXPECT_EQ(error.detail, row.checked_moves ? 0u : 1u);
        EXPECT_EQ(stream.bits, row.checked_moves ? row.bits + row.n : row.bits);
        EXPECT_EQ(stream.frame, row.checked_moves ? start + row.moved : start);
    }
}

// Runs of octets, against one 8-bit read or write each.
TEST(PerStream, RunsOfOctetsAreTheirSingleReadsAndWrites)
{
    for (std::uint32_t offset = 0; offset < 8; ++offset)
        for (const std::uint32_t count : {0u, 1u, 2u, 7u, 8u, 9u, 15u, 16u, 17u, 31u, 64u, 100u}) {
            SCOPED_TRACE(place(offset, count * 8, "run"));
            const octet_list   contents = random_octets(count + (offset != 0), offset * 128 + count);
            const tight_octets frame(contents);
            unpack_info_struct from = {frame.data.get(), offset, 200, nullptr}, one_by_one = from;
            octet_list         is(count), should;
            per_get_octets(&from, is.data(), count);
            for (std::uint32_t i = 0; i < count; ++i)
                should.push_back(static_cast<std::uint8_t>(per_get_8(&one_by_one, 8)));
            EXPECT_EQ(is, should);
            EXPECT_EQ(from.bits, one_by_one.bits);
            EXPECT_EQ(from.frame, one_by_one.frame);
            EXPECT_EQ(from.fr_size, one_by_one.fr_size);

            const octet_list   held = random_octets(contents.size(), count);
            const tight_octets packed(held), packed_one_by_one(held);
            pack_info_struct to = {packed.data.get(), offset}, to_one_by_one = {packed_one_by_one.data.get(), offset};
            per_put_octets(&to, is.data(), count);
            for (const std::uint8_t octet : is)
                per_put_8(&to_one_by_one, 8, octet);
            EXPECT_EQ(octet_list(packed.data.get(), packed.data.get() + held.size()),
                      octet_list(packed_one_by_one.data.get(), packed_one_by_one.data.get() + held.size()));
            EXPECT_EQ(to.bits, to_one_by_one.bits);
            EXPECT_EQ(to.frame - packed.data.get(), to_one_by_one.frame - packed_one_by_one.data.get());
        }
}

TEST(PerStream, HighBitsDifferFromThePadding)
{
    const std::uint32_t high_of_one[] = {0, 1, 3, 5}, high_of_zero[] = {2, 4, 6, 7};
    const auto          has = [](const auto &list, std::uint32_t position) {
        return std::find(std::begin(list), std::end(list), position) != std::end(list);
    };
    for (std::uint32_t value : {0u, 1u, 2u, 3u, 0xFFFFFFFFu})
        for (std::uint32_t position : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 13u, 0xFFFFFFFFu}) {
            std::uint8_t result = 0x55;
            per_lh_bit(value, position, &result);
            EXPECT_EQ(result, value == 1   ? has(high_of_one, position)
                              : value == 0 ? has(high_of_zero, position)
                                           : 0)
                << value << " at " << position;
        }
}

} // namespace
