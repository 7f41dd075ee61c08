// Where a tool's own data goes, and in which colours.
//
// A loaded plug-in may print on standard output.  `keep_data_apart` therefore moves our data to a copy of
// descriptor 1 and points 1 at standard error; call it before anything is loaded.
#pragma once

#include <string>
#include <string_view>

namespace solvane::tools {

/// The reader of our data has gone: the run ends without a word.
struct closed_pipe {};

/// Buffered data with one owner.  Throws `closed_pipe`, and `failure` when the system refuses to write.
class data_stream {
public:
    data_stream() = default;
    data_stream(const data_stream &) = delete;
    data_stream &operator=(const data_stream &) = delete;
    ~data_stream();

    /// Takes over `descriptor`.
    void attach(int descriptor);
    /// Writes to `path` from now on; "-" leaves the stream as it is.
    void open(const std::string &path);

    void write(std::string_view text);
    /// Ends a record: with `set_line_flush` what was written so far becomes visible.
    void end_record();
    void flush();
    void set_line_flush(bool on) { line_flush_ = on; }
    bool is_terminal() const;

private:
    void put(std::string_view text);

    int         descriptor_ = -1;
    bool        line_flush_ = false;
    std::string buffer_;
};

/// Duplicates descriptor 1, points 1 at standard error, and answers the copy.  A closed pipe raises no signal.
int keep_data_apart();

enum class ink { plain, type, name, number, text, module, note, bad };

/// Puts text in colour, or leaves it alone.
class painter {
public:
    explicit painter(bool on = false) : on_(on) {}
    std::string operator()(ink colour, std::string_view text) const;
    /// The same in a column of `width` characters: painted text must be padded before it is painted.
    std::string padded(ink colour, std::string_view text, std::size_t width) const;
    bool        on() const { return on_; }

private:
    bool on_;
};

/// `choice` is auto, always or never; auto means a terminal without NO_COLOR.
bool wants_colour(const std::string &choice, bool terminal);

} // namespace solvane::tools
