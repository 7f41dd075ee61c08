#include "command.h"

#include <algorithm>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "failure.h"
#include "text.h"

namespace solvane::tools {

namespace {

constexpr std::size_t option_column = 28;
constexpr std::size_t help_width = 100; /* characters of a line */

/* CLI11 hands over the words; what a number is, we decide. */
void add_number(CLI::App &app, const option_spec &spec, std::optional<std::uint64_t> *into)
{
    app.add_option_function<std::string>(spec.names, [into, names = spec.names](const std::string &word) {
        *into = parse_number(word);
        if (!*into) {
            throw CLI::ValidationError(names + ": '" + word + "' is no number");
        }
    });
}

void add_option(CLI::App &app, const option_spec &spec)
{
    CLI::Option *made = nullptr;
    if (auto *const *flag = std::get_if<bool *>(&spec.into)) {
        made = app.add_flag(spec.names, **flag);
    } else if (auto *const *text = std::get_if<std::string *>(&spec.into)) {
        made = app.add_option(spec.names, **text);
    } else if (auto *const *texts = std::get_if<std::vector<std::string> *>(&spec.into)) {
        made = app.add_option(spec.names, **texts)->allow_extra_args(false);
    } else {
        add_number(app, spec, std::get<std::optional<std::uint64_t> *>(spec.into));
        return;
    }
    if (!spec.choices.empty()) {
        made->check(CLI::IsMember(spec.choices));
    }
}

void add_argument(CLI::App &app, const argument_spec &spec)
{
    CLI::Option *made = nullptr;
    if (auto *const *text = std::get_if<std::string *>(&spec.into)) {
        made = app.add_option(spec.name, **text);
    } else {
        made = app.add_option(spec.name, *std::get<std::vector<std::string> *>(spec.into));
    }
    made->required(spec.required);
}

void build(CLI::App &app, std::vector<command> &commands, const std::vector<option_spec> &common)
{
    app.set_help_flag("-h,--help");
    app.set_version_flag("-V,--version", tool_version);
    app.require_subcommand(0, 1);
    for (const auto &option : common) {
        add_option(app, option);
    }
    for (auto &each : commands) {
        CLI::App *sub = app.add_subcommand(each.name, each.summary);
        sub->set_help_flag("-h,--help");
        sub->fallthrough();
        for (const auto &argument : each.arguments) {
            add_argument(*sub, argument);
        }
        for (const auto &option : each.options) {
            add_option(*sub, option);
        }
    }
}

const command *chosen_command(const CLI::App &app, const std::vector<command> &commands)
{
    for (const auto &each : commands) {
        if (app.got_subcommand(each.name)) {
            return &each;
        }
    }
    return nullptr;
}

[[noreturn]] void unknown_command(const std::string &word, const std::vector<command> &commands)
{
    suggestions near(word);
    for (const auto &each : commands) {
        near.offer(each.name);
    }
    throw failure(exit_usage, fmt::format("no command {}{} (see {} --help)", word, near.text(), running_tool().name));
}

/* One line, without CLI11's line breaks. */
[[noreturn]] void usage(const CLI::ParseError &error, const command *chosen)
{
    std::string text = one_line(error.what());
    const std::string tool = running_tool().name;
    throw failure(exit_usage, fmt::format("{} (see {} --help)", text,
                                          chosen != nullptr ? tool + " " + chosen->name : tool));
}

/* How a command is called: the usual one without its name. */
std::string called(const command &of)
{
    const tool_spec &tool = running_tool();
    return tool.usual == of.name ? tool.name : fmt::format("{} {}", tool.name, of.name);
}

std::string usage_line(const command &of)
{
    std::string line = called(of);
    for (const auto &argument : of.arguments) {
        const bool many = std::holds_alternative<std::vector<std::string> *>(argument.into);
        line += argument.required ? " " + argument.name : " [" + argument.name + "]";
        line += many ? "..." : "";
    }
    return line + " [options]";
}

std::string option_line(const option_spec &option)
{
    std::string head = "  " + (option.names.starts_with("--") ? "    " + option.names : option.names);
    for (std::size_t at = head.find(','); at != std::string::npos; at = head.find(',', at + 2)) {
        head.replace(at, 1, ", ");
    }
    head += option.value.empty() ? "" : " " + option.value;
    const bool fits = head.size() + 2 <= option_column;
    return fmt::format("{:<{}}{}\n", fits ? head : head + "\n", fits ? option_column : 0,
                       fits ? option.help : std::string(option_column, ' ') + option.help);
}

std::string option_block(const char *title, const std::vector<option_spec> &options)
{
    std::string out = options.empty() ? "" : fmt::format("\n{}:\n", title);
    for (const auto &option : options) {
        out += option_line(option);
    }
    return out;
}

std::string help_text(const command &of, const std::vector<option_spec> &common)
{
    const bool  usual = of.name == running_tool().usual;
    std::string out = fmt::format("{}: {}\n", usual ? running_tool().name : of.name, of.summary);
    out += of.examples.empty() ? "" : "\nExamples:\n";
    for (const auto &each : of.examples) {
        out += fmt::format("  {}{}{}\n      {}\n", running_tool().name, each.line.empty() ? "" : " ", each.line,
                           each.says);
    }
    out += fmt::format("\nUsage: {}\n", usage_line(of));
    for (const auto &argument : of.arguments) {
        out += fmt::format("  {:<26}{}\n", argument.name, argument.help);
    }
    out += of.details.empty() ? "" : "\n" + of.details + "\n";
    return out + option_block("Options", of.options) + option_block("Common options", common);
}

std::string exit_code_text()
{
    std::string out;
    std::string line = "Exit codes:";
    for (const auto &[number, says] : running_tool().exit_codes) {
        const std::string part = fmt::format(" {} {},", number, says);
        if (line.size() + part.size() > help_width) {
            out += line + "\n";
            line.clear();
        }
        line += line.empty() ? part.substr(1) : part;
    }
    line.back() = '\n';
    return out + line;
}

std::string command_block(const std::vector<command> &commands)
{
    std::string out = "\nCommands:\n";
    for (const auto &each : commands) {
        out += each.name == running_tool().usual ? "" : fmt::format("  {:<14}{}\n", each.name, each.summary);
    }
    return out;
}

std::string overview_text(const std::vector<command> &commands, const std::vector<option_spec> &common)
{
    std::string out = fmt::format("{}: {}\n\nExamples:\n", running_tool().name, running_tool().summary);
    for (const auto &each : commands) {
        if (!each.examples.empty()) {
            out += fmt::format("  {} {}\n", running_tool().name, each.examples.front().line);
        }
    }
    out += command_block(commands) + option_block("Common options", common);
    return out + "  -h, --help                help, also behind a command\n"
                 "  -V, --version             the tool's version\n\n" + exit_code_text();
}

/* Of a tool with a usual command that command's help, with what else there is. */
std::string tool_help(const std::vector<command> &commands, const std::vector<option_spec> &common)
{
    const auto usual = std::find_if(commands.begin(), commands.end(), [](const command &each) {
        return running_tool().usual == each.name;
    });
    return usual == commands.end() ? overview_text(commands, common)
                                   : help_text(*usual, common) + command_block(commands) + "\n" + exit_code_text();
}

/* The words of the command line with the usual command's name in front where no command is named. */
std::vector<std::string> words_of(int argc, char **argv, const std::vector<command> &commands)
{
    std::vector<std::string> words(argv + 1, argv + argc);
    const std::string        first = words.empty() ? "" : words.front();
    const bool               named = std::any_of(commands.begin(), commands.end(),
                                                 [&](const command &each) { return each.name == first; });
    const bool asks = first == "-h" || first == "--help" || first == "-V" || first == "--version";
    if (!running_tool().usual.empty() && !named && !asks) {
        words.insert(words.begin(), running_tool().usual);
    }
    return words;
}

} // namespace

std::vector<option_spec> basic_options(common_settings &into)
{
    return {
        {"--lib", "PATH", "the plug-in; else $SOLVANE_LIB, next to the tool, standard places", &into.library, {},
         completes::file},
        {"-o,--output", "FILE", "write the data there; - is standard output", &into.output, {}, completes::file},
        {"-l,--line-buffered", "", "flush behind every line", &into.line_flush},
        {"-q,--quiet", "", "no remarks on standard error", &into.quiet},
        {"-v,--verbose", "", "more remarks on standard error", &into.verbose},
    };
}

request parse_command_line(int argc, char **argv, std::vector<command> &commands, std::vector<option_spec> &common)
{
    CLI::App app;
    build(app, commands, common);
    try {
        auto words = words_of(argc, argv, commands);
        std::reverse(words.begin(), words.end()); /* CLI11 takes them from the end */
        app.parse(words);
    } catch (const CLI::CallForHelp &) {
        const command *chosen = chosen_command(app, commands);
        return {nullptr, chosen != nullptr ? help_text(*chosen, common) : tool_help(commands, common)};
    } catch (const CLI::CallForVersion &) {
        return {nullptr, fmt::format("{} {}\n", running_tool().name, tool_version)};
    } catch (const CLI::ExtrasError &error) {
        const command *chosen = chosen_command(app, commands);
        const auto     rest = app.remaining(true);
        if (chosen == nullptr && !rest.empty() && !rest.front().starts_with('-')) {
            unknown_command(rest.front(), commands);
        }
        usage(error, chosen);
    } catch (const CLI::ParseError &error) {
        usage(error, chosen_command(app, commands));
    }
    const command *chosen = chosen_command(app, commands);
    if (chosen == nullptr) {
        throw failure(exit_usage, fmt::format("no command given (see {} --help)", running_tool().name));
    }
    return {chosen, {}};
}

} // namespace solvane::tools
