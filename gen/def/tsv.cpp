// Reads tab-separated tables.
#include "def/tsv.h"

#include <charconv>
#include <utility>

#include <fmt/format.h>

namespace solvane::gen::def {
namespace {

std::vector<cell> split(std::string_view line, place where)
{
    std::vector<cell> cells;
    for (;;) {
        const std::size_t end = line.find('\t');
        cells.push_back({std::string(line.substr(0, end)), where});
        if (end == std::string_view::npos)
            return cells;
        where.column += static_cast<std::uint32_t>(end + 1);
        line.remove_prefix(end + 1);
    }
}

bool is_heading(const std::vector<cell> &cells, const std::vector<std::string_view> &columns)
{
    if (cells.size() != columns.size())
        return false;
    for (std::size_t n = 0; n < columns.size(); ++n) {
        if (cells[n].text != columns[n])
            return false;
    }
    return true;
}

std::string heading_text(const std::vector<std::string_view> &columns)
{
    std::string out;
    for (const std::string_view column : columns)
        out += fmt::format("{}{}", out.empty() ? "" : " ", column);
    return out;
}

} // namespace

table read_table(diagnostics &diag, std::uint32_t file, std::string path,
                 const std::vector<std::string_view> &columns)
{
    table            t{file, std::move(path), {}};
    std::string_view rest = diag.text(file);
    bool             headed = false;
    for (std::uint32_t number = 1; !rest.empty(); ++number) {
        const std::size_t end = rest.find('\n');
        std::string_view  line = rest.substr(0, end);
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        if (line.empty() || line.front() == '#')
            continue;

        std::vector<cell> cells = split(line, {file, number, 1});
        if (!headed) {
            headed = is_heading(cells, columns);
            if (!headed) {
                diag.error(cells[0].where, fmt::format("expected the heading '{}', with tabs between the names",
                                                       heading_text(columns)));
                return t;
            }
        } else if (cells.size() != columns.size()) {
            diag.error(cells.back().where,
                       fmt::format("the row has {} cells, the heading {}", cells.size(), columns.size()));
        } else {
            t.rows.push_back(std::move(cells));
        }
    }
    if (!headed)
        diag.error({file, 0, 0}, fmt::format("the heading '{}' is missing", heading_text(columns)));
    return t;
}

std::optional<std::uint64_t> parse_number(std::string_view text)
{
    const bool hex = text.starts_with("0x") || text.starts_with("0X");
    if (hex)
        text.remove_prefix(2);
    std::uint64_t number = 0;
    const auto [end, failed] = std::from_chars(text.data(), text.data() + text.size(), number, hex ? 16 : 10);
    if (failed != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

} // namespace solvane::gen::def
