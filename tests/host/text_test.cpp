#include "text.h"

#include <gtest/gtest.h>

#include "agent_packet.h"
#include "times.h"
#include "trace_line.h"

namespace solvane::tools {
namespace {

TEST(hex, reads_pairs_and_points_at_the_fault)
{
    struct row {
        const char *text;
        const char *hex;
        std::size_t bad_column;
    };
    const row rows[] = {
        {"", "", 0},          {"0a FF", "0aff", 0}, {"0x0A,0x0b", "0a0b", 0}, {"01:02\n03", "010203", 0},
        {"0", "", 1},         {"0a b", "0a", 4},    {"0g", "", 2},            {"12 zz", "12", 4},
    };
    for (const auto &row : rows) {
        const auto read = parse_hex(row.text);
        EXPECT_EQ(to_hex(read.value), row.hex) << row.text;
        EXPECT_EQ(read.bad_column, row.bad_column) << row.text;
    }
}

TEST(numbers, take_the_whole_word_or_nothing)
{
    EXPECT_EQ(parse_number("0x80003"), 0x80003U);
    EXPECT_EQ(parse_number("18446744073709551615"), UINT64_MAX);
    for (const char *bad : {"", "0x", "12a", " 1", "-1", "18446744073709551616"}) {
        EXPECT_FALSE(parse_number(bad)) << bad;
    }
    EXPECT_EQ(parse_word("-1"), 0xFFFFFFFFU);
    EXPECT_EQ(parse_word("-2147483648"), 0x80000000U);
    EXPECT_FALSE(parse_word("-2147483649"));
    EXPECT_FALSE(parse_word("4294967296"));
}

TEST(patterns, fit_as_a_whole_only_with_wildcards)
{
    EXPECT_TRUE(matches("mm_peer_lu_req_struct", "LU_REQ"));
    EXPECT_TRUE(matches("mm_peer_lu_req_struct", "mm_*_struct"));
    EXPECT_FALSE(matches("mm_peer_lu_req_struct", "lu_*"));
}

TEST(suggestions, put_the_nearest_first_and_leave_the_far_out)
{
    suggestions near("qos_strct");
    for (const char *name : {"cause_struct", "qos_struct", "QOS_STRUCT", "qos_struct", "emm_hdr"}) {
        near.offer(name);
    }
    EXPECT_EQ(near.text(), "; did you mean qos_struct?");
    suggestions none("zzz");
    none.offer("qos_struct");
    EXPECT_EQ(none.text(), "");
}

TEST(times, read_what_they_write)
{
    for (const char *text : {"1970-01-01T00:00:00.000000Z", "2026-05-14T08:30:00.000100Z", "2000-02-29T23:59:59.999999Z",
                             "1999-12-31T00:00:00.500000Z"}) {
        const auto time = parse_absolute_time(text);
        ASSERT_TRUE(time) << text;
        EXPECT_EQ(absolute_time(*time), text);
    }
    EXPECT_EQ(parse_absolute_time("2001-09-09T01:46:40Z"), INT64_C(1'000'000'000'000'000'000));
    for (const char *bad : {"", "2026-05-14", "2026-05-14T08:30:00", "2026-13-14T08:30:00Z", "2026-05-14 08:30:00Z"}) {
        EXPECT_FALSE(parse_absolute_time(bad)) << bad;
    }
    EXPECT_EQ(parse_seconds("1.000000001"), INT64_C(1'000'000'001));
    EXPECT_EQ(seconds(-1'500'000'000, 3), "-1.500");
    for (const char *bad : {"1.", ".5", "1.0000000001", "0x10", "1e3"}) {
        EXPECT_FALSE(parse_seconds(bad)) << bad;
    }
}

TEST(formats, name_their_arguments)
{
    using names = std::vector<std::string>;
    EXPECT_EQ(argument_names("a=0x%08x@TAG<a> 100%% %d", false), (names{"a", ""}));
    EXPECT_EQ(argument_names("%s, n=%d@TAG<n>", false), (names{"", "n"}));
    /* In integer layout %s does not end: it runs into the next '%', which takes nothing, and "%d" becomes text. */
    EXPECT_EQ(argument_names("%s, n=%d@TAG<n>", true), names{});
    EXPECT_EQ(argument_names("ends in %", false), names{});
}

TEST(reports, keep_to_what_their_lengths_say)
{
    std::string complaint;
    const auto  whole = make_string_trace(0x80003, std::vector<std::string>{"3", "", "5"});
    EXPECT_EQ(to_hex(whole), "12000800030000000533010135" "01");
    const auto body = std::span(whole).subspan(1);
    for (std::size_t cut = 0; cut < body.size(); ++cut) {
        EXPECT_FALSE(parse_string_trace(body.first(cut), complaint)) << cut;
    }
    const auto read = parse_string_trace(body, complaint);
    ASSERT_TRUE(read);
    EXPECT_EQ(argument_texts(read->arguments), (std::vector<std::string>{"3", "", "5"}));

    layer_message message;
    message.sap_id = 49;
    message.msg_id = 0x1B2C;
    message.local_params = {1, 2, 3};
    message.peer = {3, 5};
    const auto packet = make_layer_message(message);
    for (std::size_t cut = 0; cut + 1 < packet.size(); ++cut) {
        EXPECT_FALSE(parse_layer_message(std::span(packet).subspan(1).first(cut), complaint)) << cut;
    }
    const auto back = parse_layer_message(std::span(packet).subspan(1), complaint);
    ASSERT_TRUE(back);
    EXPECT_EQ(make_layer_message(*back), packet);
    EXPECT_EQ(back->msg_id, 0x1B2C);
    EXPECT_EQ(back->peer, message.peer);
}

} // namespace
} // namespace solvane::tools
