// How a command ends: the exit codes of all our tools, and the exception that carries one with its line.
#pragma once

#include <stdexcept>
#include <string>

namespace solvane::tools {

enum exit_code {
    exit_done = 0,
    exit_findings = 1,     ///< done, but a name was unknown, a frame bad, or two things differ
    exit_usage = 2,
    exit_cannot_open = 3,  ///< a library, file or connection
    exit_mismatch = 4,     ///< the library offers another interface or baseline than expected
    exit_expectation = 5,  ///< not met in time
    exit_decoder_died = 6, ///< in isolation
    exit_interrupted = 130
};

/// Ends the command: `what()` goes to standard error as one line, `code` to the shell.
class failure : public std::runtime_error {
public:
    failure(exit_code code, const std::string &line) : std::runtime_error(line), code_(code) {}
    exit_code code() const { return code_; }

private:
    exit_code code_;
};

} // namespace solvane::tools
