// Calls into the library in a child process, for input that may end the process.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace solvane::tools {

/// Runs `work` in a child and hands over the text that it answered; nothing when the child died on the way.
/// What the library prints before it dies goes to standard error.
std::optional<std::string> in_isolation(const std::function<std::string()> &work);

} // namespace solvane::tools
