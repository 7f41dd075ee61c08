// Streams taken apart into packets, and what a channel leaves behind the first frame of a chunk.
#include <gtest/gtest.h>

#include "chunk_tail.h"
#include "frame_splitter.h"

namespace solvane::tools {
namespace {

octets hex(const char *text)
{
    return parse_hex(text).value;
}

void add(std::string &packets, const std::string &more)
{
    packets.append(packets.empty() || more.empty() ? "" : " ").append(more);
}

std::string all_of(frame_splitter &from)
{
    std::string out;
    while (const auto packet = from.next()) {
        add(out, to_hex(*packet));
    }
    return out;
}

TEST(frame_splitter, finds_the_same_packets_however_the_stream_is_cut)
{
    struct row {
        const char *name;
        const char *stream;
        const char *packets;
        unsigned    stray;
        unsigned    pending;
    };
    const row rows[] = {
        {"escapes undone", "7e7d5d7d5e417e", "7d7e41", 0, 0},
        {"one octet", "7e217e", "21", 0, 0},
        {"two frames", "7e0102037e7e0405067e", "010203 040506", 0, 0},
        {"empty frames passed over", "7e7e7e7e7e01027e", "0102", 0, 0},
        {"octets between", "aabb7e01027ecc7e03047e", "0102 0304", 3, 0},
        {"too long", "7e01020304050607087e7e01027e", "0102", 10, 0},
        {"begun", "7e01027e7e0304", "0102", 0, 3},
    };
    for (const auto &row : rows) {
        const octets stream = hex(row.stream);
        for (std::size_t cut = 0; cut <= stream.size(); ++cut) {
            frame_splitter splitter(7);
            splitter.feed(std::span(stream).first(cut));
            std::string packets = all_of(splitter);
            splitter.feed(std::span(stream).subspan(cut));
            add(packets, all_of(splitter));
            EXPECT_EQ(packets, row.packets) << row.name << " cut at " << cut;
            EXPECT_EQ(splitter.stray(), row.stray) << row.name << " cut at " << cut;
            EXPECT_EQ(splitter.pending(), row.pending) << row.name << " cut at " << cut;
        }
    }
}

TEST(frame_splitter, reads_what_frame_of_writes)
{
    octets all(512);
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i] = static_cast<std::uint8_t>(i);
    }
    frame_splitter splitter(all.size());
    splitter.feed(frame_of(all));
    EXPECT_EQ(splitter.next(), all);
}

TEST(chunk_tail, tells_what_stands_behind_the_first_frame)
{
    struct row {
        const char *name;
        const char *buffer;
        const char *packets;
        unsigned    stray;
        bool        cut;
    };
    const row rows[] = {
        {"nothing", "7e0102037e0000000000", "", 0, false},
        {"a frame", "7e0102037e7e0405067e0000", "040506", 0, false},
        {"a frame and the start of one", "7e0102037e7e0405067e7e0708", "040506", 0, true},
        {"the start of one", "7e0102037e7e04050607", "", 0, true},
        {"octets outside", "7e0102037eaabb7e0405067e", "040506", 2, false},
        {"an escaped delimiter does not end the first", "7e017d7e037e7e04057e", "0405", 0, false},
        {"a chunk that goes on with a packet", "0102037e7e0405067e", "040506", 0, false},
        {"octets of an earlier chunk behind the last one", "0102037e0405060708090a", "", 0, false},
        {"no end", "7e01020304050607", "", 0, false},
    };
    for (const auto &row : rows) {
        const chunk_tail tail = tail_of(hex(row.buffer));
        std::string      packets;
        for (const auto &packet : tail.packets) {
            add(packets, to_hex(packet));
        }
        EXPECT_EQ(packets, row.packets) << row.name;
        EXPECT_EQ(tail.stray, row.stray) << row.name;
        EXPECT_EQ(tail.cut, row.cut) << row.name;
    }
}

TEST(chunk_tail, knows_how_far_a_chunk_goes)
{
    struct row {
        const char *buffer;
        std::size_t first, whole;
    };
    const row rows[] = {
        {"7e0102037e0000000000", 5, 5},
        {"7e0102037e7e0405067e0000", 5, 10},
        {"7e0102037e7e0405060000", 5, 9}, /* the start of a frame reaches to the last octet that is not 0 */
        {"0102037e0405060708090a", 4, 4}, /* octets of an earlier chunk do not count */
    };
    for (const auto &row : rows) {
        const chunk_tail tail = tail_of(hex(row.buffer));
        EXPECT_EQ(tail.first, row.first) << row.buffer;
        EXPECT_EQ(tail.whole, row.whole) << row.buffer;
    }
}

} // namespace
} // namespace solvane::tools
