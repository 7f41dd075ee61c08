// The session as it is played to one host: packets when they are due, answers in between, damage where it is wanted.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "faults.h"
#include "frame_splitter.h"
#include "run_of_packets.h"
#include "target.h"

namespace solvane::tools {

struct play_options {
    std::string                  read;
    std::optional<std::uint64_t> port, rate, drop_after, corrupt, seed, count;
    bool                         loop = false;
    bool                         once = false;
    std::vector<std::string>     alterations;
    std::string                  baseline;
};

/// How the time with one host ended.
enum class parting { host_left, dropped, over, interrupted };

class playback {
public:
    playback(session &work, const play_options &options, const std::vector<timed_packet> &run, target &answers,
             faults &damage)
        : work_(work), options_(options), run_(run), target_(answers), damage_(damage), incoming_(longest_command)
    {
    }

    /// Plays until one side ends it; `interrupt` is the descriptor of watch_interrupts.
    parting play(int connection, int interrupt);
    std::uint64_t sent() const { return sent_; }

private:
    static constexpr std::size_t longest_command = 65536; ///< octets

    std::int64_t next_due() const;
    bool         session_over() const { return !options_.loop && next_ == run_.size(); }
    bool         send_next(int connection);
    bool         take_commands(int connection);
    void         wait(int connection, int interrupt, std::int64_t until, bool &readable) const;
    parting      close_gently(int connection, int interrupt);

    session                         &work_;
    const play_options              &options_;
    const std::vector<timed_packet> &run_;
    target                          &target_;
    faults                          &damage_;
    frame_splitter                   incoming_;
    std::deque<octets>               answers_;
    std::size_t                      next_ = 0;  ///< of the session
    std::int64_t                     start_ = 0; ///< when this round of it began, nanoseconds
    std::int64_t                     free_at_ = 0; ///< no frame before
    std::int64_t                     heard_at_ = 0; ///< the last command, or the beginning
    bool                             heard_ = false;
    std::uint64_t                    sent_ = 0;
};

} // namespace solvane::tools
