#include "trace_print.h"

#include <fmt/format.h>

namespace solvane::tools {

namespace {

const char *direction_word(direction way)
{
    return way == direction::in ? "in" : way == direction::out ? "out" : "unknown";
}

/* One record a line: the newlines that formats end in are dropped, others are shown as \n. */
std::string text_of(const trace_line &line)
{
    std::string text = line.text;
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
        text.pop_back();
    }
    return one_line(text);
}

} // namespace

std::string stream_line(const session &work, const std::string &time, ink colour, const std::string &head,
                        const std::string &text, const std::string &remark)
{
    return time + work.paint.padded(colour, head, module_column) + "  " + text +
           (remark.empty() ? "" : "  " + work.paint(ink::note, remark));
}

std::string trace_text(const session &work, const std::string &time, const trace_line &line)
{
    const std::string head = line.known ? line.module : fmt::format("{:#010x}", line.id);
    const bool        whole = line.known && !line.wrong_count;
    return stream_line(work, time, line.known ? ink::module : ink::bad, head,
                       work.paint(whole ? ink::plain : ink::bad, text_of(line)),
                       line.file.empty() ? "" : fmt::format("({}:{})", line.file, line.line));
}

std::string bad_packet_line(const session &work, const std::string &time, const packet &what, const std::string &why)
{
    return stream_line(work, time, ink::bad, "?", work.paint(ink::bad, "bad frame: " + why),
                       fmt::format("(packet {})", what.number));
}

json packet_json(std::string_view schema, const packet &what)
{
    json out = json_object(schema);
    out["packet"] = what.number;
    if (what.time) {
        out["time_ns"] = *what.time;
    }
    out["direction"] = json_enum(static_cast<int>(what.way), direction_word(what.way));
    return out;
}

json bad_packet_json(std::string_view schema, const packet &what, const std::string &why)
{
    json out = json_object(schema);
    out["packet"] = what.number;
    if (what.time) {
        out["time_ns"] = *what.time;
    }
    out["error"] = why;
    out["octets"] = to_hex(what.content);
    return out;
}

json trace_json(const packet &what, const trace_line &line)
{
    json out = packet_json("trace", what);
    out["layout"] = line.integer_layout ? "integer" : "string";
    out["id"] = line.id;
    if (line.known) {
        out["module"] = json_enum(line.module_row, line.module);
    }
    out["text"] = line.text;
    if (line.known) {
        out["file"] = line.file;
        out["line"] = line.line;
    } else {
        out["error"] = "unknown trace id";
    }
    json arguments = json::array();
    for (const auto &argument : line.arguments) {
        arguments.push_back(argument.name.empty() ? json(argument.value)
                                                  : json{{"name", argument.name}, {"value", argument.value}});
    }
    out["args"] = arguments;
    return out;
}

} // namespace solvane::tools
