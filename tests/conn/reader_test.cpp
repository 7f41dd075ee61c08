// The reader against a transport that plays chunks from a list: what becomes of each division of a stream.
#include <atomic>
#include <random>

#include "frame_model.h"
#include "loopback.h"

namespace {

/// A read: a chunk, or an answer without data.
struct step {
    octets       chunk;
    std::int32_t answer = 1; ///< 0 or -1: instead of the chunk
};

std::vector<step>           script;
std::size_t                 at;
bool                        connects = true;
std::mutex                  played_lock;
std::condition_variable     played_out;
bool                        played;
std::atomic<std::uint8_t *> asked_for; ///< by the last read

std::int32_t play(std::int32_t, std::uint8_t *buffer, std::uint32_t size)
{
    asked_for = buffer;
    if (at == script.size()) {
        const std::lock_guard guard(played_lock);
        played = true;
        played_out.notify_all();
        return 0;
    }
    const step &next = script[at++];
    if (next.answer <= 0)
        return next.answer;
    EXPECT_EQ(size, COM_READ_SIZE);
    std::copy(next.chunk.begin(), next.chunk.end(), buffer);
    return static_cast<std::int32_t>(next.chunk.size());
}

octets filled(std::size_t count)
{
    return octets(count, 0x41);
}

octets slice(const octets &from, std::size_t first, std::size_t end)
{
    return {from.data() + first, from.data() + end};
}

octets joined(octets front, const octets &back)
{
    front.insert(front.end(), back.begin(), back.end());
    return front;
}

class reader : public channels {
  protected:
    reader()
    {
        com_driver_table[COM_DRIVER_SOCKET] = {
            [](const com_pch_attr *) { return 0; },
            [](std::int32_t) { return static_cast<tt_bool>(connects); },
            [](std::int32_t) {},
            play,
            [](std::int32_t, const std::uint8_t *, std::uint32_t size) { return static_cast<std::int32_t>(size); },
            [](std::int32_t) {},
        };
        connects = true;
    }
    ~reader() override
    {
        remove_all();
        com_driver_table[COM_DRIVER_SOCKET] = {};
    }

