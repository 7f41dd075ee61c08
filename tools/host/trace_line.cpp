#include "trace_line.h"

#include <algorithm>
#include <cstring>

#include <fmt/format.h>

#include "agent_packet.h"
#include "isolate.h"

namespace solvane::tools {

namespace {

constexpr std::size_t longest_line = 1023;      /* characters that the library's buffer takes */
constexpr std::size_t longest_conversion = 128; /* characters from % to the letter */
constexpr std::size_t widest_word = 12;         /* characters of a 32-bit word in any base, with room */

/* Whether a trace in integer layout can outgrow the library's buffers: a width, a precision or a long run to the
 * letter makes it possible. */
bool may_overrun(std::string_view format, std::size_t words)
{
    std::size_t worst = format.size() + words * widest_word;
    conversion  found;
    for (std::size_t at = 0; next_conversion(format, true, at, found); at = found.end) {
        const auto        inside = format.substr(found.start, found.end - found.start);
        std::size_t       number = 0;
        if (inside.size() > longest_conversion || inside.find_first_of("*sn") != std::string_view::npos) {
            return true;
        }
        for (const char c : inside) {
            const bool digit = c >= '0' && c <= '9';
            number = digit ? number * 10 + static_cast<std::size_t>(c - '0') : 0;
            worst += digit ? number : 0;
        }
    }
    return worst > longest_line;
}

void fill_place(const plugin &loaded, trace_line &line)
{
    tsc_trace_full_info full = {};
    line.known = loaded.info->tsc_trace_lookup_full(line.id, &full) != 0;
    if (!line.known) {
        return;
    }
    line.module_row = full.mod_row;
    line.module = full.mod_name != nullptr ? full.mod_name : "";
    line.file = full.file != nullptr ? full.file : "";
    line.line = full.line;
    line.format = full.trace_format != nullptr ? full.trace_format : "";
}

void fill_arguments(trace_line &line, const std::vector<std::string> &values, bool integer_layout)
{
    const auto names = argument_names(line.format, integer_layout);
    for (std::size_t i = 0; i < values.size(); ++i) {
        line.arguments.push_back({i < names.size() ? names[i] : "", values[i]});
    }
    line.wrong_count = line.known && values.size() < names.size();
}

void fill_text(trace_line &line, bool isolate, const std::function<std::string()> &decode)
{
    if (!isolate) {
        line.text = decode();
        return;
    }
    const auto text = in_isolation(decode);
    line.died = !text;
    line.text = text.value_or("");
}

trace_line string_line(const plugin &loaded, std::span<const std::uint8_t> body, bool isolate)
{
    trace_line line;
    const auto trace = parse_string_trace(body, line.complaint);
    if (!trace) {
        return line;
    }
    line.id = trace->id;
    fill_place(loaded, line);
    fill_arguments(line, argument_texts(trace->arguments), false);
    fill_text(line, isolate || line.format.size() + trace->arguments.size() > longest_line,
              [&] { return std::string(loaded.info->tsc_trace_text_info(body.data(), nullptr)); });
    if (trace->surplus != 0) {
        line.complaint = fmt::format("{} octets behind the arguments", trace->surplus);
    }
    return line;
}

trace_line integer_line(const plugin &loaded, std::span<const std::uint8_t> body, bool isolate)
{
    trace_line               line;
    line.integer_layout = true;
    std::vector<std::string> values;
    const std::size_t        words = body.size() / 4;
    if (body.empty() || body.size() % 4 != 0) {
        line.complaint = fmt::format("a trace in integer layout of {} octets, not of whole words", body.size());
        return line;
    }
    std::vector<std::uint32_t> aligned(words);
    std::memcpy(aligned.data(), body.data(), body.size());
    line.id = aligned[0];
    fill_place(loaded, line);
    for (std::size_t i = 1; i < words; ++i) {
        values.push_back(std::to_string(aligned[i]));
    }
    fill_arguments(line, values, true);
    fill_text(line, isolate || may_overrun(line.format, words - 1), [&] {
        const auto *data = reinterpret_cast<const std::uint8_t *>(aligned.data());
        return std::string(
            loaded.info->tsc_trace_text_int_info(data, static_cast<std::uint32_t>(body.size()), nullptr));
    });
    return line;
}

} // namespace

std::optional<trace_line> decode_trace(const plugin &loaded, const packet &what, bool isolate_all)
{
    const std::span<const std::uint8_t> content = what.content;
    if (what.kind == packet_kind::integers) {
        return integer_line(loaded, content, isolate_all);
    }
    const bool report = what.kind == packet_kind::agent && what.way != direction::out;
    if (report && !content.empty() && content[0] == report_trace_id) {
        return string_line(loaded, content.subspan(1), isolate_all);
    }
    if (report && !content.empty() && content[0] == report_trace_words) {
        return integer_line(loaded, content.subspan(1), isolate_all);
    }
    return std::nullopt;
}

} // namespace solvane::tools
