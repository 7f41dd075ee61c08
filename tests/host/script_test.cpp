#include "script.h"

#include <gtest/gtest.h>

#include "text.h"

namespace solvane::tools {
namespace {

const plugin &no_plugin()
{
    throw std::logic_error("no plug-in wanted");
}

std::vector<packet> read(const std::string &script)
{
    script_reader       reader(byte_source::from_memory(script), no_plugin);
    std::vector<packet> out;
    while (auto next = reader.next()) {
        out.push_back(std::move(*next));
    }
    return out;
}

TEST(script, makes_packets)
{
    struct row {
        const char *line;
        const char *hex;
        packet_kind kind;
        direction   way;
    };
    const auto agent = packet_kind::agent;
    const row  rows[] = {
        {"0.1 in trace 0x80003 3 \"a b\"", "120008000300000006330161206201", agent, direction::in},
        {"0.1 in trace 1 \"\\x01\\\"\\\\\\n\"", "12000000010000000501225c0a01", agent, direction::in},
        {"0.1 out packet 21 0xAb", "21ab", agent, direction::out},
        {"- - packet 21", "21", agent, direction::unknown},
        {"- in words 0x80003 -1 0x10", "03000800ffffffff10000000", packet_kind::integers, direction::in},
        {"- in integers 0102", "0102", packet_kind::integers, direction::in},
        {"12 0034 # a hex line", "120034", agent, direction::in},
        {"- in message src=1 dest=9 sap=49 msg=27 peer=0345", "0000000000000109" "31001b0100000002034501000000", agent,
          direction::in},
    };
    for (const auto &row : rows) {
        const auto packets = read(row.line);
        ASSERT_EQ(packets.size(), 1U) << row.line;
        EXPECT_EQ(packets[0].complaint, "") << row.line;
        EXPECT_EQ(to_hex(packets[0].content), row.hex) << row.line;
        EXPECT_EQ(packets[0].kind, row.kind) << row.line;
        EXPECT_EQ(packets[0].way, row.way) << row.line;
    }
}

TEST(script, tells_times_from_its_start)
{
    const auto packets = read("start 1970-01-01T00:01:00Z\n\n# remark\n0.5 in packet 00\n-1 in packet 00\n- in packet 00\n");
    ASSERT_EQ(packets.size(), 3U);
    EXPECT_EQ(packets[0].time, INT64_C(60'500'000'000));
    EXPECT_EQ(packets[1].time, INT64_C(59'000'000'000));
    EXPECT_FALSE(packets[2].time);
}

TEST(script, points_at_what_it_does_not_understand_and_goes_on)
{
    struct row {
        const char *line;
        const char *complaint;
    };
    const row rows[] = {
        {"x in packet 00", "memory:1:1: x is no time in seconds"},
        {"0.1 up packet 00", "memory:1:5: behind the time comes in, out or -, then what it is"},
        {"0.1 in", "memory:1:5: behind the time comes in, out or -, then what it is"},
        {"0.1 in packet", "memory:1:8: nothing behind packet"},
        {"0.1 in packet 0g", "memory:1:16: half an octet"},
        {"0.1 in frame 00", "memory:1:8: frame: trace, words, message, packet, integers and note are known"},
        {"0.1 in trace \"x", "memory:1:14: a quote without end"},
        {"0.1 in trace 1 \"\\xg0\"", "memory:1:18: \\x wants two hex digits"},
        {"0.1 in trace nonsense", "memory:1:14: nonsense is no trace id: number, MODULE+n or file:line"},
        {"0.1 in words 1 4294967296", "memory:1:16: 4294967296 is no 32-bit number"},
        {"0.1 in message sap=256", "memory:1:16: sap=256: no number up to 255 and no known name"},
        {"0.1 in message foo=1", "memory:1:16: foo: src, dest, sap, msg, frame, local and peer are known"},
        {"start yesterday", "memory:1:7: start wants a time like 2026-05-14T08:30:00Z"},
    };
    for (const auto &row : rows) {
        const auto packets = read(std::string(row.line) + "\n0.2 in packet 00\n");
        ASSERT_EQ(packets.size(), 2U) << row.line;
        EXPECT_EQ(packets[0].complaint, row.complaint) << row.line;
        EXPECT_EQ(to_hex(packets[1].content), "00") << row.line;
    }
}

TEST(script, writes_lines_that_make_the_same_packet)
{
    const char *lines[] = {
        "0.100000 in  trace 0x00080003 \"3\" \"a b\"",
        "0.100000 in  trace 0x00080003",
        "0.100000 in  trace 0x00080003 \"quote \\\" slash \\\\ line \\n bell \\x07\"",
        "0.000000001 out packet 1200000001",
        "- -   packet 21",
        "0.100000 in  words 0x00080003 -1 16",
        "0.100000 in  integers 0102",
        "0.100000 in  message src=1 dest=9 sap=49 msg=27 frame=7 local=00 peer=0345",
        "0.100000 in  packet 1200",             /* a trace cut off */
        "0.100000 in  packet 12000800030000000133", /* its last argument not ended */
    };
    for (const char *line : lines) {
        const auto packets = read(line);
        ASSERT_EQ(packets.size(), 1U) << line;
        EXPECT_EQ(script_line(packets[0], 0, nullptr), line);
    }
}

} // namespace
} // namespace solvane::tools
