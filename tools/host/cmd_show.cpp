#include <fmt/format.h>

#include "commands.h"
#include "failure.h"
#include "recording.h"
#include "session.h"
#include "stream_view.h"

namespace solvane::tools {

namespace {

struct show_options {
    std::string  file;
    std::string  read;
    view_options view;
};

void show_all(session &work, const show_options &options, stream_view &view)
{
    const std::string path = !options.read.empty() ? options.read : options.file.empty() ? "-" : options.file;
    const auto        source = open_recording(path, [&work]() -> const plugin & { return work.started(); });
    work.out.set_line_flush(work.settings.line_flush || source->is_live());
    while (!view.enough()) {
        const auto next = source->next();
        if (!next) {
            return;
        }
        view.take(*next);
    }
}

int run(session &work, const show_options &options)
{
    stream_view            view(work, options.view);
    std::optional<failure> damage; /* of the recording: what came before it is told all the same */
    try {
        show_all(work, options, view);
    } catch (const failure &found) {
        damage = found;
    }
    const int result = view.end();
    if (damage) {
        throw *damage;
    }
    return result;
}

} // namespace

command show_command()
{
    const auto options = std::make_shared<show_options>();
    return {
        "show",
        "a recording as it was seen live: traces, messages, prints, commands",
        "The same view and filters as `connect`.  A filter by module, text, id or file leaves what fits; records that\n"
        "have no such thing do not fit.  A packet that cannot be read costs a line and makes the exit code 1.",
        {{"show run.pcapng", "everything that was recorded"},
         {"show run.pcapng --only messages --bodies", "the messages, decoded"},
         {"show run.pcapng --module 'MOD_LTE*' --json", "what a module sent and received, for programs"}},
        {{"FILE", "the recording, - for standard input", &options->file, false, completes::file}},
        [&] {
            auto table = view_option_table(options->view);
            table.insert(table.begin(), {"-r,--read", "FILE", "the same as FILE", &options->read, {}, completes::file});
            return table;
        }(),
        [options](session &work) { return run(work, *options); },
    };
}

} // namespace solvane::tools
