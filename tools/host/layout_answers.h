// Collects a target's answers on the layout of its types and puts them into the plug-in's target records.
#pragma once

#include <array>
#include <string>

#include "agent_packet.h"
#include "plugin.h"
#include "text.h"

namespace solvane::tools {

class layout_answers {
public:
    /// `loaded` has been started, with our memory in its slots (lend_memory).
    explicit layout_answers(const plugin &loaded) : loaded_(loaded) {}

    /// Takes a packet that the target sent.  False when it is no answer on layout.  What does not fit goes to
    /// `complaint` and is left out; the domain is then incomplete until it is answered anew.
    bool take(const octets &packet, std::string &complaint);

    bool complete() const;
    /// The domains that are not complete, by name; empty when all are.
    std::string missing() const;

private:
    enum class part { basic, offsets, fields, done }; ///< the order in which a domain is answered

    struct progress {
        part          now = part::basic;
        std::uint32_t filled = 0; ///< entries of this part
    };

    std::string take_piece(const mta_tt_offsize_resp_struct &answer);
    std::string copy_piece(const mta_tt_offsize_resp_struct &answer, progress &at, std::uint32_t &total);

    const plugin                            &loaded_;
    std::array<progress, TT_NO_DOMAINS>      domains_ = {};
};

} // namespace solvane::tools
