#include <map>

#include <fmt/format.h>

#include "commands.h"
#include "failure.h"
#include "json_out.h"
#include "recording.h"
#include "session.h"
#include "times.h"
#include "trace_filter.h"
#include "trace_print.h"

namespace solvane::tools {

namespace {

struct trace_options {
    std::string                  file;
    std::string                  read;
    std::string                  times = "relative";
    std::optional<std::uint64_t> count;
    bool                         stats = false;
    bool                         isolate = false;
    trace_filter_words           filter;
};

/// How often a statement came.
struct statement_count {
    std::uint64_t times = 0;
    std::string   module;
    std::string   file;
    std::int32_t  line = 0;
    std::string   format;
};

class trace_run {
public:
    trace_run(session &work, const trace_options &options)
        : work_(work), options_(options), times_(options.times), filter_(options.filter, work.started())
    {
    }

    int run();

private:
    void read(const std::string &path);
    void take(const packet &what);
    void bad_frame(const packet &what, const std::string &why);
    void show(const packet &what, const trace_line &line);
    void count(const trace_line &line);
    void show_counts();
    bool enough() const { return options_.count && shown_ >= *options_.count; }

    session                                 &work_;
    const trace_options                     &options_;
    time_format                              times_;
    trace_filter                             filter_;
    std::uint64_t                            shown_ = 0;
    std::uint64_t                            bad_ = 0;
    std::uint64_t                            unknown_ = 0;
    bool                                     died_ = false;
    std::map<std::uint32_t, statement_count> counts_;
};

void trace_run::bad_frame(const packet &what, const std::string &why)
{
    ++bad_;
    work_.note_finding();
    if (!options_.stats) {
        work_.line(work_.settings.json ? json_line(bad_packet_json("trace", what, why))
                                       : bad_packet_line(work_, times_.text(what.time), what, why));
    }
}

void trace_run::show(const packet &what, const trace_line &line)
{
    work_.line(work_.settings.json ? json_line(trace_json(what, line))
                                   : trace_text(work_, times_.text(what.time), line));
}

void trace_run::count(const trace_line &line)
{
    auto &entry = counts_[line.id];
    ++entry.times;
    entry.module = line.module;
    entry.file = line.file;
    entry.line = line.line;
    entry.format = line.format;
}

void trace_run::take(const packet &what)
{
    times_.pass(what.time);
    if (!what.complaint.empty()) {
        bad_frame(what, what.complaint);
        return;
    }
    const auto line = decode_trace(work_.started(), what, options_.isolate);
    if (!line) {
        return;
    }
    if (line->died) {
        died_ = true;
        bad_frame(what, fmt::format("the decoder died on trace {:#010x}", line->id));
        return;
    }
    if (!line->complaint.empty()) {
        bad_frame(what, line->complaint);
    }
    if (line->text.empty() && !line->known) {
        return;
    }
    if (!filter_.passes({line->id, {line->module}, line->file, line->text})) {
        return;
    }
    unknown_ += line->known ? 0 : 1;
    if (!line->known || line->wrong_count) {
        work_.note_finding();
    }
    ++shown_;
    if (options_.stats) {
        count(*line);
    } else {
        show(what, *line);
    }
}

void trace_run::show_counts()
{
    std::vector<std::pair<std::uint32_t, statement_count>> rows(counts_.begin(), counts_.end());
    std::stable_sort(rows.begin(), rows.end(),
                     [](const auto &one, const auto &other) { return one.second.times > other.second.times; });
    for (const auto &[id, row] : rows) {
        const std::string module = row.module.empty() ? fmt::format("{:#010x}", id) : row.module;
        if (work_.settings.json) {
            json out = json_object("trace-count");
            out["count"] = row.times;
            out["id"] = id;
            out["module"] = row.module;
            out["file"] = row.file;
            out["line"] = row.line;
            out["format"] = row.format;
            work_.line(json_line(out));
        } else {
            const std::string place = row.file.empty() ? "" : fmt::format("  ({}:{})", row.file, row.line);
            work_.line(work_.paint(ink::number, fmt::format("{:>8}", row.times)) + "  " +
                       work_.paint.padded(ink::module, module, module_column) + "  " + one_line(row.format) +
                       work_.paint(ink::note, place));
        }
    }
}

void trace_run::read(const std::string &path)
{
    const auto source = open_recording(path, [this]() -> const plugin & { return work_.started(); });
    if (source->is_live()) {
        work_.out.set_line_flush(true);
    }
    while (!enough()) {
        const auto next = source->next();
        if (!next) {
            return;
        }
        take(*next);
    }
}

int trace_run::run()
{
    std::optional<failure> damage; /* of the recording: what came before it is told all the same */
    try {
        read(!options_.read.empty() ? options_.read : options_.file.empty() ? "-" : options_.file);
    } catch (const failure &found) {
        damage = found;
    }
    show_counts();
    if (bad_ + unknown_ != 0) {
        work_.remark(fmt::format("{} shown, {} bad, {} of unknown id", shown_, bad_, unknown_));
    }
    if (damage) {
        throw *damage;
    }
    return died_ ? exit_decoder_died : work_.result();
}

} // namespace

command trace_command()
{
    const auto options = std::make_shared<trace_options>();
    command    out = {
        "trace",
        "recorded traces as text: [time] MODULE  text  (file.c:153)",
        "The recording may be pcapng, a text script or plain hex (a packet a line), or a .logel file; which one is\n"
        "found out.  Traces of both layouts are shown, other packets passed over.  A bad frame or an unknown id costs\n"
        "a line and makes the exit code 1.",
        {{"trace run.pcapng", "all traces of a recording"},
         {"trace run.pcapng --module SDI --not-grep waiting -t absolute", "some of them, with UTC times"},
         {"trace run.pcapng --stats", "how often each statement came"},
         {"trace - --json", "from standard input, as it comes"},
         {"trace run.pcapng -c 10", "the first ten"}},
        {{"FILE", "the recording, - for standard input", &options->file, false, completes::file}},
        {{"-r,--read", "FILE", "the same as FILE", &options->read, {}, completes::file},
         {"-c,--count", "COUNT", "end after so many traces", &options->count},
         {"-t,--time", "FORMAT", "relative, delta, absolute, epoch or none", &options->times},
         {"--stats", "", "count statements instead of showing traces", &options->stats},
         {"--isolate", "", "decode every trace in a child process", &options->isolate}},
        [options](session &work) { return trace_run(work, *options).run(); },
    };
    const auto filters = filter_options(options->filter);
    out.options.insert(out.options.end(), filters.begin(), filters.end());
    return out;
}

} // namespace solvane::tools
