// A command of the tool as data: its arguments, options and examples.  The parser, `--help`, the manual page and the
// shell completions are all made from these tables.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace solvane::tools {

class session;

/// Where the value of an option or argument goes; a bool is a flag and takes none.
using option_target = std::variant<bool *, std::string *, std::vector<std::string> *, std::optional<std::uint64_t> *>;

/// What the shell may complete a value with.
enum class completes { nothing, file, domain_name };

struct option_spec {
    std::string              names; ///< "-c,--count"
    std::string              value; ///< "COUNT"; empty for a flag
    std::string              help;
    option_target            into;
    std::vector<std::string> choices = {}; ///< the only values taken, where there are some
    completes                by = completes::nothing;
};

struct argument_spec {
    std::string   name;
    std::string   help;
    option_target into; ///< text, or a vector for the rest of the line
    bool          required = true;
    completes     by = completes::nothing;
};

struct example {
    std::string line; ///< behind the tool's name
    std::string says;
};

struct command {
    std::string                  name;
    std::string                  summary; ///< one line
    std::string                  details; ///< paragraphs for --help and the manual, or empty
    std::vector<example>         examples;
    std::vector<argument_spec>   arguments;
    std::vector<option_spec>     options;
    std::function<int(session &)> run; ///< answers an exit code
};

/// Options that every command takes, before or behind its name.
struct common_settings {
    std::string library;
    std::string domain;
    std::string colour = "auto";
    std::string output = "-";
    bool        json = false;
    bool        quiet = false;
    bool        verbose = false;
    bool        line_flush = false;
};

/// Options that every tool has: library, output, flushing, remarks.
std::vector<option_spec> basic_options(common_settings &into);

/// A row of the exit codes or of the environment in help and manual.
struct explained {
    const char *name;
    const char *says;
};

/// A tool as data: its commands and what help and manual tell of it as a whole.
struct tool_spec {
    const char              *name;
    const char              *summary; ///< behind "name: "
    std::vector<command>   (*commands)(); ///< in the order of the help
    std::vector<option_spec> (*common)(common_settings &into);
    std::vector<explained>   exit_codes;
    std::vector<explained>   environment;
    std::string              usual = {}; ///< the command meant where the command line names none
};

/// Runs a tool from its command line to its exit code; its data stays apart from what the library prints.
int run_tool(const tool_spec &tool, int argc, char **argv);

/// The tool that runs, for messages.
const tool_spec &running_tool();

/// What the words on the command line ask for.
struct request {
    const command *chosen = nullptr; ///< null: nothing to run, `text` is the answer
    std::string    text;             ///< of --help or --version
};

/// Fills the targets of the options.  Throws `failure` (exit_usage).
request parse_command_line(int argc, char **argv, std::vector<command> &commands, std::vector<option_spec> &common);

inline constexpr char tool_version[] = "1.0.0";

// Every tool has these two.
command completion_command();
command man_command();

} // namespace solvane::tools
