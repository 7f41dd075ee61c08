#include <fmt/format.h>

#include "command.h"
#include "failure.h"
#include "session.h"

namespace solvane::tools {

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

/* "_solvane_host" of solvane-host. */
std::string function_name()
{
    std::string name = std::string("_") + running_tool().name;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

std::string bash_script(const std::vector<command> &commands, const std::vector<option_spec> &common)
{
    std::string names;
    std::string cases;
    std::string usual; /* words of the command that need not be named */
    for (const auto &each : commands) {
        const bool files = !each.arguments.empty() && each.arguments[0].by == completes::file;
        names += (names.empty() ? "" : " ") + each.name;
        cases +=
            fmt::format("        {}) words=\"{}\"; files={} ;;\n", each.name, words_of(each.options), files ? 1 : 0);
        usual = each.name == running_tool().usual ? " " + words_of(each.options) : usual;
    }
    const std::string without = fmt::format("words=\"{}{}\"", names, usual);
    return fmt::format(R"(# bash completion of {0}; put it into a file that your ~/.bashrc sources
{5}()
{{
    local current=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD-1]}} command= words= files=0 word
    local common="{1} -h --help -V --version"
    for word in "${{COMP_WORDS[@]:1:COMP_CWORD-1}}"; do
        case " {2} " in *" $word "*) command=$word; break ;; esac
    done
    case "$previous" in
{3}    esac
    case "$command" in
{4}        *) {6} ;;
    esac
    COMPREPLY=($(compgen -W "$words $common" -- "$current"))
    [ "$files" = 0 ] || COMPREPLY+=($(compgen -f -- "$current"))
}}
complete -F {5} {0}
)",
                       running_tool().name, words_of(common), names, value_cases(commands, common), cases,
                       function_name(), without);
}

int run(session &work, const shell_options &options)
{
    if (options.shell != "bash") {
        throw failure(exit_usage, fmt::format("no completion for {}: bash is known", options.shell));
    }
    common_settings settings;
    work.out.write(bash_script(running_tool().commands(), running_tool().common(settings)));
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
        {{fmt::format("completion bash > ~/.local/share/bash-completion/completions/{}", running_tool().name),
          "from the next shell on"}},
        {{"SHELL", "bash", &options->shell}},
        {},
        [options](session &work) { return run(work, *options); },
    };
}

} // namespace solvane::tools
