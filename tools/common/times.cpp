#include "times.h"

#include <array>
#include <ctime>

#include <fmt/format.h>

#include "failure.h"
#include "text.h"

namespace solvane::tools {

namespace {

constexpr std::int64_t second = 1'000'000'000;
constexpr std::size_t  column = 12; /* of a relative time */

/* Days since 1970-01-01 of a date of the Gregorian calendar; years count from March so that leap days come last. */
std::int64_t days_of(std::int64_t year, unsigned month, unsigned day)
{
    year -= month <= 2 ? 1 : 0;
    const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
    const auto         of_era = static_cast<unsigned>(year - era * 400);
    const unsigned     of_year = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    return era * 146097 + static_cast<std::int64_t>(of_era * 365 + of_era / 4 - of_era / 100 + of_year) - 719468;
}

std::optional<unsigned> digits_at(std::string_view text, std::size_t at, std::size_t count)
{
    unsigned value = 0;
    for (std::size_t i = at; i < at + count; ++i) {
        if (i >= text.size() || text[i] < '0' || text[i] > '9') {
            return std::nullopt;
        }
        value = value * 10 + static_cast<unsigned>(text[i] - '0');
    }
    return value;
}

} // namespace

std::string absolute_time(std::int64_t nanoseconds)
{
    std::int64_t whole = nanoseconds / second;
    std::int64_t rest = nanoseconds % second;
    if (rest < 0) {
        rest += second;
        --whole;
    }
    const auto clock = static_cast<std::time_t>(whole);
    std::tm    parts = {};
    gmtime_r(&clock, &parts);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:06}Z", parts.tm_year + 1900, parts.tm_mon + 1,
                       parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec, rest / 1000);
}

std::optional<std::int64_t> parse_absolute_time(std::string_view text)
{
    static constexpr std::string_view shape = "0000-00-00T00:00:00";
    static constexpr std::array<std::size_t, 6> places = {0, 5, 8, 11, 14, 17};
    std::array<unsigned, 6>                     numbers = {};
    if (text.size() <= shape.size() || text.back() != 'Z') {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < places.size(); ++i) {
        const auto number = digits_at(text, places[i], i == 0 ? 4 : 2);
        if (!number || (i > 0 && text[places[i] - 1] != shape[places[i] - 1])) {
            return std::nullopt;
        }
        numbers[i] = *number;
    }
    const auto fraction =
        parse_seconds(fmt::format("0{}", text.substr(shape.size(), text.size() - shape.size() - 1)));
    if (!fraction || *fraction >= second || numbers[1] - 1 > 11 || numbers[2] - 1 > 30 || numbers[3] > 23 ||
        numbers[4] > 59 || numbers[5] > 60) {
        return std::nullopt;
    }
    const std::int64_t days = days_of(numbers[0], numbers[1], numbers[2]);
    return ((days * 24 + numbers[3]) * 60 + numbers[4]) * 60 * second + numbers[5] * second + *fraction;
}

std::string seconds(std::int64_t nanoseconds, unsigned digits)
{
    const bool  negative = nanoseconds < 0;
    const auto  value =
        negative ? 0 - static_cast<std::uint64_t>(nanoseconds) : static_cast<std::uint64_t>(nanoseconds);
    std::string out = fmt::format("{}{}.{:09}", negative ? "-" : "", value / second, value % second);
    out.resize(out.size() - 9 + digits);
    return out;
}

std::optional<std::int64_t> parse_seconds(std::string_view text)
{
    const std::size_t dot = text.find('.');
    const auto        whole = parse_number(text.substr(0, dot));
    if (!whole || text.starts_with("0x") || *whole > 9'000'000'000) {
        return std::nullopt;
    }
    std::int64_t fraction = 0;
    if (dot != std::string_view::npos) {
        const std::string_view tail = text.substr(dot + 1);
        const auto             value = digits_at(tail, 0, tail.size());
        if (tail.empty() || tail.size() > 9 || !value) {
            return std::nullopt;
        }
        fraction = *value;
        for (std::size_t i = tail.size(); i < 9; ++i) {
            fraction *= 10;
        }
    }
    return static_cast<std::int64_t>(*whole) * second + fraction;
}

time_format::time_format(const std::string &name) : form_(name.empty() ? '?' : name[0])
{
    static constexpr std::array<std::string_view, 5> forms = {"relative", "delta", "absolute", "epoch", "none"};
    for (const auto form : forms) {
        if (name == form || (name.size() == 1 && name[0] == form[0])) {
            return;
        }
    }
    throw failure(exit_usage, fmt::format("no time format {}: relative, delta, absolute, epoch or none", name));
}

void time_format::pass(std::optional<std::int64_t> time)
{
    first_ = first_ ? first_ : time;
}

std::string time_format::text(std::optional<std::int64_t> time)
{
    if (form_ == 'n') {
        return {};
    }
    if (!time) {
        return fmt::format("[{:>{}}] ", "-", column);
    }
    pass(time);
    const std::int64_t before = last_.value_or(*time);
    last_ = time;
    switch (form_) {
    case 'a': return fmt::format("[{}] ", absolute_time(*time));
    case 'e': return fmt::format("[{}] ", seconds(*time, 6));
    case 'd': return fmt::format("[{:>{}}] ", seconds(*time - before, 6), column);
    default: return fmt::format("[{:>{}}] ", seconds(*time - *first_, 6), column);
    }
}

} // namespace solvane::tools
