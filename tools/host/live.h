// A live stream: the packets of a connection that is made anew when it is lost, with notes on what became of it.
#pragma once

#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "link.h"
#include "recording.h"
#include "session.h"

namespace solvane::tools {

struct live_options {
    std::string                  address = "127.0.0.1";
    std::optional<std::uint64_t> port;
    std::optional<std::uint64_t> patience; ///< seconds to wait for the agent
    std::string                  record;   ///< file, or empty
    std::vector<std::string>     orders;   ///< commands to send, see order.h
    bool                         once = false; ///< the first loss is the end
    bool                         ask = true;   ///< for the target's build
};

/// The options of every command that connects.
std::vector<option_spec> live_option_table(live_options &into);

class live_stream {
public:
    /// Starts the plug-in and opens the recording.  Throws `failure`.
    live_stream(session &work, const live_options &options);
    ~live_stream();

    /// The next packet or note; nothing when the stream is over: interrupted, lost with --once, or `limit` (clock of
    /// `steady_now`) has passed.  Throws `failure` (exit_cannot_open) when there is no first connection.
    std::optional<packet> next(std::int64_t limit = never);
    bool                  expired(std::int64_t limit) const;

    /// The target said that it is of another build.
    bool mismatch() const { return mismatch_; }
    /// The library ended a connection's process.
    bool died() const { return died_; }

    static constexpr std::int64_t never = INT64_MAX;

private:
    void                  open_recording();
    void                  connect();
    std::optional<packet> handle(link_event event);
    std::optional<packet> lost(const std::string &why);
    packet                connected(std::int64_t time);
    void                  check_build(const octets &report);
    packet                note(const std::string &text, std::optional<std::int64_t> time = {});
    packet                made(packet_kind kind, direction way, octets content, std::int64_t time);
    void                  keep(const packet &what);

    session                        &work_;
    const live_options             &options_;
    endpoint                        to_;
    std::vector<octets>             orders_;
    std::string                     baseline_;
    int                             interrupt_;
    std::ofstream                   file_;
    std::optional<recording_writer> recording_;
    std::unique_ptr<agent_link>     link_;
    std::vector<packet>             waiting_;   ///< made and not handed out yet, last first
    std::uint64_t                   number_ = 0;
    std::int64_t                    give_up_ = 0;  ///< on the attempt that runs, or on connecting at all
    std::int64_t                    retry_at_ = 0;
    std::int64_t                    pause_ = 0;    ///< before the next attempt
    std::int64_t                    lost_at_ = 0;
    bool                            was_connected_ = false;
    bool                            is_connected_ = false;
    bool                            over_ = false;
    bool                            mismatch_ = false;
    bool                            died_ = false;
};

} // namespace solvane::tools
