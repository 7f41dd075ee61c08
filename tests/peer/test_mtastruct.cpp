// Service messages with the agent: octets from the layouts, both directions, growth, what a cut frame leaves.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "asn_report.h"
#include "solvane/solvane.h"
#include "tt_mtastruct.h"
#include "tt_stack_build.h"

namespace {

using octets = std::vector<std::uint8_t>;

octets operator+(octets left, const octets &right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

/// What `pack` writes to a frame of ones, which shows octets that are passed over and not written.
template <class Value> octets packed(void (*pack)(pack_info_struct *, const Value *), const Value &value)
{
    octets           frame(1u << 20, 0xFF);
    pack_info_struct cursor = {frame.data(), 0};
    pack(&cursor, &value);
    EXPECT_EQ(cursor.bits & 7, 0u);
    EXPECT_EQ(cursor.frame, frame.data() + cursor.bits / 8);
    frame.resize(cursor.bits / 8);
    return frame;
}

/// A frame to restore from: an exact copy, so that the sanitizer sees a read past its end.
struct received {
    explicit received(const octets &content)
        : block(static_cast<std::uint8_t *>(std::malloc(content.size()))), size(content.size())
    {
        std::copy(content.begin(), content.end(), block);
        cursor = {block, 0, static_cast<std::int32_t>(size), &error};
    }
    ~received() { std::free(block); }
    received(const received &) = delete;

    std::uint8_t      *block;
    std::size_t        size;
    PerError           error = {};
    unpack_info_struct cursor;
};

/// A value from `init` to `free`.
template <class Value, void (*Init)(Value *), void (*Free)(Value *)> struct owned : Value {
    owned() { Init(this); }
    ~owned() { Free(this); }
    owned(const owned &) = delete;
};

using a_string       = owned<mta_string_struct, mta_string_init, mta_string_free>;
using a_call         = owned<mta_tt_fun_call_struct, mta_tt_fun_call_init, mta_tt_fun_call_free>;
using a_call_resp    = owned<mta_tt_fun_call_resp_struct, mta_tt_fun_call_resp_init, mta_tt_fun_call_resp_free>;
using an_offsize     = owned<mta_tt_offsize_resp_struct, mta_tt_offsize_resp_init, mta_tt_offsize_resp_free>;
using a_message      = owned<tt_msg_struct, tt_msg_init, tt_msg_free>;
using a_profile      = owned<mta_tt_task_profiling_stats, mta_tt_task_profiling_stats_init,
                             mta_tt_task_profiling_stats_free>;

template <class Element> std::vector<Element> elements(const Element *array, std::size_t count)
{
    return {array, array + count};
}

// ------------------------------------------------------------------------------------------ initial values

TEST(MtaInit, CapacitiesAndCounts)
{
    a_string string;
    EXPECT_EQ(string.str_size, 200);
    EXPECT_EQ(elements(string.str, 200), octets(200));

    a_call call;
    EXPECT_EQ(call.ral_size, 30);
    EXPECT_EQ(elements(call.ral, 30), std::vector<std::uint16_t>(30));
    EXPECT_EQ(call.no_message + call.message_size, 0);
    EXPECT_EQ(call.message, nullptr);

    an_offsize offsize;
    EXPECT_EQ(offsize.btoffsize_size, 255);
    EXPECT_EQ(offsize.offsize_size, 65535);
    EXPECT_EQ(offsize.bitf_offsize.bit_map_size, 32000);
    EXPECT_EQ(offsize.no_btoffsize + offsize.no_offsize + offsize.bitf_offsize.no_bit_map, 0);
    EXPECT_EQ(offsize.offsize[65534], 0);
    EXPECT_EQ(offsize.bitf_offsize.bit_map[31999].no_touple, 0);

    a_message message;
    EXPECT_EQ(message.local_params.local_params_ptr_size, 32768);
    EXPECT_EQ(message.peer_buff.peer_buff_ptr_size, 32768);
    EXPECT_EQ(message.peer_buff.peer_buff_ptr[32767], 0);
}

// All memory goes through the slots, and all of it comes back.
TEST(MtaInit, MemoryComesFromTheSlots)
{
    static int                    blocks;
    const dll_info_version_struct saved = dll_info_version;
    blocks                              = 0;
    const auto allocate = [](std::size_t size, std::uint8_t, std::uint16_t, std::uint32_t) {
        blocks++;
        return std::malloc(size);
    };
    const auto release = [](void *block, std::uint8_t, std::uint16_t, std::uint32_t) {
        blocks -= block != nullptr;
        std::free(block);
    };
    dll_info_version.alloc = dll_info_version.alloc_clear = allocate;
    dll_info_version.free = dll_info_version.free_tagged = release;
    {
        a_string   string;
        a_call     call;
        an_offsize offsize;
        a_message  message;
        EXPECT_EQ(blocks, 1 + 1 + 3 + 2);
    }
    EXPECT_EQ(blocks, 0);
    dll_info_version = saved;
}

// ------------------------------------------------------------------------------------------ strings

TEST(MtaString, Octets)
{
    std::uint8_t      text[] = {'a', 'b', 'c'};
    mta_string_struct value  = {3, 3, text};
    EXPECT_EQ(packed(mta_string_pack, value), (octets{3, 'a', 'b', 'c'}));
    value.no_str = 0;
    EXPECT_EQ(packed(mta_string_pack, value), octets{0});
}

TEST(MtaString, GrowsToWhatItNeeds)
{
    for (unsigned length : {0u, 200u, 201u, 255u}) {
        a_string value;
        received in(octets{static_cast<std::uint8_t>(length)} + octets(length, 'x'));
        mta_string_rest(&value, &in.cursor);
        EXPECT_EQ(value.no_str, length);
        EXPECT_EQ(value.str_size, length > 200 ? length : 200);
        EXPECT_EQ(elements(value.str, length), octets(length, 'x'));
        EXPECT_EQ(in.error.code, 0u);
    }
}

TEST(MtaString, Cut)
{
    for (const octets &frame : {octets{}, octets{2}, octets{2, 'a'}}) {
        a_string value;
        value.no_str = 9;
        received in(frame);
        mta_string_rest(&value, &in.cursor);
        EXPECT_EQ(value.no_str, 0);
        EXPECT_EQ(in.error.code, 2u);
    }
}

// ------------------------------------------------------------------------------------------ function calls

TEST(MtaFunCall, Empty)
{
    const mta_tt_fun_call_struct value = {4, 0, 0, 0, 0, nullptr, nullptr};
    EXPECT_EQ(packed(mta_tt_fun_call_pack, value), (octets{4, 0, 0, 0}));
}

TEST(MtaFunCall, BothWays)
{
    std::uint16_t                ral[]     = {0x0102, 0xFFFE};
    std::uint8_t                 message[] = {7, 8, 9};
    const mta_tt_fun_call_struct value     = {4, 2, 2, 3, 0, ral, message};
    const octets                 wire      = {4, 4, 1, 2, 0xFF, 0xFE, 0, 3, 7, 8, 9};
    EXPECT_EQ(packed(mta_tt_fun_call_pack, value), wire);

    a_call   restored;
    received in(wire + octets{0xEE});
    mta_tt_fun_call_rest(&restored, &in.cursor);
    EXPECT_EQ(restored.command_code, 4);
    EXPECT_EQ(elements(restored.ral, restored.no_ral), (std::vector<std::uint16_t>{0x0102, 0xFFFE}));
    EXPECT_EQ(restored.no_message, 3);
    EXPECT_EQ(restored.message, in.block + 8) << "the body is not copied";
    EXPECT_EQ(restored.message_size, 0);
    EXPECT_EQ(in.cursor.bits, 88u);
    EXPECT_EQ(in.cursor.fr_size, 1);
}

// An odd count of octets: rounded down, and what follows is read from there.
TEST(MtaFunCall, OddCount)
{
    a_call   restored;
    received in({4, 3, 1, 2, 0, 1, 9});
    mta_tt_fun_call_rest(&restored, &in.cursor);
    EXPECT_EQ(restored.no_ral, 1);
    EXPECT_EQ(restored.no_message, 1);
    EXPECT_EQ(restored.message[0], 9);
}

TEST(MtaFunCall, WordsBeyondTheRoom)
{
    octets wire = {4, 254};
    for (unsigned i = 0; i < 127; i++)
        wire = wire + octets{static_cast<std::uint8_t>(i), 0x55};
    a_call   restored;
    received in(wire + octets{0, 0});
    mta_tt_fun_call_rest(&restored, &in.cursor);
    EXPECT_EQ(restored.no_ral, 127);
    EXPECT_EQ(restored.ral_size, 127);
    EXPECT_EQ(restored.ral[126], 126 << 8 | 0x55);

    // The 128th word does not fit the count octet, which then says 0.
    std::vector<std::uint16_t>   ral(128);
    const mta_tt_fun_call_struct value = {4, 128, 128, 0, 0, ral.data(), nullptr};
    EXPECT_EQ(packed(mta_tt_fun_call_pack, value), octets(octets{4, 0} + octets(256 + 2)));
}

TEST(MtaFunCallResp, BothWays)
{
    std::uint8_t                      message[] = {0xAA};
    const mta_tt_fun_call_resp_struct value     = {11, 1, 0, message};
    EXPECT_EQ(packed(mta_tt_fun_call_resp_pack, value), (octets{11, 0, 0, 1, 0xAA}));

    a_call_resp restored;
    received    in({11, 0x77, 0, 1, 0xAA});
    mta_tt_fun_call_resp_rest(&restored, &in.cursor);
    EXPECT_EQ(restored.response, 11);
    EXPECT_EQ(restored.no_message, 1);
    EXPECT_EQ(restored.message, in.block + 4);
}

TEST(MtaFunCallResp, BodyLongerThanTheFrame)
{
    a_call_resp restored;
    received    in({11, 0, 0, 2, 0xAA});
    mta_tt_fun_call_resp_rest(&restored, &in.cursor);
    EXPECT_EQ(restored.no_message, 0);
    EXPECT_EQ(in.error.code, 2u);
}

// ------------------------------------------------------------------------------------------ layout reports

const octets bit_map_wire = {0x12, 0x34, 0, 9, 2, 9, 5, 6, 8, 0, 0, 0, 0, 0, 0};

const mta_bit_map_struct bit_map_entry = {2, 0x1234, 9, {{9, 5}, {6, 8}, {0, 0}, {0, 0}, {0, 0}}};

TEST(MtaOffsize, BothWays)
{
    std::uint8_t               bt[]      = {15, 16};
    std::uint16_t              offsize[] = {4, 0x0102, 8};
    mta_bit_map_struct         map[]     = {bit_map_entry};
    mta_tt_offsize_resp_struct value     = {0x25, 0x12, 5, 2, 2, 3, 3, bt, offsize, {1, 1, map}};
    const octets               head      = {0x25, 0x12, 5, 2, 15, 16, 0, 6, 0, 4, 1, 2, 0, 8};
    EXPECT_EQ(packed(mta_tt_offsize_resp_pack, value), (head + octets{0, 15} + bit_map_wire));

    an_offsize restored;
    received   in(head + octets{0, 15} + bit_map_wire);
    mta_tt_offsize_resp_rest(&restored, &in.cursor);
    EXPECT_EQ(restored.response, 5) << "cut to four bits";
    EXPECT_EQ(restored.seg_id, 2) << "cut to four bits";
    EXPECT_EQ(restored.entity_id, 5);
    EXPECT_EQ(elements(restored.btoffsize, restored.no_btoffsize), (octets{15, 16}));
    EXPECT_EQ(elements(restored.offsize, restored.no_offsize), (std::vector<std::uint16_t>{4, 0x0102, 8}));
    ASSERT_EQ(restored.bitf_offsize.no_bit_map, 1);
    EXPECT_EQ(std::memcmp(restored.bitf_offsize.bit_map, &bit_map_entry, sizeof bit_map_entry), 0);
    EXPECT_EQ(in.cursor.fr_size, 0);
}

struct list_case {
    const char *what;
    octets      wire; ///< the count and what follows
    unsigned    entries, left;
    unsigned    error;
};

TEST(MtaOffsize, EndOfTheBitMap)
{
    const list_case cases[] = {
        {"none", {0, 0, 0xEE}, 0, 1, 0},
        {"one", octets{0, 15} + bit_map_wire + octets{0xEE}, 1, 1, 0},
        {"two", octets{0, 30} + bit_map_wire + bit_map_wire, 2, 0, 0},
        {"second passes the count by fourteen octets", octets{0, 16} + bit_map_wire + bit_map_wire, 2, 0, 0},
        {"second passes the frame", octets{0, 30} + bit_map_wire + octets(14), 1, 14, 2},
        {"count without entries", {0, 15}, 0, 0, 2},
    };
    for (const list_case &c : cases) {
        an_offsize restored;
        restored.bitf_offsize.no_bit_map = 7;
        received in(octets{0, 0, 0, 0, 0, 0} + c.wire);
        mta_tt_offsize_resp_rest(&restored, &in.cursor);
        EXPECT_EQ(restored.bitf_offsize.no_bit_map, c.entries) << c.what;
        EXPECT_EQ(in.cursor.fr_size, static_cast<std::int32_t>(c.left)) << c.what;
        EXPECT_EQ(in.error.code, c.error) << c.what;
    }
}

// A cleared structure grows by whole steps for entries, to the count for the rest.
TEST(MtaOffsize, GrowsFromNothing)
{
    mta_tt_offsize_resp_struct restored = {};
    received                   in(octets{0, 0, 0, 1, 0xBB, 0, 2, 0, 7, 0, 15} + bit_map_wire);
    mta_tt_offsize_resp_rest(&restored, &in.cursor);
    EXPECT_EQ(restored.btoffsize_size, 1);
    EXPECT_EQ(restored.offsize_size, 1);
    EXPECT_EQ(restored.bitf_offsize.bit_map_size, 32000);
    EXPECT_EQ(restored.bitf_offsize.bit_map[0].offset, 0x1234);
    mta_tt_offsize_resp_free(&restored);
    EXPECT_EQ(restored.offsize, nullptr);
}

std::string &error_text()
{
    static std::string text;
    return text;
}

/// Collects the error report while it lives.
struct error_report {
    error_report()
    {
        error_text().clear();
        AsnSetErrorHandler([](const char *text, int) { error_text() += text; });
    }
    ~error_report() { AsnSetErrorHandler(nullptr); }
};

TEST(MtaOffsize, BitMapTooLongForItsCount)
{
    error_report                    report;
    std::vector<mta_bit_map_struct> map(4370, bit_map_entry); // 65550 octets
    mta_tt_offsize_resp_struct      value = {};
    value.bitf_offsize                    = {4369, 4370, map.data()};
    EXPECT_EQ(packed(mta_tt_offsize_resp_pack, value).size(), 6u + 2 + 65535);
    EXPECT_EQ(error_text(), "");

    value.bitf_offsize.no_bit_map = 4370;
    const octets wire             = packed(mta_tt_offsize_resp_pack, value);
    EXPECT_EQ(wire.size(), 6u + 2 + 65550) << "the packing goes on";
    EXPECT_EQ(wire[6] << 8 | wire[7], 65550 - 65536);
    EXPECT_EQ(error_text(), "..\\sdi\\test\\mta\\msg_codec\\src\\tt_mtastruct_rest:"
                            "length of bit_map will not fit length field with width 16.\n");
}

// ------------------------------------------------------------------------------------------ inter-layer messages

TEST(MtaMessage, BothWays)
{
    std::uint8_t        local[] = {1, 2}, peer[] = {5, 8, 0};
    const tt_msg_struct value = {1, 2, 9, 10, 51, 0x1234, {3, 2, 2, local}, {4, 6, 7, 3, 3, peer}};
    const octets        wire  = {9, 10, 51, 0x12, 0x34, 3, 0, 2, 1, 2, 0, 3, 5, 8, 0, 4, 6, 7, 0};
    EXPECT_EQ(packed(tt_msg_pack, value), wire);
    EXPECT_EQ(tt_msg_size(&value), 8 * wire.size());

    a_message restored; // with arrays of its own, which the restore gives back
    restored.src_entity_id  = 0xA1;
    restored.dest_entity_id = 0xA2;
    received in(wire);
    tt_msg_rest(&restored, &in.cursor);
    EXPECT_EQ(restored.src_entity_id, 0xA1);
    EXPECT_EQ(restored.dest_entity_id, 0xA2);
    EXPECT_EQ(restored.src_mod_id, 9);
    EXPECT_EQ(restored.dest_mod_id, 10);
    EXPECT_EQ(restored.sap_id, 51);
    EXPECT_EQ(restored.msg_id, 0x1234);
    EXPECT_EQ(restored.local_params.ref_count, 3);
    EXPECT_EQ(restored.local_params.no_local_params_ptr, 2);
    EXPECT_EQ(restored.local_params.local_params_ptr, in.block + 8);
    EXPECT_EQ(restored.local_params.local_params_ptr_size, 0);
    EXPECT_EQ(restored.peer_buff.no_peer_buff_ptr, 3);
    EXPECT_EQ(restored.peer_buff.peer_buff_ptr, in.block + 12);
    EXPECT_EQ(restored.peer_buff.ref_count, 4);
    EXPECT_EQ(restored.peer_buff.header_len, 6);
    EXPECT_EQ(restored.peer_buff.tail_len, 7);
    EXPECT_EQ(in.cursor.fr_size, 0);
}

TEST(MtaMessage, EveryCut)
{
    const octets wire = {9, 10, 51, 0x12, 0x34, 3, 0, 2, 1, 2, 0, 3, 5, 8, 0, 4, 6, 7, 0};
    for (std::size_t size = 0; size < wire.size(); size++) {
        tt_msg_struct restored = {};
        received      in(octets(wire.begin(), wire.begin() + static_cast<std::ptrdiff_t>(size)));
        tt_msg_rest(&restored, &in.cursor);
        EXPECT_EQ(in.error.code, 2u) << size;
        EXPECT_LE(restored.peer_buff.peer_buff_ptr + restored.peer_buff.no_peer_buff_ptr, in.block + size);
        EXPECT_LE(restored.local_params.local_params_ptr + restored.local_params.no_local_params_ptr,
                  in.block + size);
    }
}

TEST(MtaMessage, SizeOfTheLargest)
{
    const tt_msg_struct value = {0, 0, 0, 0, 0, 0, {0, 65535, 0, nullptr}, {0, 0, 0, 65535, 0, nullptr}};
    EXPECT_EQ(tt_msg_size(&value), 40u + 24 + 48 + 2 * 8 * 65535);
}

// ------------------------------------------------------------------------------------------ profiling

TEST(MtaProfile, BothWays)
{
    std::uint8_t                      name[]  = {'M', 'M'};
    mta_tt_task_stats                 tasks[] = {{2, 2, 0x01020304, name}, {0, 0, 5, nullptr}};
    const mta_tt_task_profiling_stats value   = {14, 1, 0x0203, 2, 2, tasks};
    const octets                      wire    = {14, 0, 1, 2, 3, 0, 12, 2, 'M', 'M', 1, 2, 3, 4, 0, 0, 0, 0, 5};
    EXPECT_EQ(packed(mta_tt_task_profiling_stats_pack, value), wire);

    a_profile restored;
    for (int round = 0; round < 2; round++) { // the second uses what the first has made
        received in(wire);
        mta_tt_task_profiling_stats_rest(&restored, &in.cursor);
        EXPECT_EQ(restored.response, 14);
        EXPECT_EQ(restored.time_per_tickN, 1);
        EXPECT_EQ(restored.time_per_tickD, 0x0203);
        ASSERT_EQ(restored.no_task_stats, 2);
        EXPECT_EQ(elements(restored.task_stats[0].task_name, 2), (octets{'M', 'M'}));
        EXPECT_EQ(restored.task_stats[0].num_ticks, 0x01020304u);
        EXPECT_EQ(restored.task_stats[1].no_task_name, 0);
        EXPECT_EQ(restored.task_stats[1].num_ticks, 5u);
        EXPECT_EQ(in.error.code, 0u);
    }
}

TEST(MtaProfile, ManyTasks)
{
    octets entries;
    for (unsigned i = 0; i < 100; i++)
        entries = entries + octets{1, static_cast<std::uint8_t>(i), 0, 0, 0, 1};
    a_profile restored;
    received  in(octets{14, 0, 1, 0, 1, 600 >> 8, 600 & 0xFF} + entries);
    mta_tt_task_profiling_stats_rest(&restored, &in.cursor);
    ASSERT_EQ(restored.no_task_stats, 100);
    EXPECT_EQ(restored.task_stats[99].task_name[0], 99);
}

TEST(MtaProfile, TasksTooLongForTheirCount)
{
    error_report                   report;
    std::vector<mta_tt_task_stats> tasks(13108, mta_tt_task_stats{}); // 65540 octets
    mta_tt_task_profiling_stats    value = {14, 0, 0, 13108, 13108, tasks.data()};
    EXPECT_EQ(packed(mta_tt_task_profiling_stats_pack, value).size(), 7u + 65540);
    EXPECT_EQ(error_text(), "..\\sdi\\test\\mta\\msg_codec\\src\\tt_mtastruct_req:"
                            "length of task_stats will not fit length field with width 16.\n");
}

// ------------------------------------------------------------------------------------------ peer rows

TEST(MtaRows, FamilyOfTheAgent)
{
    struct row {
        const char *name;
        std::size_t size;
    };
    const row rows[] = {
        {"mta_tt_offsize_resp_struct", sizeof(mta_tt_offsize_resp_struct)},
        {"mta_string_struct", sizeof(mta_string_struct)},
        {"mta_tt_fun_call_struct", sizeof(mta_tt_fun_call_struct)},
        {"mta_tt_fun_call_resp_struct", sizeof(mta_tt_fun_call_resp_struct)},
    };
    const tt_peer_family &family = tt_peer_families[TT_PEER_TARGET_AGENT];
    ASSERT_EQ(family.count, std::size(rows));
    for (std::size_t i = 0; i < std::size(rows); i++) {
        EXPECT_STREQ(family.rows[i].name, rows[i].name);
        EXPECT_EQ(family.rows[i].size, rows[i].size);
    }
}

// As a host calls them: through the row, with zeroed octets of the row's size.
TEST(MtaRows, CalledThroughTheRow)
{
    const octets frames[] = {
        octets{7, 2, 5, 1, 15, 0, 2, 0, 4, 0, 15} + bit_map_wire,
        {3, 'a', 'b', 'c'},
        {4, 2, 1, 2, 0, 1, 9},
        {11, 0, 0, 1, 0xAA},
    };
    for (std::size_t i = 0; i < std::size(frames); i++) {
        const tt_peer_row         &row = tt_peer_families[TT_PEER_TARGET_AGENT].rows[i];
        std::vector<std::uint64_t> value(row.size); // more than is wanted, and aligned
        received                   in(frames[i]);
        row.unpack(value.data(), &in.cursor);

        octets           frame(frames[i].size(), 0xFF);
        pack_info_struct cursor = {frame.data(), 0};
        row.pack(&cursor, value.data());
        EXPECT_EQ(frame, frames[i]) << row.name;

        if (i == 0)
            mta_tt_offsize_resp_free(reinterpret_cast<mta_tt_offsize_resp_struct *>(value.data()));
        if (i == 1)
            mta_string_free(reinterpret_cast<mta_string_struct *>(value.data()));
        if (i == 2)
            mta_tt_fun_call_free(reinterpret_cast<mta_tt_fun_call_struct *>(value.data()));
    }
}

} // namespace
