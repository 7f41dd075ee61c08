// Air messages by name: the operations over rows registered here, in a build without marrowd.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <gtest/gtest.h>

#include "solvane/solvane.h"
#include "tt_td_lte_stack_peer_table.h"

namespace {

// What the functions of the rows are told to answer, and what they were given.
struct script {
    std::uint32_t count      = 0;
    std::uint32_t error_code = 0;
    std::int32_t  result     = 0;
    std::uint32_t given_count = 0, given_error = 0;
} told;

void encode_bits(const void *value, std::uint8_t *frame, std::uint32_t *bit_count, std::uint32_t *error_code)
{
    told.given_count = *bit_count;
    told.given_error = *error_code;
    frame[0]         = *static_cast<const std::uint8_t *>(value);
    *bit_count       = told.count;
    *error_code      = told.error_code;
}

void decode_bits(void *value, const std::uint8_t *frame, std::uint32_t *bit_count, std::uint32_t *error_code)
{
    told.given_count                    = *bit_count;
    told.given_error                    = *error_code;
    *static_cast<std::uint8_t *>(value) = frame[0];
    *bit_count                          = told.count;
    *error_code                         = told.error_code;
}

void encode_octets(const void *value, std::uint8_t *frame, std::uint32_t *octet_count)
{
    told.given_count = *octet_count;
    frame[0]         = *static_cast<const std::uint8_t *>(value);
    *octet_count     = told.count;
}

std::int32_t decode_octets(void *value, const std::uint8_t *frame, std::uint32_t *octet_count)
{
    told.given_count                    = *octet_count;
    *static_cast<std::uint8_t *>(value) = frame[0];
    *octet_count                        = told.count;
    return told.result;
}

class AirMsg : public ::testing::Test
{
protected:
    void SetUp() override
    {
        told = {};
        register_air_msg_row(air_msg_bits_row{"DL_DCCH_Message_s", 39640, encode_bits, decode_bits});
        register_air_msg_row(air_msg_octets_row{"EMM_TAI_T", 8, encode_octets, decode_octets});
        register_air_msg_row(air_msg_bits_row{"both", 1, encode_bits, decode_bits});
        register_air_msg_row(air_msg_octets_row{"both", 2, encode_octets, decode_octets});
    }
    void TearDown() override
    {
        std::free(lte_asn_peer_table.rows);
        std::free(lte_nas_peer_table.rows);
        lte_asn_peer_table = {};
        lte_nas_peer_table = {};
    }

    std::uint32_t pack(const char *name) { return air_msg_pack(name, &packing, &value, &kind); }
    std::uint32_t unpack(const char *name) { return air_msg_unpack(name, &value, &unpacking, &kind); }

    static constexpr std::uint32_t other_octets = 0xAAAAAAAA; ///< of `kind`, those that are not written

