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

/// A word of `environment` is NAME=VALUE.  `input` is its standard input.
tool_result run_tool(const std::vector<std::string> &words, const std::string &input = "",
                     const std::vector<std::string> &environment = {});

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
