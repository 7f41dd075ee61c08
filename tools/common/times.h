// Times of a recording as text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace solvane::tools {

/// 2026-05-14T08:30:00.000100Z, always UTC, microseconds.
std::string absolute_time(std::int64_t nanoseconds);

/// Reads `absolute_time`'s form, the fraction of up to nine digits or none.
std::optional<std::int64_t> parse_absolute_time(std::string_view text);

/// Seconds with `digits` decimals, cut, not rounded.
std::string seconds(std::int64_t nanoseconds, unsigned digits);

/// Reads seconds with up to nine decimals.
std::optional<std::int64_t> parse_seconds(std::string_view text);

/// How -t wants the times of lines.
class time_format {
public:
    /// `relative` (to the first packet), `delta` (to the line before), `absolute`, `epoch` or `none`, or the first
    /// letter of one.  Throws `failure` (exit_usage).
    explicit time_format(const std::string &name);
    /// Tells of a packet, shown or not: relative times count from the first one.
    void pass(std::optional<std::int64_t> time);
    /// "[    0.000100] ", or nothing with `none`; blanks when the packet has no time.
    std::string text(std::optional<std::int64_t> time);

private:
    char                        form_;
    std::optional<std::int64_t> first_;
    std::optional<std::int64_t> last_;
};

} // namespace solvane::tools
