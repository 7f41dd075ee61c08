// The air message tables of a build with marrowd, and the test control messages that stand beside it there.
#include <cstdint>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "solvane/solvane.h"
#include "tt_ctc_codec.h"
#include "tt_stack_build.h"
#include "tt_td_lte_stack_peer_table.h"

tt_peer_table_struct tt_peer_table;
const tt_peer_family tt_peer_families[TT_NO_PEER_FAMILIES] = {};

extern const char *marrowd_called;

namespace {

class Marrowd : public ::testing::Test
{
protected:
    void SetUp() override { tt_register_lte_peers(); } // adds nothing from the second time on

    std::uint32_t pack(const char *name, const void *value)
    {
        pack_info_struct cursor = {frame, 0};
        return air_msg_pack(name, &cursor, value, &kind);
    }
    std::uint32_t unpack(const char *name, void *value, std::vector<std::uint8_t> octets)
    {
        unpack_info_struct cursor = {octets.data(), 0, static_cast<std::int32_t>(octets.size()), nullptr};
        return air_msg_unpack(name, value, &cursor, &kind);
    }
    std::vector<std::uint8_t> written(std::uint32_t size) const { return {frame, frame + size}; }

    std::uint8_t  frame[300] = {};
    std::uint32_t kind       = 0;
};

TEST_F(Marrowd, Counts)
{
    EXPECT_EQ(lte_asn_peer_table.count, 6u);
    EXPECT_EQ(lte_nas_peer_table.count, 100u);
}

struct pairing {
    const char   *name;
    std::uint32_t size;
    const char   *encode, *decode;
};

// Rows whose functions are not spelt as the row, and one of each kind that is.
TEST_F(Marrowd, FunctionsAndSizes)
{
    const pairing rows[] = {
        {"DL_DCCH_Message_s", 39640, "encode_DL_DCCH_Message", "decode_DL_DCCH_Message"},
        {"LNAS_airMsgEmm_tauReq_T", 336, "LNAS_airMsgEmm_tauReq_encode", "LNAS_airMsgEmm_tauReq_decode"},
        {"LNAS_airMsgSecuHeader_T", 16, "LNAS_airMsgSecuHeader_encode", "LNAS_airMsgSecuHeader_decode"},
        {"LNAS_airMsgEsm_dummy_T", 12, "LNAS_airMsgEsm_esmDummyMsg_encode", "LNAS_airMsgEsm_esmDummyMsg_decode"},
        {"LNAS_airMsgIE_additionalUpdRsltt_E", 4, "LNAS_airMsgIE_additionalUpdRslt_encode",
         "LNAS_airMsgIE_additionalUpdRslt_decode"},
        {"LNAS_airMsgIE_ueNwCapa_T", 40, "LNAS_airMsgIE_nwCapa_encode", "LNAS_airMsgIE_nwCapa_decode"},
        {"NAS_UE_QoS_s", 25, "LNAS_airMsgIE_epsQos_encode", "LNAS_airMsgIE_epsQos_decode"},
        {"LNAS_airMsgIE_CLI_T", 16, "LNAS_airMsgIE_CLI_encode", "LNAS_airMsgIE_CLI_decode"},
    };
    for (const pairing &row : rows) {
        std::uint8_t found = 0;
        EXPECT_EQ(air_msg_size(row.name, &found), row.size) << row.name;
        pack(row.name, nullptr);
        EXPECT_STREQ(marrowd_called, row.encode);
        unpack(row.name, nullptr, {0});
        EXPECT_STREQ(marrowd_called, row.decode);
    }
}

// A hundred and one pairs: no two rows share a function.
TEST_F(Marrowd, EveryRowHasItsOwnPair)
{
    std::set<std::string> called;
    for (std::uint32_t i = 0; i < 95; i++) {
        pack(lte_nas_peer_table.rows[i].name, nullptr);
        called.insert(marrowd_called);
        unpack(lte_nas_peer_table.rows[i].name, nullptr, {0});
        called.insert(marrowd_called);
    }
    EXPECT_EQ(called.size(), 190u);
}

// ------------------------------------------------------------------------------------------ test control

using octets = std::vector<std::uint8_t>;

TEST_F(Marrowd, TestModeAndOpenLoop)
{
    const CTC_MSG_ACTIVATE_TEST_MODE_s activate = {0, 0, 0x102};
    EXPECT_EQ(written(pack("CTC_MSG_ACTIVATE_TEST_MODE_s", &activate)), (octets{0x0F, 132, 2}));
    EXPECT_EQ(kind & 0xFF, 2u);
    EXPECT_EQ(written(pack("CTC_MSG_DEACTIVATE_TEST_MODE_s", nullptr)), (octets{0x0F, 134}));
    EXPECT_EQ(written(pack("CTC_MSG_OPEN_UE_TEST_LOOP_s", nullptr)), (octets{0x0F, 130}));

    CTC_MSG_ACTIVATE_TEST_MODE_s activated = {};
    EXPECT_EQ(unpack("CTC_MSG_ACTIVATE_TEST_MODE_s", &activated, {0xEE, 0xEE, 1}), 3u);
    EXPECT_EQ(activated.protocol_discriminator, 15u);
    EXPECT_EQ(activated.message_type, 132u);
    EXPECT_EQ(activated.test_loop_mode, 1u);

    CTC_MSG_DEACTIVATE_TEST_MODE_s deactivated = {};
    unpack("CTC_MSG_DEACTIVATE_TEST_MODE_s", &deactivated, {0, 0});
    EXPECT_EQ(deactivated.message_type, 134u);
    CTC_MSG_OPEN_UE_TEST_LOOP_s opened = {};
    unpack("CTC_MSG_OPEN_UE_TEST_LOOP_s", &opened, {0, 0});
    EXPECT_EQ(opened.message_type, 130u);
}

TEST_F(Marrowd, CloseLoopModeA)
{
    CTC_MSG_CLOSE_UE_TEST_LOOP_s message = {};
    EXPECT_EQ(unpack("CTC_MSG_CLOSE_UE_TEST_LOOP_s", &message, {0, 0, 0, 7, 0x12, 0x34, 0xE4, 0xFF, 0xFE, 0x1F, 9}),
              11u);
    EXPECT_EQ(message.message_type, 128u);
    EXPECT_EQ(message.loop.a.length, 7u);
    EXPECT_EQ(message.loop.a.entries[0].uplink_sdu_bits, 0x1234);
    EXPECT_EQ(message.loop.a.entries[0].drb_id, 5);
    EXPECT_EQ(message.loop.a.entries[1].uplink_sdu_bits, 0xFFFE);
    EXPECT_EQ(message.loop.a.entries[1].drb_id, 32);
    EXPECT_EQ(message.loop.a.entries[2].drb_id, 0) << "a third of an entry is none";

    message.loop.a.length = 6;
    EXPECT_EQ(written(pack("CTC_MSG_CLOSE_UE_TEST_LOOP_s", &message)),
              (octets{0x0F, 128, 0, 6, 0x30, 0x04, 4, 0xF0, 0x0E, 31}));
}

// The structure has room for eight entries; what follows it must stay as it is.
TEST_F(Marrowd, CloseLoopListLongerThanTheStructure)
{
    struct {
        CTC_MSG_CLOSE_UE_TEST_LOOP_s message;
        std::uint32_t                guard;
    } value = {{}, 0xCAFE};
    octets list(4 + 255, 0x11);
    list[2] = 0;
    list[3] = 255;
    unpack("CTC_MSG_CLOSE_UE_TEST_LOOP_s", &value.message, list);
    EXPECT_EQ(value.message.loop.a.entries[7].uplink_sdu_bits, 0x1111);
    EXPECT_EQ(value.guard, 0xCAFEu);
    EXPECT_EQ(pack("CTC_MSG_CLOSE_UE_TEST_LOOP_s", &value.message), 259u);
}

TEST_F(Marrowd, CloseLoopOtherModes)
{
    CTC_MSG_CLOSE_UE_TEST_LOOP_s message = {};
    unpack("CTC_MSG_CLOSE_UE_TEST_LOOP_s", &message, {0, 0, 1, 60});
    EXPECT_EQ(message.loop.b.ip_pdu_delay, 60u);
    EXPECT_EQ(written(pack("CTC_MSG_CLOSE_UE_TEST_LOOP_s", &message)), (octets{0x0F, 128, 1, 60}));

    message.mode = 2;
    frame[3]     = 0xEE;
    EXPECT_EQ(pack("CTC_MSG_CLOSE_UE_TEST_LOOP_s", &message), 65535u) << "the length stays as the caller set it";
    EXPECT_EQ(written(4), (octets{0x0F, 128, 2, 0xEE}));
}

TEST_F(Marrowd, NssaiDelete)
{
    struct row {
        const char                    *what;
        CTC_MSG_NSSAI_DELETE_REQUEST_s message;
        octets                         should_be;
    };
    const ctc_nssai one = {1, {1, 2, 3}, 4}, absent = {0, {1, 2, 3}, 4}, two = {1, {5, 6, 7}, 0x108};
    const row       rows[] = {
        {"first", {0, 0, 1, one, two}, {0x0F, 166, 1, 1, 2, 3}},
        {"first, absent", {0, 0, 1, absent, two}, {0x0F, 166, 1}},
        {"second", {0, 0, 2, one, two}, {0x0F, 166, 2, 5, 6, 7, 8}},
        {"second, absent", {0, 0, 2, one, absent}, {0x0F, 166, 2}},
        {"another", {0, 0, 0x103, one, two}, {0x0F, 166, 3}},
        {"a type with 1 in its low octet", {0, 0, 0x101, one, two}, {0x0F, 166, 1}},
    };
    for (const row &r : rows)
        EXPECT_EQ(written(pack("CTC_MSG_NSSAI_DELETE_REQUEST_s", &r.message)), r.should_be) << r.what;

    CTC_MSG_NSSAI_DELETE_REQUEST_s message = {0, 0, 9, one, two};
    unpack("CTC_MSG_NSSAI_DELETE_REQUEST_s", &message, {0, 0, 1, 8, 8, 8});
    EXPECT_EQ(message.protocol_discriminator, 15u);
    EXPECT_EQ(message.message_type, 166u);
    EXPECT_EQ(message.nssai_type, 9u);
    EXPECT_EQ(message.first.plmn[0], 1);
}

} // namespace
