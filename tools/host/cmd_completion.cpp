#include <fmt/format.h>

#include "command.h"
#include "failure.h"
#include "session.h"

namespace solvane::host {

namespace {

struct shell_options {
    std::string shell;
};

/* "-c,--count" as "-c --count". */
std::string spaced(std::string names)
{
    std::replace(names.begin(), names.end(), ',', ' ');
    return names;
}

/* As patterns of a bash case: "-c|--count". */
std::string alternatives(std::string names)
{
    std::replace(names.begin(), names.end(), ',', '|');
    return names;
}

std::string words_of(const std::vector<option_spec> &options)
{
    std::string out;
    for (const auto &option : options) {
        out.append(out.empty() ? "" : " ").append(spaced(option.names));
    }
    return out;
}

std::string choices_of(const option_spec &option)
{
    if (option.by == completes::domain_name) {
        return "infrastructure stack gsm umts signal lte ims nr"; /* ORDER domains */
    }
    std::string out;
    for (const auto &choice : option.choices) {
        out += (out.empty() ? "" : " ") + choice;
    }
    return out;
}

/* The cases of "$previous" for options whose value can be completed, each once. */
std::string value_cases(const std::vector<command> &commands, const std::vector<option_spec> &common)
{
    std::vector<option_spec> all = common;
    for (const auto &each : commands) {
        all.insert(all.end(), each.options.begin(), each.options.end());
    }
    std::string              out;
    std::vector<std::string> done;
    for (const auto &option : all) {
        const std::string choices = choices_of(option);
        const bool        known = std::find(done.begin(), done.end(), option.names) != done.end();
        if (known || option.value.empty()) {
            continue;
        }
        done.push_back(option.names);
        const std::string reply = option.by == completes::file ? "COMPREPLY=($(compgen -f -- \"$current\"))"
                                  : choices.empty()            ? "COMPREPLY=()"
                                  : fmt::format("COMPREPLY=($(compgen -W \"{}\" -- \"$current\"))", choices);
        out += fmt::format("        {}) {}; return ;;\n", alternatives(option.names), reply);
    }
    return out;
}

std::string bash_script(const std::vector<command> &commands, const std::vector<option_spec> &common)
{
    std::string names;
    std::string cases;
    for (const auto &each : commands) {
        const bool files = !each.arguments.empty() && each.arguments[0].by == completes::file;
        names += (names.empty() ? "" : " ") + each.name;
        cases +=
            fmt::format("        {}) words=\"{}\"; files={} ;;\n", each.name, words_of(each.options), files ? 1 : 0);
    }
    return fmt::format(R"(# bash completion of {0}; put it into a file that your ~/.bashrc sources
_solvane_host()
{{
    local current=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD-1]}} command= words= files=0 word
    local common="{1} -h --help -V --version"
    for word in "${{COMP_WORDS[@]:1:COMP_CWORD-1}}"; do
        case " {2} " in *" $word "*) command=$word; break ;; esac
    done
    case "$previous" in
{3}    esac
    case "$command" in
{4}        *) words="{2}" ;;
    esac
    COMPREPLY=($(compgen -W "$words $common" -- "$current"))
    [ "$files" = 0 ] || COMPREPLY+=($(compgen -f -- "$current"))
}}
complete -F _solvane_host {0}
)",
                       tool_name, words_of(common), names, value_cases(commands, common), cases);
}

int run(session &work, const shell_options &options)
{
    if (options.shell != "bash") {
        throw failure(exit_usage, fmt::format("no completion for {}: bash is known", options.shell));
    }
    common_settings settings;
    work.out.write(bash_script(all_commands(), common_options(settings)));
    return exit_done;
}

} // namespace

command completion_command()
{
    const auto options = std::make_shared<shell_options>();
    return {
        "completion",
        "a completion script for the shell",
        "",
        {{"completion bash > ~/.local/share/bash-completion/completions/solvane-host", "from the next shell on"}},
        {{"SHELL", "bash", &options->shell}},
        {},
        [options](session &work) { return run(work, *options); },
    };
}

} // namespace solvane::host