    /// The packets that the callback got from these reads.
    std::vector<octets> packets_of(std::vector<step> steps)
    {
        com_pch_attr attr{};
        attr.direction = COM_BOTH;
        attr.driver = COM_DRIVER_SOCKET;
        const std::int32_t pch = open(attr);
        script = std::move(steps);
        at = 0;
        played = false;
        std::fill(buffer_.begin(), buffer_.end(), 0);
        start(pch);
        {
            std::unique_lock guard(played_lock);
            played_out.wait(guard, [] { return played; });
        }
        com_pch_stop(pch);
        com_lch_remove(domain, sender);
        com_lch_remove(domain, receiver);
        com_pch_remove(pch);
        std::vector<octets> got;
        while (!packets.empty())
            got.push_back(packets.next());
        return got;
    }
};

struct stream_case {
    const char         *name;
    std::vector<step>   steps;
    std::vector<octets> packets;
};

const stream_case stream_cases[] = {
    {"a frame",                    {{{0x7E, 0x41, 0x7D, 0x5E, 0x7E}}},                       {{0x41, 0x7E}}},
    {"nothing between delimiters", {{{0x7E, 0x7E}}},                                         {}},
    {"an octet in three",          {{{0x7E, 0x41, 0x7E}}},                                   {}},
    {"two frames in a chunk",      {{{0x7E, 0x41, 0x42, 0x7E, 0x7E, 0x43, 0x44, 0x7E}}},     {{0x41, 0x42}}},
    {"two chunks",                 {{{0x7E, 1, 2, 3}}, {{4, 5, 6, 0x7E}}},                   {{1, 2, 3, 4, 5, 6}}},
    {"no data in between",         {{{0x7E, 1, 2, 3}}, {{}, 0}, {{}, 0}, {{4, 5, 6, 0x7E}}}, {{1, 2, 3, 4, 5, 6}}},
    {"a short chunk closes",       {{{0x7E, 1, 2, 3}}, {{4, 0x7E}}, {{5, 6, 7, 0x7E}}},      {{1, 2, 3}, {5, 6, 7}}},
    {"a failed read closes",       {{{0x7E, 1, 2, 3}}, {{}, -1}, {{0x7E, 4, 5, 6, 0x7E}}},   {{1, 2, 3}, {4, 5, 6}}},
    {"an escape takes what lay there",
     {{{0x7E, 1, 2, 3, 0x5E, 0x7E}}, {{0x7E, 4, 5, 0x7D}}, {{6, 7, 8, 0x7E}}},
     {{1, 2, 3, 0x5E}, {4, 5, 0x7E, 6, 7, 8}}},
};

TEST_F(reader, makes_packets_of_chunks)
{
    for (const stream_case &row : stream_cases)
        EXPECT_EQ(packets_of(row.steps), row.packets) << row.name;
}

TEST_F(reader, takes_large_packets)
{
    const octets start = {0x7E};
    const octets end = {0x7E};
    // 65537 octets in one frame pass, since no chunk of it holds more than one read asks for.
    EXPECT_EQ(packets_of({{joined(start, filled(COM_READ_SIZE - 1))}, {joined(filled(1538), end)}}),
              std::vector<octets>{filled(65537)});
    EXPECT_EQ(packets_of({{filled(COM_READ_SIZE)}, {joined(filled(35999), end)}}), std::vector<octets>{filled(99999)});
    EXPECT_DEATH(packets_of({{filled(COM_READ_SIZE)}, {joined(filled(36000), end)}}),
                 "Assertion failed: \\(len_to_start\\+len_to_read\\) < MAX_PACKET_SIZE, file "
                 "ms_code\\\\ps\\\\sdi\\\\conn\\\\common\\\\src\\\\com_pch, line ");
}

TEST_F(reader, follows_the_rules_at_every_cut)
{
    const octets frame = model_encoded({0x7D, 0x41, 0x7E, 0x42, 0x43, 0x7E, 0x7D, 0x44, 0x45, 0x46});
    for (std::size_t first = 1; first < frame.size(); ++first)
        for (std::size_t second = first; second < frame.size(); ++second) {
            std::vector<step> steps;
            model_reader      model;
            const std::size_t cuts[] = {0, first, second, frame.size()};
            for (std::size_t n = 0; n < 3; ++n) {
                if (cuts[n] == cuts[n + 1])
                    continue;
                steps.push_back({slice(frame, cuts[n], cuts[n + 1])});
                model.take(steps.back().chunk);
            }
            ASSERT_EQ(packets_of(steps), model.packets) << "cut at " << first << " and " << second;
        }
}

TEST_F(reader, takes_garbage)
{
    constexpr unsigned seed = 41;
    std::mt19937       random(seed);
    for (unsigned round = 0; round < 200; ++round) {
        std::vector<step> steps;
        model_reader      model;
        for (unsigned n = random() % 8; n-- > 0;) {
            octets chunk(1 + random() % 40);
            for (std::uint8_t &octet : chunk)
                octet = static_cast<std::uint8_t>(random() % 3 == 0 ? 0x7C + random() % 3 : random());
            steps.push_back({chunk});
            model.take(chunk);
        }
        ASSERT_EQ(packets_of(steps), model.packets) << "seed " << seed << " round " << round;
    }
}

TEST_F(reader, ends_when_it_cannot_connect)
{
    connects = false;
    com_pch_attr attr{};
    attr.driver = COM_DRIVER_SOCKET; // direction 0: receives
    const std::int32_t pch = com_pch_add(&attr);
    com_lch_add(domain, receiver, pch, COM_RECEIVE, keep_packet, buffer_.data());
    script = {{{0x7E, 1, 2, 0x7E}}};
    at = 0;
    start(pch);
    com_pch_stop(pch);
    EXPECT_EQ(at, 0U);
    EXPECT_EQ(com_pch_info_g[pch].thread, nullptr);
}

// With two receivers, or none, packets go to channel 0 of domain 0, whose buffer is asked for at each read.
TEST_F(reader, falls_back_to_the_first_channel)
{
    com_pch_attr attr{};
    attr.direction = COM_BOTH;
    attr.driver = COM_DRIVER_SOCKET;
    const std::int32_t pch = com_pch_add(&attr);
    com_lch_add(domain, receiver, pch, COM_RECEIVE, [](auto...) { ADD_FAILURE(); }, nullptr);
    com_lch_add(0, 0, pch, COM_BOTH,
                [](std::uint8_t *packet, std::uint32_t length, std::uint8_t lch_domain, std::uint8_t lch) {
                    EXPECT_EQ(lch_domain, 0);
                    EXPECT_EQ(lch, 0);
                    packets.put(octets(packet, packet + length));
                },
                buffer_.data());
    script = {{{0x7E, 1, 2, 0x7E}}, {{0x7E, 3, 4, 0x7E}}};
    at = 0;
    start(pch);
    EXPECT_EQ(packets.next(), (octets{1, 2}));
    EXPECT_EQ(packets.next(), (octets{3, 4}));
    std::uint8_t other[1];
    com_lch_set_buffer(0, 0, other);
    wait_until([&] { return asked_for == other; });
    com_pch_stop(pch);
}

TEST_F(reader, is_not_started_on_a_channel_that_only_sends)
{
    com_pch_attr attr{};
    attr.direction = COM_TRANSMIT;
    attr.driver = COM_DRIVER_SOCKET;
    const std::int32_t pch = com_pch_add(&attr);
    com_pch_start(pch, 7, 223, 10000);
    EXPECT_EQ(com_pch_info_g[pch].thread, nullptr);
    EXPECT_EQ(com_pch_info_g[pch].entry, 7U);
    EXPECT_EQ(com_pch_info_g[pch].priority, 223U);
    EXPECT_EQ(com_pch_info_g[pch].stack_size, 10000U);
}

} // namespace
