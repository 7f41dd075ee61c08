#include <fmt/format.h>

#include "agent_packet.h"
#include "recording.h"
#include "run_of_packets.h"

namespace solvane::tools {

std::vector<timed_packet> recorded_run(session &work, const std::string &path)
{
    const auto source = open_recording(path, [&work]() -> const plugin & { return work.started(); });
    std::vector<timed_packet>   run;
    std::optional<std::int64_t> start;
    while (auto next = source->next()) {
        if (!next->complaint.empty()) {
            work.finding(fmt::format("packet {}: {}", next->number, next->complaint));
            continue;
        }
        const bool sent = next->way != direction::out &&
                          (next->kind == packet_kind::agent || next->kind == packet_kind::integers);
        if (!sent || next->content.empty()) {
            continue;
        }
        if (next->kind == packet_kind::integers) {
            next->content.insert(next->content.begin(), report_trace_words);
        }
        const std::int64_t before = run.empty() ? 0 : run.back().at;
        start = start ? start : next->time;
        run.push_back({next->time ? *next->time - *start : before, std::move(next->content)});
    }
    return run;
}

} // namespace solvane::tools
