// The rows of short message transfer: messages made from the tables of 3GPP TS 24.011 clauses 7 and 8, in and out.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "sms_msg_def_codec.h"
#include "tt_stack_build.h"

namespace {

using octets = std::vector<std::uint8_t>;

struct sms_case {
    const char *structure;
    const char *subject;
    octets      message;
};

const sms_case cases[] = {
    {"sms_cp_data_struct", "RP-SMMA inside", {0x09, 0x01, 2, 0x06, 0x2A}},
    {"sms_cp_data_struct", "nothing inside", {0x89, 0x01, 0}},
    {"sms_cp_ack_struct", "transaction 5, not ours", {0xD9, 0x04}},
    {"sms_cp_error_struct", "congestion", {0x19, 0x10, 22}},
    {"sms_rp_mt_data_struct", "from a service centre", {0x01, 7, 4, 0x91, 0x94, 0x71, 0xF2, 0, 3, 0x04, 0x0B, 0x91}},
    {"sms_rp_mo_data_struct", "to a service centre", {0x00, 7, 0, 3, 0x81, 0x21, 0x43, 2, 0x01, 0x00}},
    {"sms_rp_smma_struct", "memory available", {0x06, 0x2A}},
    {"sms_rp_ack_struct", "alone", {0x03, 7}},
    {"sms_rp_ack_struct", "with user data", {0x02, 7, 0x41, 2, 0x00, 0x00}},
    {"sms_rp_error_struct", "cause alone", {0x05, 7, 1, 22}},
    {"sms_rp_error_struct", "diagnostic and user data", {0x04, 7, 2, 69, 0x80, 0x41, 1, 0x00}},
};

const tt_peer_row &row_of(const std::string &structure)
{
    const tt_peer_family &sms = tt_peer_families[TT_PEER_SMS];
    for (std::uint32_t n = 0; n < sms.count; ++n) {
        if (structure == sms.rows[n].name)
            return sms.rows[n];
    }
    ADD_FAILURE() << structure << " has no row";
    return sms.rows[0];
}

TEST(sms, has_its_eight_rows)
{
    EXPECT_EQ(tt_peer_families[TT_PEER_SMS].count, 8u);
}

/* Rows do not carry their release functions: what their codecs take is kept here and given back with it. */
std::vector<std::unique_ptr<void, decltype(&std::free)>> taken;

void *take_more(void *block, std::size_t size, std::size_t old_size, std::uint8_t, std::uint16_t, std::uint32_t)
{
    void *fresh = std::calloc(1, size);
    if (block != nullptr)
        std::memcpy(fresh, block, std::min(size, old_size));
    taken.emplace_back(fresh, std::free);
    return fresh;
}

TEST(sms, comes_back_as_it_was)
{
    const dll_info_version_struct slots = dll_info_version;
    dll_info_version.realloc = dll_info_version.realloc_clear = take_more;
    for (const sms_case &c : cases) {
        SCOPED_TRACE(std::string(c.structure) + ": " + c.subject);
        const tt_peer_row         &row = row_of(c.structure);
        std::vector<std::uint64_t> value(row.size / 8 + 1);
        octets                     frame = c.message;
        PerError                   error = {};
        unpack_info_struct reader = {frame.data(), 0, static_cast<std::int32_t>(frame.size()), &error};
        row.unpack(value.data(), &reader);
        EXPECT_EQ(reader.bits, frame.size() * 8);
        EXPECT_EQ(reader.fr_size, 0);

        octets           again(c.message.size() + 1, 0xA5);
        pack_info_struct writer = {again.data(), 0};
        row.pack(&writer, value.data());
        EXPECT_EQ(writer.bits, frame.size() * 8);
        EXPECT_EQ(again.back(), 0xA5);
        again.pop_back();
        EXPECT_EQ(again, c.message);
    }
    taken.clear();
    dll_info_version = slots;
}

TEST(sms, members_hold_what_the_octets_say)
{
    octets                frame = {0x01, 7, 4, 0x91, 0x94, 0x71, 0xF2, 0, 3, 0x04, 0x0B, 0x91};
    sms_rp_mt_data_struct value = {};
    unpack_info_struct    reader = {frame.data(), 0, static_cast<std::int32_t>(frame.size()), nullptr};
    sms_rp_mt_data_unpack(&value, &reader);
    EXPECT_EQ(value.reference, 7);
    EXPECT_EQ(value.originator.type_of_number, 1);
    EXPECT_EQ(value.originator.no_digits, 5);
    EXPECT_EQ(octets(value.originator.digits, value.originator.digits + 5), (octets{4, 9, 1, 7, 2}));
    EXPECT_EQ(value.destination.number_present, 0);
    EXPECT_EQ(value.no_tpdu, 3);
    sms_rp_mt_data_release(&value);
    EXPECT_EQ(value.tpdu, nullptr);
    EXPECT_EQ(value.tpdu_size, 0);
}

} // namespace
