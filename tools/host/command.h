// A command of the tool as data: its arguments, options and examples.  The parser, `--help`, the manual page and the
// shell completions are all made from these tables.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace solvane::host {

class session;

/// Where the value of an option or argument goes; a bool is a flag and takes none.
using target = std::variant<bool *, std::string *, std::vector<std::string> *, std::optional<std::uint64_t> *>;

/// What the shell may complete a value with.
enum class completes { nothing, file, domain_name };

struct option_spec {
    std::string              names; ///< "-c,--count"
    std::string              value; ///< "COUNT"; empty for a flag
    std::string              help;
    target                   into;
    std::vector<std::string> choices = {}; ///< the only values taken, where there are some
    completes                by = completes::nothing;
};

struct argument_spec {
    std::string name;
    std::string help;
    target      into; ///< text, or a vector for the rest of the line
    bool        required = true;
    completes   by = completes::nothing;
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
std::vector<option_spec> common_options(common_settings &into);

/// All commands, in the order of the help.
std::vector<command> all_commands();

/// What the words on the command line ask for.
struct request {
    const command *chosen = nullptr; ///< null: nothing to run, `text` is the answer
    std::string    text;             ///< of --help or --version
};

/// Fills the targets of the options.  Throws `failure` (exit_usage).
request parse_command_line(int argc, char **argv, std::vector<command> &commands, std::vector<option_spec> &common);

std::string help_text(const command &of, const std::vector<option_spec> &common);
std::string overview_text(const std::vector<command> &commands, const std::vector<option_spec> &common);

inline constexpr char tool_name[] = "solvane-host";
inline constexpr char tool_version[] = "1.0.0";

// One a file, cmd_<name>.cpp.
command info_command();
command domains_command();
command types_command();
command type_command();
command enum_command();
command messages_command();
command message_command();
command value_command();
command record_command();
command trace_command();
command statements_command();
command classify_command();
command decode_command();
command encode_command();
command roundtrip_command();
command peers_command();
command convert_command();
command check_command();
command completion_command();
command man_command();

} // namespace solvane::host
