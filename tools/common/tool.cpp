// The way of every tool from its command line to its exit code.
//
// The steps, whose order binds: our data is moved off descriptor 1 before any library is loaded, because a plug-in
// may print there.
#include "command.h"
#include "failure.h"
#include "session.h"
#include "streams.h"

namespace solvane::tools {

namespace {

const tool_spec *running = nullptr;

int run(int argc, char **argv, data_stream &out)
{
    common_settings settings;
    auto            commands = running->commands();
    auto            common = running->common(settings);
    const request   wanted = parse_command_line(argc, argv, commands, common);
    if (wanted.chosen == nullptr) {
        out.write(wanted.text);
        out.flush();
        return exit_done;
    }
    out.open(settings.output);
    out.set_line_flush(settings.line_flush || out.is_terminal());
    session work(settings, out);
    int     result = exit_done;
    try {
        result = wanted.chosen->run(work);
    } catch (const failure &) {
        out.flush(); /* what was found before counts */
        throw;
    }
    out.flush();
    return result;
}

} // namespace

const tool_spec &running_tool()
{
    static const tool_spec none = {"solvane", "", nullptr, nullptr, {}, {}};
    return running != nullptr ? *running : none;
}

int run_tool(const tool_spec &tool, int argc, char **argv)
{
    running = &tool;
    data_stream out;
    try {
        out.attach(keep_data_apart());
        return run(argc, argv, out);
    } catch (const closed_pipe &) {
        return exit_done;
    } catch (const failure &end) {
        complain(end.what());
        return end.code();
    } catch (const std::exception &error) {
        complain(error.what());
        return exit_cannot_open;
    }
}

} // namespace solvane::tools
