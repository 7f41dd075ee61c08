#include "playback.h"

#include <algorithm>
#include <chrono>
#include <limits>

#include <fmt/format.h>
#include <poll.h>
#include <sys/socket.h>

#include "interrupt.h"
#include "port.h"

namespace solvane::tools {

namespace {

constexpr std::int64_t second = 1'000'000'000;
constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t parting_time = 2 * second; /* for the host to close its end too */
constexpr std::int64_t first_word = second;       /* for a host to ask something at all */
constexpr std::int64_t next_word = second / 10;   /* for one that has asked to go on */

/* A channel takes one frame out of what it reads at once, so frames keep a distance. */
constexpr std::int64_t usual_distance = second / 5000;

std::int64_t now()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

} // namespace

/* When something is to be done: an answer, a packet, or with --once, when all was said, the end.  With --rate the
 * packets follow each other evenly, else as they were recorded. */
std::int64_t playback::next_due() const
{
    if (!answers_.empty()) {
        return free_at_;
    }
    if (next_ == run_.size()) {
        return options_.once ? heard_at_ + (heard_ ? next_word : first_word) : never;
    }
    return options_.rate ? free_at_ : std::max(free_at_, start_ + run_[next_].at);
}

bool playback::send_next(int connection)
{
    const bool   is_answer = !answers_.empty();
    const octets packet = is_answer ? answers_.front() : run_[next_].content;
    octets       frame = damage_.frame(packet);
    const bool   last = options_.drop_after && sent_ >= *options_.drop_after;
    if (last) {
        frame.resize(frame.size() / 2); /* the connection breaks in the middle of a frame */
    }
    if (!send_all(connection, frame) || last) {
        return false;
    }
    if (is_answer) {
        answers_.pop_front();
    } else {
        ++next_;
    }
    ++sent_;
    const std::uint64_t rate = options_.rate.value_or(0);
    free_at_ = now() + (!options_.rate ? usual_distance : rate == 0 ? 0 : second / static_cast<std::int64_t>(rate));
    if (options_.loop && next_ == run_.size()) {
        next_ = 0;
        start_ = free_at_;
    }
    return true;
}

/* False when the host is gone or has said so. */
bool playback::take_commands(int connection)
{
    const octets got = receive_some(connection);
    if (got.empty()) {
        return false;
    }
    heard_ = true;
    heard_at_ = now();
    incoming_.feed(got);
    bool stays = true;
    while (const auto command = incoming_.next()) {
        if (work_.settings.verbose) {
            work_.remark("command " + to_hex(*command));
        }
        for (auto &answer : target_.answer(*command)) {
            answers_.push_back(std::move(answer));
        }
        stays = stays && !target_.leave();
    }
    return stays;
}

void playback::wait(int connection, int interrupt, std::int64_t until, bool &readable) const
{
    pollfd             watched[] = {{connection, POLLIN, 0}, {interrupt, POLLIN, 0}};
    const std::int64_t left = until == never ? 0 : std::max<std::int64_t>(until - now(), 0);
    const timespec     limit = {static_cast<time_t>(left / second), static_cast<long>(left % second)};
    ::ppoll(watched, 2, until == never ? nullptr : &limit, nullptr);
    readable = watched[0].revents != 0;
}

/* Tells the host that nothing more comes, and lets it finish what it was about to say. */
parting playback::close_gently(int connection, int interrupt)
{
    ::shutdown(connection, SHUT_WR);
    const std::int64_t end = now() + parting_time;
    bool               readable = false;
    while (!interrupted() && now() < end) {
        wait(connection, interrupt, end, readable);
        if (readable && receive_some(connection).empty()) {
            break;
        }
    }
    return parting::over;
}

parting playback::play(int connection, int interrupt)
{
    start_ = free_at_ = heard_at_ = now();
    for (;;) {
        if (interrupted()) {
            return parting::interrupted;
        }
        bool readable = false;
        wait(connection, interrupt, next_due(), readable);
        if (readable && !take_commands(connection)) {
            return parting::host_left;
        }
        if (now() < next_due()) {
            continue;
        }
        if (session_over() && answers_.empty()) {
            return close_gently(connection, interrupt);
        }
        if (!send_next(connection)) {
            return interrupted() ? parting::interrupted
                   : options_.drop_after && sent_ >= *options_.drop_after ? parting::dropped : parting::host_left;
        }
    }
}

} // namespace solvane::tools
