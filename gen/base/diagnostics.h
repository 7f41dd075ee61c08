// Source places and messages of the generator.
//
// Every stage reports through one `diagnostics`; after an error a stage goes on to find the rest.  A message is
// `file:line:column: error: text`, followed by the source line and a caret.
#pragma once

#include <compare>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace solvane::gen {

/// Where something stands in an input: file number in `diagnostics`, line and column counted from 1.
struct place {
    std::uint32_t file = 0;
    std::uint32_t line = 0;
    std::uint32_t column = 0;

    friend auto operator<=>(const place &, const place &) = default;
};

class diagnostics {
public:
    /// Registers an input and keeps its text for carets.  `path` is shown as given.
    std::uint32_t add_file(std::string path, std::string text);

    const std::string &path(std::uint32_t file) const { return files_[file].path; }
    const std::string &text(std::uint32_t file) const { return files_[file].text; }

    /// A place is told of once: what goes wrong there later is a consequence more often than a second fault.
    void error(const place &where, std::string text);
    /// An error with a second place: the definition that the first one clashes with.
    void conflict(const place &where, std::string text, const place &other, std::string note);

    bool failed() const { return !messages_.empty(); }
    std::size_t count() const { return messages_.size(); }

    /// All messages in the order of files and lines, as printed on standard error.
    std::string render() const;

private:
    struct input {
        std::string path;
        std::string text;
    };
    struct message {
        place       where;
        std::string text;
        bool        has_other = false;
        place       other;
        std::string note;
    };

    std::string line_with_caret(const place &where) const;
    bool        is_fresh(const place &where);

    std::vector<input>   files_;
    std::vector<message> messages_;
    std::set<place>      told_;
};

} // namespace solvane::gen
