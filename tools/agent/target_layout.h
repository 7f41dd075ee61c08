// How the simulated target lays its types out: as the plug-in's own compiler does, with the alterations that the user
// asked for, and cut into the pieces in which a target answers.
#pragma once

#include <string>
#include <vector>

#include "plugin.h"
#include "text.h"

namespace solvane::tools {

class target_layout {
public:
    /// Each alteration is STRUCT=SIZE or STRUCT.MEMBER=OFFSET, in octets.  Throws `failure` (exit_usage) for one that
    /// fits nothing.
    target_layout(const plugin &loaded, const std::vector<std::string> &alterations);

    /// The answers to a request for the layout, as packets: for every domain basic types, offsets, bit-fields.
    std::vector<octets> answers() const;

private:
    struct tables {
        std::uint8_t                    domain = 0;
        octets                          basic;
        std::vector<rw_offsize_type>    offsize;
        std::vector<mta_bit_map_struct> bits;
    };

    void alter(const plugin &loaded, const std::string &words);

    std::vector<tables> domains_;
};

} // namespace solvane::tools