    std::uint8_t       value    = 0x5A;
    std::uint8_t       frame[4] = {0xC3};
    std::uint32_t      kind     = other_octets;
    pack_info_struct   packing  = {frame, 5};
    unpack_info_struct unpacking = {frame, 0, 4, nullptr};
};

std::uint32_t kind_octet(std::uint8_t octet)
{
    std::uint32_t kind = 0xAAAAAAAA;
    std::memcpy(&kind, &octet, 1);
    return kind;
}

TEST_F(AirMsg, PackInBits)
{
    told.count      = 13;
    told.error_code = 9; // not looked at
    EXPECT_EQ(pack("DL_DCCH_Message_s"), 2u);
    EXPECT_EQ(kind, kind_octet(1));
    EXPECT_EQ(packing.bits, 5u + 13);
    EXPECT_EQ(packing.frame, frame);
    EXPECT_EQ(frame[0], 0x5A);
    EXPECT_EQ(told.given_count, 0u);
    EXPECT_EQ(told.given_error, 0u);
}

TEST_F(AirMsg, PackInOctets)
{
    told.count = 3;
    EXPECT_EQ(pack("EMM_TAI_T"), 3u);
    EXPECT_EQ(kind, kind_octet(2));
    EXPECT_EQ(packing.bits, 5u + 24);
    EXPECT_EQ(told.given_count, 65535u);
}

// The peer table is not consulted: its names are unknown here.
TEST_F(AirMsg, UnknownName)
{
    EXPECT_EQ(pack("Lte_DL_DCCH_Message"), 0u);
    EXPECT_EQ(kind, 0u) << "the whole word";
    EXPECT_EQ(packing.bits, 5u);

    kind = other_octets;
    EXPECT_EQ(unpack("Lte_DL_DCCH_Message"), 0u);
    EXPECT_EQ(kind, kind_octet(0));

    std::uint8_t found = 7;
    EXPECT_EQ(air_msg_size("Lte_DL_DCCH_Message", &found), 0u);
    EXPECT_EQ(found, 7);
}

TEST_F(AirMsg, UnpackInBitsAddsUp)
{
    told.count = 13;
    EXPECT_EQ(unpack("DL_DCCH_Message_s"), 2u);
    EXPECT_EQ(kind, kind_octet(1));
    EXPECT_EQ(value, 0xC3);
    EXPECT_EQ(unpacking.bits, 13u);

    told.count = 19; // up to the last bit of the frame
    EXPECT_EQ(unpack("DL_DCCH_Message_s"), 3u);
    EXPECT_EQ(unpacking.bits, 32u);
    EXPECT_EQ(unpacking.frame, frame);
    EXPECT_EQ(unpacking.fr_size, 4);
}

TEST_F(AirMsg, UnpackInBitsFails)
{
    told.count      = 13;
    told.error_code = 1;
    EXPECT_EQ(unpack("DL_DCCH_Message_s"), 0u);
    EXPECT_EQ(kind, kind_octet(1));
    EXPECT_EQ(unpacking.bits, 0u);
}

using AirMsgDeathTest = AirMsg;

TEST_F(AirMsgDeathTest, UnpackInBitsPassesTheFrame)
{
    told.count     = 17;
    unpacking.bits = 16;
    EXPECT_DEATH(unpack("DL_DCCH_Message_s"),
                 "Assertion failed: \\(\\(unpackInfo->bits \\+ 7\\) >> 3\\) <= unpackInfo->fr_size, "
                 "file tt_td_lte_stack_peer_table, line 825\n");
}

TEST_F(AirMsg, UnpackInOctets)
{
    told.count = 3;
    EXPECT_EQ(unpack("EMM_TAI_T"), 3u);
    EXPECT_EQ(kind, kind_octet(2));
    EXPECT_EQ(told.given_count, 4u) << "the frame's size";
    EXPECT_EQ(unpacking.bits, 0u);

    told.result = -1;
    EXPECT_EQ(unpack("EMM_TAI_T"), 0u);
    EXPECT_EQ(kind, kind_octet(2));
}

TEST_F(AirMsg, TheTableOfBitsComesFirst)
{
    std::uint8_t found = 0;
    EXPECT_EQ(air_msg_size("both", &found), 1u);
    EXPECT_EQ(found, 1);
    EXPECT_EQ(air_msg_size("EMM_TAI_T", &found), 8u);

    told.count = 8;
    pack("both");
    EXPECT_EQ(kind, kind_octet(1));
    unpack("both");
    EXPECT_EQ(kind, kind_octet(1));
    EXPECT_EQ(air_msg_find_encode_octets("both"), encode_octets);
    EXPECT_EQ(air_msg_find_decode_octets("both"), decode_octets);
    EXPECT_EQ(air_msg_find_encode_bits("both"), encode_bits);
    EXPECT_EQ(air_msg_find_decode_bits("both"), decode_bits);
    EXPECT_EQ(air_msg_find_decode_bits("EMM_TAI_T"), nullptr);
    EXPECT_EQ(air_msg_find_encode_octets("DL_DCCH_Message_s"), nullptr);
}

TEST_F(AirMsg, FirstRowOfANameStays)
{
    register_air_msg_row(air_msg_octets_row{"EMM_TAI_T", 99, nullptr, nullptr});
    EXPECT_EQ(lte_nas_peer_table.count, 2u);
    EXPECT_EQ(lte_nas_peer_table.rows[0].size, 8u);
}

TEST(AirMsgStart, NoRowsWithoutTheLibrary)
{
    tt_register_lte_peers();
    EXPECT_EQ(lte_asn_peer_table.count, 0u);
    EXPECT_EQ(lte_nas_peer_table.count, 0u);
    EXPECT_EQ(lte_nas_peer_table.rows, nullptr);
}

} // namespace
