// Clock, settings and file names of the process.
#pragma once

#include <cstdint>

/// A date and time in UTC.
struct pf_date_time {
    std::uint16_t year, month, day_of_week, day, hour, minute, second, millisecond;
};

/// Ticks of a counter that only goes forward, and how many of them make a second.
std::uint64_t pf_counter();
std::uint64_t pf_counter_frequency();
/// The system's time in units of 100 ns since 1970-01-01 00:00 UTC, in the steps in which the system's coarse
/// clock moves.
std::uint64_t pf_system_time();
/// Takes such a time apart.
pf_date_time pf_to_date_time(std::uint64_t time);

/// A setting of the process by its name, or null.
const char *pf_setting(const char *name);

/// Stands between the parts of a path.
inline constexpr char pf_path_separator = '/';
