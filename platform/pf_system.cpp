// Clock and settings over POSIX.
#include "pf_system.h"

#include <cstdlib>
#include <ctime>

namespace {

std::uint64_t read_clock(clockid_t clock, std::uint64_t unit)
{
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * (1000000000 / unit) +
           static_cast<std::uint64_t>(now.tv_nsec) / unit;
}

} // namespace

std::uint64_t pf_counter()
{
    return read_clock(CLOCK_MONOTONIC, 1);
}

std::uint64_t pf_counter_frequency()
{
    return 1000000000;
}

std::uint64_t pf_system_time()
{
    return read_clock(CLOCK_REALTIME_COARSE, 100);
}

pf_date_time pf_to_date_time(std::uint64_t time)
{
    const auto seconds = static_cast<std::time_t>(time / 10000000);
    std::tm    utc{};
    gmtime_r(&seconds, &utc);
    return {
        .year = static_cast<std::uint16_t>(utc.tm_year + 1900),
        .month = static_cast<std::uint16_t>(utc.tm_mon + 1),
        .day_of_week = static_cast<std::uint16_t>(utc.tm_wday),
        .day = static_cast<std::uint16_t>(utc.tm_mday),
        .hour = static_cast<std::uint16_t>(utc.tm_hour),
        .minute = static_cast<std::uint16_t>(utc.tm_min),
        .second = static_cast<std::uint16_t>(utc.tm_sec),
        .millisecond = static_cast<std::uint16_t>(time / 10000 % 1000),
    };
}

const char *pf_setting(const char *name)
{
    return std::getenv(name);
}
