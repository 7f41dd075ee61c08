#include <fmt/format.h>

#include "commands.h"
#include "failure.h"
#include "peer_message.h"
#include "capture.h"
#include "recording.h"
#include "script.h"
#include "session.h"
#include "times.h"
#include "trace_line.h"
#include "upper_pdu.h"

namespace solvane::tools {

namespace {

constexpr std::int64_t second = 1'000'000'000;

struct convert_options {
    std::string                  file;
    std::string                  read;
    std::string                  write;
    std::optional<std::uint64_t> count;
    bool                         decoded = false;
};

class script_output {
public:
    explicit script_output(session &work) : work_(work) {}

    void write(const packet &what)
    {
        if (!started_ && what.time) {
            started_ = true;
            start_ = *what.time / second * second;
            work_.line("start " + absolute_time(start_));
        }
        work_.line(script_line(what, start_, &work_.started()));
    }

private:
    session     &work_;
    bool         started_ = false;
    std::int64_t start_ = 0;
};

int run(session &work, const convert_options &options)
{
    const std::string path = !options.read.empty() ? options.read : options.file.empty() ? "-" : options.file;
    if (options.decoded && options.write.empty()) {
        throw failure(exit_usage, "--decoded goes with -w: a script holds packets only");
    }
    const auto        source = open_recording(path, [&work]() -> const plugin & { return work.started(); });
    script_output     script(work);
    std::optional<recording_writer> capture;
    if (!options.write.empty()) {
        work.out.open(options.write);
        capture.emplace(recording_to([&work](std::string_view block) { work.out.write(block); }, work));
    }
    for (std::uint64_t done = 0; !options.count || done < *options.count;) {
        const auto next = source->next();
        if (!next) {
            break;
        }
        if (!next->complaint.empty()) {
            work.finding(fmt::format("packet {}: {}", next->number, next->complaint));
        } else if (capture) {
            done += capture->write(*next) ? 1 : 0;
            if (const auto record = options.decoded ? decoded_record(work, *next) : std::nullopt) {
                capture->write_decoded(*next, *record);
            }
            work.out.end_record();
        } else if (next->kind != packet_kind::other) {
            script.write(*next);
            ++done;
        }
    }
    return work.result();
}

} // namespace

command convert_command()
{
    const auto options = std::make_shared<convert_options>();
    return {
        "convert",
        "a recording from one form to another: text script, pcapng, .logel",
        "Without -w the recording is written as a text script, which reads and diffs well and can be converted back.\n"
        "A script names traces as MODULE+n or file:line; docs/recordings.md tells the rest.",
        {{"convert run.txt -w run.pcapng", "makes a recording of a script"},
         {"convert run.pcapng --decoded -w shown.pcapng", "adds traces and messages for Wireshark's dissectors"},
         {"convert run.pcapng", "shows a recording as a script"},
         {"convert mssim_05_14_03_59_007.logel", "what a host sent"}},
        {{"FILE", "the recording, - for standard input", &options->file, false, completes::file}},
        {{"-r,--read", "FILE", "the same as FILE", &options->read, {}, completes::file},
         {"-w,--write", "FILE", "write pcapng there; - is standard output", &options->write, {}, completes::file},
         {"--decoded", "", "also write traces and messages as records that Wireshark dissects", &options->decoded},
         {"-c,--count", "COUNT", "end after so many packets", &options->count}},
        [options](session &work) { return run(work, *options); },
    };
}

} // namespace solvane::tools
