#include <fmt/format.h>

#include "command.h"
#include "failure.h"
#include "recording.h"
#include "script.h"
#include "session.h"
#include "times.h"

namespace solvane::host {

namespace {

constexpr std::int64_t second = 1'000'000'000;

struct convert_options {
    std::string                  file;
    std::string                  read;
    std::string                  write;
    std::optional<std::uint64_t> count;
};

/* The baseline stands in the section header, so that a reader years later knows which plug-in to take. */
std::string baseline_comment(session &work)
{
    const plugin &loaded = work.started();
    const auto    all = domains_of(loaded);
    const char   *baseline = all.empty() || all[0].row->uuid == nullptr ? "" : all[0].row->uuid;
    return fmt::format("plug-in interface {}, baseline {}", loaded.version->version_text, baseline);
}

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
    const auto        source = open_recording(path, [&work]() -> const plugin & { return work.started(); });
    script_output     script(work);
    std::optional<recording_writer> capture;
    if (!options.write.empty()) {
        work.out.open(options.write);
        capture.emplace([&work](std::string_view block) { work.out.write(block); },
                        fmt::format("{} {}", tool_name, tool_version), baseline_comment(work));
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
         {"convert run.pcapng", "shows a recording as a script"},
         {"convert mssim_05_14_03_59_007.logel", "what a host sent"}},
        {{"FILE", "the recording, - for standard input", &options->file, false, completes::file}},
        {{"-r,--read", "FILE", "the same as FILE", &options->read, {}, completes::file},
         {"-w,--write", "FILE", "write pcapng there; - is standard output", &options->write, {}, completes::file},
         {"-c,--count", "COUNT", "end after so many packets", &options->count}},
        [options](session &work) { return run(work, *options); },
    };
}

} // namespace solvane::host
