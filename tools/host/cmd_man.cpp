#include <fmt/format.h>

#include "command.h"
#include "failure.h"
#include "session.h"

namespace solvane::host {

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
        out += fmt::format(".PP\n.EX\n{} {}\n.EE\n.RS 4\n{}\n.RE\n", tool_name, roff(example.line), roff(example.says));
    }
    return out;
}

int run(session &work)
{
    common_settings settings;
    std::string     out = fmt::format(
        ".TH SOLVANE\\-HOST 1 \"\" \"solvane\\-host {}\" \"User Commands\"\n.SH NAME\nsolvane\\-host \\- reads a modem "
            "stack's debug information out of its plug\\-in\n.SH SYNOPSIS\n.B solvane\\-host\n.I command\n"
            "[\\fIarguments\\fR] [\\fIoptions\\fR]\n.SH COMMANDS\n",
        roff(tool_version));
    for (const auto &each : all_commands()) {
        out += command_entry(each);
    }
    out += ".SH COMMON OPTIONS\n" + option_entries(common_options(settings));
    out += ".SH ENVIRONMENT\n.TP\n.B SOLVANE_LIB\nthe plug\\-in, where \\-\\-lib does not name it\n"
           ".TP\n.B NO_COLOR\nno colours\n";
    out += ".SH EXIT STATUS\n.TP\n.B 0\ndone\n.TP\n.B 1\ndone with findings: an unknown name, a bad frame, a difference\n"
           ".TP\n.B 2\nusage\n.TP\n.B 3\ncannot load or open\n.TP\n.B 4\nthe library offers another interface or is of "
           "another baseline\n.TP\n.B 6\nthe decoder died in isolation\n";
    work.out.write(out);
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

} // namespace solvane::host
