#include <fmt/format.h>

#include "commands.h"
#include "failure.h"
#include "interrupt.h"
#include "live.h"
#include "stream_view.h"

namespace solvane::tools {

namespace {

struct connect_options {
    live_options live;
    view_options view;
    bool         silent = false;
};

int run(session &work, connect_options &options)
{
    options.live.ask = !options.silent;
    stream_view view(work, options.view);
    live_stream stream(work, options.live);
    work.out.set_line_flush(true);
    while (!view.enough()) {
        const auto next = stream.next();
        if (!next) {
            break;
        }
        view.take(*next);
    }
    const int result = view.end();
    if (interrupted()) {
        return exit_interrupted;
    }
    if (stream.died()) {
        return exit_decoder_died;
    }
    return result == exit_done && stream.mismatch() ? exit_mismatch : result;
}

} // namespace

command connect_command()
{
    const auto options = std::make_shared<connect_options>();
    return {
        "connect",
        "what a target sends, live: traces, classified messages, prints",
        "Opens the channels on the plug-in's list towards an agent and shows what comes, a record a line.  A\n"
        "connection that is lost is made anew, with a line for each; before the first one there is --patience.  The\n"
        "target is asked for its build, and another one than the plug-in's is told loudly.  Ends by Ctrl-C, -c or\n"
        "--once.  A recording made on the way is read back by `show`, with the same view.",
        {{"connect --port 4711", "everything, until Ctrl-C"},
         {"connect --port 4711 --module LRRC --grep cell -c 20", "twenty traces of a module that have that word"},
         {"connect --port 4711 --only messages --bodies --json", "messages, decoded, for programs"},
         {"connect --port 4711 --record run.pcapng --once -q", "records until the agent leaves"},
         {"connect --port 4711 --send 'MTA_TT_GET_VAR_REQ {\"from\":1,\"ral_info\":[{\"size\":4,\"ral\":[2,0]}]}'",
          "asks for a variable"}},
        {},
        [&] {
            auto table = live_option_table(options->live);
            table.push_back({"--send", "COMMAND", "send this once connected; can be given more than once",
                             &options->live.orders});
            table.push_back({"--once", "", "end when the connection is lost", &options->live.once});
            table.push_back({"--silent", "", "do not ask the target for its build", &options->silent});
            const auto more = view_option_table(options->view);
            table.insert(table.end(), more.begin(), more.end());
            return table;
        }(),
        [options](session &work) { return run(work, *options); },
    };
}

} // namespace solvane::tools
