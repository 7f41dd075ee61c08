#include <algorithm>
#include <cctype>

#include <fmt/format.h>

#include "command.h"
#include "failure.h"
#include "session.h"

namespace solvane::tools {

namespace {

/* Text for roff: a backslash and a hyphen are written \e and \-, a dot or quote must not begin a line. */
std::string roff(std::string_view text)
{
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool first = i == 0 || text[i - 1] == '\n';
        if (first && (text[i] == '.' || text[i] == '\'')) {
            out += "\\&";
        }
        if (text[i] == '\\') {
            out += "\\e";
        } else if (text[i] == '-') {
            out += "\\-";
        } else {
            out += text[i];
        }
    }
    return out;
}

std::string option_entries(const std::vector<option_spec> &options)
{
    std::string out;
    for (const auto &option : options) {
        std::string names = option.names;
        for (std::size_t at = names.find(','); at != std::string::npos; at = names.find(',', at + 2)) {
            names.replace(at, 1, ", ");
        }
        out += fmt::format(".TP\n.BR \"{}\"{}\n{}\n", roff(names),
                           option.value.empty() ? "" : fmt::format(" \" {}\"", roff(option.value)), roff(option.help));
    }
    return out;
}

std::string command_entry(const command &each)
{
    std::string out = fmt::format(".SS {}\n{}.\n", roff(each.name), roff(each.summary));
    out += each.details.empty() ? "" : fmt::format(".PP\n{}\n", roff(each.details));
    for (const auto &argument : each.arguments) {
        out += fmt::format(".TP\n.I {}\n{}\n", roff(argument.name), roff(argument.help));
    }
    out += option_entries(each.options);
    for (const auto &example : each.examples) {
        out += fmt::format(".PP\n.EX\n{} {}\n.EE\n.RS 4\n{}\n.RE\n", roff(running_tool().name), roff(example.line),
                           roff(example.says));
    }
    return out;
}

std::string rows_of(const char *title, const std::vector<explained> &rows)
{
    std::string out = fmt::format(".SH {}\n", title);
    for (const auto &[name, says] : rows) {
        out += fmt::format(".TP\n.B {}\n{}\n", name, roff(says));
    }
    return out;
}

int run(session &work)
{
    common_settings   settings;
    const tool_spec  &tool = running_tool();
    const std::string name = roff(tool.name);
    std::string       title = name;
    std::transform(title.begin(), title.end(), title.begin(),
                   [](char c) { return static_cast<char>(std::toupper(c)); });
    std::string out =
        fmt::format(".TH {} 1 \"\" \"{} {}\" \"User Commands\"\n.SH NAME\n{} \\- {}\n.SH SYNOPSIS\n.B {}\n{}"
                    "[\\fIarguments\\fR] [\\fIoptions\\fR]\n.SH COMMANDS\n",
                    title, name, roff(tool_version), name, roff(tool.summary), name,
                    !tool.usual.empty() ? "[\\fIcommand\\fR]\n" : ".I command\n");
    for (const auto &each : tool.commands()) {
        out += command_entry(each);
    }
    work.out.write(out + ".SH COMMON OPTIONS\n" + option_entries(tool.common(settings)) +
                   rows_of("ENVIRONMENT", tool.environment) + rows_of("EXIT STATUS", tool.exit_codes));
    return exit_done;
}

} // namespace

command man_command()
{
    return {
        "man",
        "the manual page, for man -l",
        "",
        {{"man | man -l -", "reads it"}},
        {},
        {},
        [](session &work) { return run(work); },
    };
}

} // namespace solvane::tools
