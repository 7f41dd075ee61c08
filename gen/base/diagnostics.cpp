// Keeps the inputs for their source lines and the messages until the end of a run.
#include "base/diagnostics.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace solvane::gen {
namespace {

/// Line number `line` of a text, without its line end.
std::string_view source_line(std::string_view text, std::uint32_t line)
{
    for (; line > 1; --line) {
        const std::size_t end = text.find('\n');
        if (end == std::string_view::npos)
            return {};
        text.remove_prefix(end + 1);
    }
    text = text.substr(0, text.find('\n'));
    if (text.ends_with('\r'))
        text.remove_suffix(1);
    return text;
}

/// Blanks that move a caret below `column`; tabs are kept, so that both lines align in any terminal.
std::string caret_padding(std::string_view line, std::uint32_t column)
{
    std::string padding(line.substr(0, column - 1));
    std::replace_if(padding.begin(), padding.end(), [](char c) { return c != '\t'; }, ' ');
    return padding;
}

} // namespace

std::uint32_t diagnostics::add_file(std::string path, std::string text)
{
    files_.push_back({std::move(path), std::move(text)});
    return static_cast<std::uint32_t>(files_.size() - 1);
}

/// Several messages about a file as a whole are kept.
bool diagnostics::is_fresh(const place &where)
{
    return told_.insert(where).second || where.line == 0;
}

void diagnostics::error(const place &where, std::string text)
{
    if (is_fresh(where))
        messages_.push_back({where, std::move(text), false, {}, {}});
}

void diagnostics::conflict(const place &where, std::string text, const place &other, std::string note)
{
    if (is_fresh(where))
        messages_.push_back({where, std::move(text), true, other, std::move(note)});
}

std::string diagnostics::line_with_caret(const place &where) const
{
    const std::string_view line = source_line(files_[where.file].text, where.line);
    return fmt::format("    {}\n    {}^\n", line, caret_padding(line, where.column));
}

std::string diagnostics::render() const
{
    std::vector<const message *> order;
    for (const message &m : messages_)
        order.push_back(&m);
    std::stable_sort(order.begin(), order.end(), [](const message *a, const message *b) {
        return a->where < b->where;
    });

    std::string out;
    const auto  tell = [&](const place &where, std::string_view severity, std::string_view text) {
        if (where.line == 0) { // about the file as a whole
            out += fmt::format("{}: {}: {}\n", files_[where.file].path, severity, text);
            return;
        }
        out += fmt::format("{}:{}:{}: {}: {}\n", files_[where.file].path, where.line, where.column, severity, text);
        out += line_with_caret(where);
    };
    for (const message *m : order) {
        tell(m->where, "error", m->text);
        if (m->has_other)
            tell(m->other, "note", m->note);
    }
    return out;
}

} // namespace solvane::gen
