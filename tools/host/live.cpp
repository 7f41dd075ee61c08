#include "live.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

#include <fmt/format.h>
#include <poll.h>

#include "agent_packet.h"
#include "capture.h"
#include "failure.h"
#include "interrupt.h"
#include "order.h"

namespace solvane::tools {

namespace {

constexpr std::int64_t second = 1'000'000'000;
constexpr std::int64_t longest_attempt = 10 * second;
constexpr std::int64_t first_pause = second / 10; /* between two attempts, doubled each time */
constexpr std::int64_t longest_pause = 2 * second;

std::int64_t wall_now()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

/* The text of a report whose structure is a counted text. */
std::string text_in(const octets &report)
{
    const std::size_t length = report.size() > 1 ? std::min<std::size_t>(report[1], report.size() - 2) : 0;
    return {report.begin() + 2, report.begin() + 2 + static_cast<std::ptrdiff_t>(length)};
}

} // namespace

std::vector<option_spec> live_option_table(live_options &into)
{
    return {
        {"--address", "HOST", "where the agent is; 127.0.0.1 unless told", &into.address},
        {"--port", "PORT", "the port on which it listens", &into.port},
        {"--patience", "SECONDS", "wait so long for an agent that is not there yet", &into.patience},
        {"--record", "FILE", "write what comes and goes to a recording too", &into.record, {}, completes::file},
    };
}

live_stream::live_stream(session &work, const live_options &options) : work_(work), options_(options)
{
    if (!options.port) {
        throw failure(exit_usage, "--port is required: the agent prints its own when it starts");
    }
    to_ = find_endpoint(options.address, *options.port);
    baseline_ = baseline_of(work.started());
    if (options.ask) {
        orders_.push_back(bare_order(MTA_TT_STACK_VERSION_REQ));
    }
    for (const auto &words : options.orders) {
        orders_.push_back(order_of(work, words));
    }
    interrupt_ = watch_interrupts();
    open_recording();
    give_up_ = steady_now() + static_cast<std::int64_t>(options.patience.value_or(0)) * second;
}

live_stream::~live_stream() = default;

void live_stream::open_recording()
{
    if (options_.record.empty()) {
        return;
    }
    file_.open(options_.record, std::ios::binary | std::ios::trunc);
    if (!file_) {
        throw failure(exit_cannot_open, fmt::format("cannot write {}: {}", options_.record, std::strerror(errno)));
    }
    recording_.emplace(recording_to(
        [this](std::string_view block) {
            file_.write(block.data(), static_cast<std::streamsize>(block.size()));
            if (!file_.flush()) { /* what was seen is on disk, whatever becomes of us */
                throw failure(exit_cannot_open,
                              fmt::format("cannot write {}: {}", options_.record, std::strerror(errno)));
            }
        },
        work_));
}

void live_stream::keep(const packet &what)
{
    if (!recording_) {
        return;
    }
    recording_->write(what);
    if (const auto record = decoded_record(work_, what)) {
        recording_->write_decoded(what, *record);
        ++number_; /* a packet of the recording too */
    }
}

packet live_stream::made(packet_kind kind, direction way, octets content, std::int64_t time)
{
    packet out;
    out.number = ++number_;
    out.time = time;
    out.way = way;
    out.kind = kind;
    out.content = std::move(content);
    return out;
}

packet live_stream::note(const std::string &text, std::optional<std::int64_t> time)
{
    packet out = made(packet_kind::note, direction::unknown, {}, time.value_or(wall_now()));
    out.note = text;
    keep(out);
    return out;
}

void live_stream::connect()
{
    link_ = std::make_unique<agent_link>(work_.started(), to_);
    retry_at_ = steady_now() + longest_attempt; /* no answer at all counts as refused */
}

packet live_stream::connected(std::int64_t time)
{
    const std::string text =
        !was_connected_ ? fmt::format("connected to {}", to_.text())
                        : fmt::format("back at {} after {:.1f} s", to_.text(),
                                      static_cast<double>(steady_now() - lost_at_) / static_cast<double>(second));
    was_connected_ = is_connected_ = true;
    pause_ = 0;
    packet first = note(text, time);
    for (const auto &order : orders_) {
        link_->send(order);
        packet sent = made(packet_kind::agent, direction::out, order, wall_now());
        keep(sent);
        waiting_.insert(waiting_.begin(), std::move(sent));
    }
    return first;
}

/* Sets the time of the next attempt; throws when there never was a connection and no patience is left. */
std::optional<packet> live_stream::lost(const std::string &why)
{
    const bool was = is_connected_;
    link_.reset();
    is_connected_ = false;
    if (!was_connected_ && steady_now() >= give_up_) {
        throw failure(died_ ? exit_decoder_died : exit_cannot_open,
                      fmt::format("cannot connect to {}: {}", to_.text(), why));
    }
    over_ = was && options_.once;
    lost_at_ = was ? steady_now() : lost_at_;
    retry_at_ = steady_now() + pause_;
    pause_ = std::clamp(pause_ * 2, first_pause, longest_pause);
    return was ? std::optional(note(fmt::format("lost {}: {}", to_.text(), why))) : std::nullopt;
}

/* Said once a connection, loudly: every text and layout may be wrong from here on. */
void live_stream::check_build(const octets &report)
{
    const std::string theirs = text_in(report);
    if (theirs == baseline_) {
        return;
    }
    mismatch_ = true;
    const std::string text = fmt::format(
        "WARNING: the target is of build {}, the plug-in of build {}; texts, names and layouts may be wrong", theirs,
        baseline_);
    complain(text);
    waiting_.insert(waiting_.begin(), note(text));
}

std::optional<packet> live_stream::handle(link_event event)
{
    switch (event.state) {
    case link_state::connected:
        return is_connected_ ? std::nullopt : std::optional(connected(event.time));
    case link_state::died: died_ = true; return lost(event.text);
    case link_state::refused:
    case link_state::lost: return lost(event.text);
    case link_state::dropped:
        work_.note_finding();
        return note("the channel dropped something: " + event.text);
    case link_state::said: work_.remark("library: " + event.text); return std::nullopt;
    case link_state::nothing: return std::nullopt;
    case link_state::packet: break;
    }
    /* The reader may be faster than the word that there is a connection. */
    const auto first = is_connected_ ? std::nullopt : std::optional(connected(event.time));
    packet     out = made(packet_kind::agent, direction::in, std::move(event.content), event.time);
    keep(out);
    if (!out.content.empty() && out.content[0] == MTA_TT_STACK_VERSION_RESP) {
        check_build(out.content);
    }
    if (!first) {
        return out;
    }
    waiting_.insert(waiting_.begin(), std::move(out));
    return first;
}

bool live_stream::expired(std::int64_t limit) const
{
    return limit != never && steady_now() >= limit;
}

std::optional<packet> live_stream::next(std::int64_t limit)
{
    while (!interrupted()) {
        if (!waiting_.empty()) {
            packet out = std::move(waiting_.back());
            waiting_.pop_back();
            return out;
        }
        if (over_ || expired(limit)) {
            return std::nullopt;
        }
        if (!link_ && steady_now() < retry_at_) {
            pollfd     watched = {interrupt_, POLLIN, 0};
            const auto left = std::min(retry_at_, limit) - steady_now();
            ::poll(&watched, 1, static_cast<int>(std::max<std::int64_t>(left, 0) / 1'000'000) + 1);
            continue;
        }
        if (!link_) {
            connect();
        }
        link_event event = link_->wait(is_connected_ ? limit : std::min(limit, retry_at_), interrupt_);
        if (event.state == link_state::nothing && !is_connected_ && steady_now() >= retry_at_) {
            event = {link_state::refused, {}, 0, "no answer"};
        }
        if (auto out = handle(std::move(event))) {
            return out;
        }
    }
    return std::nullopt;
}

} // namespace solvane::tools
