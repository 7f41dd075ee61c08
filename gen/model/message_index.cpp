// Lays the dense message index.
#include "model/lay.h"

namespace solvane::gen {
namespace {

constexpr std::uint32_t most_left_out = 63; // codes between two neighbours of a run

/// Whether a code goes on with the run that ends in `last`.
bool goes_on(std::uint32_t last, std::uint32_t code) { return code > last && code - last - 1 <= most_left_out; }

} // namespace

void lay_message_index(domain &d)
{
    if (!d.indexed)
        return;
    d.index_codes.push_back(0);
    for (const message_row &message : d.messages) {
        const auto index = static_cast<std::uint32_t>(d.index_codes.size());
        d.index_codes.push_back(message.code);
        if (d.ranges.empty() || !goes_on(d.ranges.back().last_code, message.code))
            d.ranges.push_back({index, message.code, index, message.code});
        d.ranges.back().last_index = index;
        d.ranges.back().last_code = message.code;
    }
    const auto last = static_cast<std::uint32_t>(d.index_codes.size());
    d.index_codes.push_back(0);
    d.ranges.push_back({0, 0, last, 0}); // catches code 0
}

} // namespace solvane::gen
