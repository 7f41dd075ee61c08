// Trace modules and statements.
#include "def/check_traces.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string_view>
#include <unordered_map>

#include <fmt/format.h>

#include "model/traces.h"

namespace solvane::gen::def {
namespace {

/// A format with its escapes resolved; nothing, and a message, where there is another backslash.
std::optional<std::string> unescaped(diagnostics &diag, const cell &format)
{
    std::string out;
    for (std::size_t n = 0; n < format.text.size(); ++n) {
        if (format.text[n] != '\\') {
            out += format.text[n];
            continue;
        }
        const char c = ++n < format.text.size() ? format.text[n] : '\0';
        if (c != 'n' && c != 't' && c != '\\') {
            place where = format.where;
            where.column += static_cast<std::uint32_t>(n - 1);
            diag.error(where, "a backslash stands in \\n, \\t and \\\\ only");
            return std::nullopt;
        }
        out += c == 'n' ? '\n' : c == 't' ? '\t' : '\\';
    }
    return out;
}

/// Whether the decoder of a trace finds something in the format to put an argument for: from a `%` on it passes
/// over whatever is neither a letter of a conversion nor another `%`.
bool has_conversion(std::string_view format)
{
    for (std::size_t n = 0; (n = format.find('%', n)) != std::string_view::npos; ++n) {
        n = format.find_first_of("%CXcdiopsux", n + 1);
        if (n == std::string_view::npos)
            return false;
        if (format[n] != '%')
            return true;
    }
    return false;
}

std::uint32_t status_of(diagnostics &diag, const cell &status, std::string_view format)
{
    if (status.text == "single")
        return trace_single;
    if (status.text == "args")
        return trace_args;
    if (status.text != "-")
        diag.error(status.where, fmt::format("'{}' is no status: there are single, args and -", status.text));
    return has_conversion(format) ? trace_args : trace_single;
}

std::int32_t line_of(diagnostics &diag, const cell &line)
{
    const std::optional<std::uint64_t> number = parse_number(line.text);
    if (number && *number <= static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max()))
        return static_cast<std::int32_t>(*number);
    diag.error(line.where, fmt::format("'{}' is no line number", line.text));
    return 0;
}

} // namespace

std::vector<std::string> read_trace_modules(diagnostics &diag, const table &rows)
{
    std::vector<std::string>                modules;
    std::unordered_map<std::string, place> seen;
    for (const std::vector<cell> &row : rows.rows) {
        const cell &name = row[0];
        if (name.text.empty())
            diag.error(name.where, "the module has no name");
        const auto [at, fresh] = seen.emplace(name.text, name.where);
        if (!fresh)
            diag.conflict(name.where, fmt::format("module '{}' stands here twice", name.text), at->second, "the first");
        modules.push_back(name.text);
    }
    if (modules.empty())
        diag.error({rows.file, 0, 0}, "there is no trace module");
    else if (modules.size() > most_trace_modules)
        diag.error(rows.rows[most_trace_modules][0].where,
                   fmt::format("there are more than {} trace modules: the ids have 32 bits", most_trace_modules));
    return modules;
}

std::vector<trace_item> read_statements(diagnostics &diag, const std::vector<table> &tables,
                                        const std::vector<std::string> &modules)
{
    std::unordered_map<std::string_view, std::uint32_t> numbers;
    for (std::uint32_t n = 0; n < modules.size(); ++n)
        numbers.emplace(modules[n], n);

    std::vector<trace_item>    statements;
    std::vector<std::uint32_t> counts(modules.size());
    for (const table &t : tables) {
        for (const std::vector<cell> &row : t.rows) {
            const cell &name = row[trace_column::module];
            const auto  module = numbers.find(name.text);
            if (module == numbers.end()) {
                diag.error(name.where, fmt::format("unknown trace module '{}'", name.text));
                continue;
            }
            if (++counts[module->second] == ids_of_a_module)
                diag.error(name.where, fmt::format("module '{}' has more than {} statements", name.text,
                                                   ids_of_a_module - 1));
            const std::optional<std::string> format = unescaped(diag, row[trace_column::format]);
            const std::string               &file = row[trace_column::file].text;
            statements.push_back({module->second * ids_of_a_module, format.value_or(""),
                                  status_of(diag, row[trace_column::status], format.value_or("")),
                                  file == "-" ? "" : file, line_of(diag, row[trace_column::line])});
        }
    }
    return statements;
}

} // namespace solvane::gen::def
