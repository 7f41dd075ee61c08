// Runs solvane-host as a user does and catches what it writes.
#pragma once

#include <string>
#include <vector>

namespace solvane::tools::test {

struct tool_result {
    int         code = -1; ///< exit code, or 128 + the signal that ended it
    std::string out;
    std::string err;
};

/// A word of `environment` is NAME=VALUE.  `input` is its standard input.  A tool that does not end within half a
/// minute is ended by SIGALRM.
tool_result run_tool(const std::vector<std::string> &words, const std::string &input = "",
                     const std::vector<std::string> &environment = {});

/// A tool that runs beside the test, with the same time limit.
class running_tool {
public:
    running_tool(const char *tool, const std::vector<std::string> &words);
    running_tool(const running_tool &) = delete;
    running_tool &operator=(const running_tool &) = delete;
    ~running_tool();

    /// The next line of its output, without the end; empty when there is none left.
    std::string line();
    /// Waits for its end, after `signal` was sent where it is not 0; what it wrote since.
    tool_result end(int signal = 0);

private:
    int         process_ = -1;
    int         output_ = -1;
    std::string error_path_;
    std::string buffer_;
};

/// A file in the test's folder that is gone when the object is.
class temporary_file {
public:
    explicit temporary_file(const std::string &content = "");
    ~temporary_file();
    temporary_file(const temporary_file &) = delete;
    temporary_file &operator=(const temporary_file &) = delete;
    const std::string &path() const { return path_; }
    std::string        content() const;

private:
    std::string path_;
};

} // namespace solvane::tools::test
