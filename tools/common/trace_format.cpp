#include "trace_format.h"

#include <algorithm>

namespace solvane::tools {

namespace {

constexpr std::string_view string_letters = "CXcdiopsux";
constexpr std::string_view integer_letters = "CXcdiopux";
constexpr std::string_view tag = "@TAG<";

} // namespace

bool next_conversion(std::string_view format, bool integer_layout, std::size_t from, conversion &into)
{
    const auto letters = integer_layout ? integer_letters : string_letters;
    into.start = format.find('%', from);
    if (into.start == std::string_view::npos) {
        return false;
    }
    std::size_t at = into.start + 1;
    while (at < format.size() && format[at] != '%' && letters.find(format[at]) == std::string_view::npos) {
        ++at;
    }
    into.takes = at < format.size() && format[at] != '%';
    into.end = std::min(at + 1, format.size());
    return true;
}

std::vector<std::string> argument_names(std::string_view format, bool integer_layout)
{
    std::vector<std::string> names;
    conversion               found;
    for (std::size_t at = 0; next_conversion(format, integer_layout, at, found); at = found.end) {
        if (!found.takes) {
            continue;
        }
        const std::string_view rest = format.substr(found.end);
        const std::size_t      close = rest.starts_with(tag) ? rest.find('>') : std::string_view::npos;
        names.emplace_back(close != std::string_view::npos ? rest.substr(tag.size(), close - tag.size()) : "");
    }
    return names;
}

std::string argument_letters(std::string_view format, bool integer_layout)
{
    std::string letters;
    conversion  found;
    for (std::size_t at = 0; next_conversion(format, integer_layout, at, found); at = found.end) {
        letters += found.takes ? std::string(1, format[found.end - 1]) : "";
    }
    return letters;
}

} // namespace solvane::tools
