// Framing against the rules written octet by octet, over payloads of every density of special octets.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include "com_frame.h"
#include "frame_model.h"

namespace {

octets encoded(const octets &payload)
{
    std::uint8_t *out = nullptr;
    std::uint32_t length = 0;
    EXPECT_EQ(EncodeData(payload.data(), static_cast<std::uint32_t>(payload.size()), &out, &length), 1);
    octets frame(out, out + length);
    std::free(out);
    return frame;
}

/// Decodes a chunk that has `behind` after its end, in a block of exactly that size.
decoded decode(const octets &chunk, std::uint8_t behind = 0)
{
    octets block = chunk;
    block.push_back(behind);
    std::uint8_t *out = nullptr;
    std::uint32_t length = 99;
    decoded       result;
    result.complete = DecodeData(block.data(), static_cast<std::uint32_t>(chunk.size()), &out, &length);
    if (out != nullptr)
        result.data = octets(out, out + length);
    else
        EXPECT_EQ(length, 0u);
    return result;
}

// ---------------------------------------------------------------------------- cases

struct frame_case {
    const char *name;
    octets      payload;
    octets      frame;
};

const frame_case frame_cases[] = {
    {"both special octets", {0x7D, 0x7E, 0x41}, {0x7E, 0x7D, 0x5D, 0x7D, 0x5E, 0x41, 0x7E}},
    {"nothing",             {},                 {0x7E, 0x7E}},
    {"escaped forms stand", {0x5D, 0x5E},       {0x7E, 0x5D, 0x5E, 0x7E}},
};

TEST(frame, encodes)
{
    for (const frame_case &row : frame_cases)
        EXPECT_EQ(encoded(row.payload), row.frame) << row.name;
}

struct chunk_case {
    const char           *name;
    octets                chunk;
    std::uint8_t          behind;
    std::optional<octets> data;
    bool                  complete;
};

const chunk_case chunk_cases[] = {
    {"a whole frame",                {0x7E, 0x7D, 0x5E, 0x41, 0x7E},       0,    octets{0x7E, 0x41},       true},
    {"an empty frame",               {0x7E, 0x7E},                         0,    std::nullopt,             true},
    {"below four octets",            {0x7E, 0x41, 0x7E},                   0,    std::nullopt,             true},
    {"the first half",               {0x7E, 0x41, 0x42, 0x43},             0,    octets{0x41, 0x42, 0x43}, false},
    {"the second half",              {0x44, 0x45, 0x46, 0x7E},             0,    octets{0x44, 0x45, 0x46}, true},
    {"the second of two is lost",    {0x7E, 0x41, 0x7E, 0x7E, 0x42, 0x7E}, 0,    octets{0x41},             true},
    {"an escape at the end",         {0x7E, 0x41, 0x42, 0x7D},             0x5E, octets{0x41, 0x42, 0x7E}, false},
    {"a delimiter behind the chunk", {0x7E, 0x41, 0x7D, 0x42},             0x7E, octets{0x41, 0x62},       true},
    {"four delimiters",              {0x7E, 0x7E, 0x7E, 0x7E},             0,    octets{},                 true},
};

TEST(frame, decodes)
{
    for (const chunk_case &row : chunk_cases) {
        const decoded result = decode(row.chunk, row.behind);
        EXPECT_EQ(result.data, row.data) << row.name;
        EXPECT_EQ(result.complete, row.complete) << row.name;
        EXPECT_EQ(model_decode(row.chunk, row.behind), result) << row.name;
    }
}

TEST(frame, has_a_largest_payload)
{
    EXPECT_EQ(decode(encoded(octets(65536, 0x41))).data, octets(65536, 0x41));
    EXPECT_EQ(decode(encoded(octets(65536, 0x7D))).data, octets(65536, 0x7D));
    EXPECT_EQ(decode(encoded(octets(65537, 0x41))), (decoded{std::nullopt, true}));
}

/// Octets of which `share` in 256 are special.
octets random_octets(std::mt19937 &random, std::size_t size, unsigned share)
{
    octets data(size);
    for (std::uint8_t &octet : data) {
        octet = static_cast<std::uint8_t>(random());
        if (random() % 256 < share)
            octet = random() % 2 == 0 ? 0x7D : 0x7E;
    }
    return data;
}

TEST(frame, follows_the_rules_on_random_octets)
{
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (const unsigned share : {0u, 2u, 16u, 64u, 128u, 256u})
        for (int round = 0; round < 300; ++round) {
            const octets payload = random_octets(random, random() % 200, share);
            const octets frame = encoded(payload);
            ASSERT_EQ(frame, model_encoded(payload)) << "share " << share;
            ASSERT_EQ(decode(frame), model_decode(frame)) << "share " << share;
            // What is no frame at all: any octets, with any octet behind them.
            const auto behind = static_cast<std::uint8_t>(random() % 3 + 0x7C);
            ASSERT_EQ(decode(payload, behind), model_decode(payload, behind)) << "share " << share;
        }
}

TEST(frame, stays_in_its_buffer_whatever_comes)
{
    // An escaped delimiter that only one of the two walks takes for the end: short measure, long payload.
    octets chunk(70000, 0x41);
    chunk[0] = 0x7D;
    chunk[1] = 0x7E;
    const decoded result = decode(chunk);
    ASSERT_TRUE(result.data.has_value());
    EXPECT_EQ(result.data->size(), 65538u);
    EXPECT_TRUE(result.complete);
}

} // namespace
