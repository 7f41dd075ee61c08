#include <random>

#include <fmt/format.h>
#include <poll.h>

#include "agent.h"
#include "failure.h"
#include "interrupt.h"
#include "playback.h"
#include "port.h"

namespace solvane::tools {

namespace {

constexpr std::size_t usual_count = 500; /* packets of a made-up session */

const char *words_for(parting how)
{
    switch (how) {
    case parting::host_left: return "the host left";
    case parting::dropped: return "dropped the host";
    case parting::over: return "the session is over";
    case parting::interrupted: return "interrupted";
    }
    return "";
}

std::string own_baseline(const plugin &loaded)
{
    const auto all = domains_of(loaded);
    return all.empty() || all[0].row->uuid == nullptr ? "" : all[0].row->uuid;
}

std::uint32_t seed_of(const play_options &options)
{
    return options.seed ? static_cast<std::uint32_t>(*options.seed) : std::random_device()();
}

std::vector<timed_packet> session_of(session &work, const play_options &options, std::uint32_t seed)
{
    if (options.read.empty()) {
        return made_up_run(work.started(), static_cast<std::size_t>(options.count.value_or(usual_count)), seed);
    }
    auto run = recorded_run(work, options.read);
    if (options.count && *options.count < run.size()) {
        run.resize(static_cast<std::size_t>(*options.count));
    }
    if (run.empty()) {
        throw failure(exit_findings, options.read + " holds nothing that a target sent");
    }
    return run;
}

void wait_for_host(int listening, int interrupt)
{
    pollfd watched[] = {{listening, POLLIN, 0}, {interrupt, POLLIN, 0}};
    ::poll(watched, 2, -1);
}

/* Hosts one after the other, each with the session from its start. */
int serve(session &work, const play_options &options, const std::vector<timed_packet> &run, std::uint32_t seed,
          int listening, int interrupt)
{
    const target_layout layout(work.started(), options.alterations);
    target              answers(work.started(), layout,
                                options.baseline.empty() ? own_baseline(work.started()) : options.baseline);
    faults              damage(options.corrupt.value_or(0), seed);
    while (!interrupted()) {
        wait_for_host(listening, interrupt);
        const owned_descriptor connection = accept_host(listening);
        if (interrupted() || connection.get() < 0) {
            continue;
        }
        playback      now(work, options, run, answers, damage);
        const parting how = now.play(connection.get(), interrupt);
        work.remark(fmt::format("{} after {} packets{}", words_for(how), now.sent(),
                                options.corrupt ? fmt::format(", {} damaged so far", damage.damaged()) : ""));
        if (options.once && how != parting::interrupted) {
            return work.result();
        }
    }
    return exit_interrupted;
}

int run(session &work, const play_options &options)
{
    if (options.port.value_or(0) > 0xFFFF) {
        throw failure(exit_usage, fmt::format("{} is no port", *options.port));
    }
    const int           interrupt = watch_interrupts();
    const std::uint32_t seed = seed_of(options);
    const auto          packets = session_of(work, options, seed);
    const target_layout check(work.started(), options.alterations); /* complains before anyone connects */
    auto                port = static_cast<std::uint16_t>(options.port.value_or(0));
    const auto          listening = listen_on(port);
    if (options.read.empty() || options.corrupt) {
        work.remark(fmt::format("seed {}", seed));
    }
    work.line(fmt::format("listening on 127.0.0.1:{}", port));
    work.out.flush();
    return serve(work, options, packets, seed, listening.get(), interrupt);
}

} // namespace

command play_command()
{
    const auto options = std::make_shared<play_options>();
    return {
        "play",
        "stands in for a target's agent: plays a session to the host that connects and answers its commands",
        "The port goes to standard output in one line, `listening on 127.0.0.1:PORT`.  The session is a recording, or\n"
        "is made up from the plug-in's tables; every host gets it from its start, and an agent that has played it goes\n"
        "on answering.  Layouts are those of the plug-in but for the alterations.  Ends by Ctrl-C.",
        {{"", "a made-up session on a port that the system chooses"},
         {"-r run.pcapng --port 4711 --loop", "a recording, over and over"},
         {"--once --rate 1000", "ends with the session, a thousand packets a second"},
         {"--alter cc_setup_struct.cause=12 --baseline OTHER", "a target of another build"},
         {"--corrupt 20 --seed 7 --drop-after 100", "one frame in twenty damaged, broken off behind a hundred"}},
        {},
        {{"-r,--read", "FILE", "play this recording", &options->read, {}, completes::file},
         {"--port", "PORT", "listen there; 0, the usual, lets the system choose", &options->port},
         {"--rate", "N", "so many packets a second, 0 as fast as it goes; else as recorded", &options->rate},
         {"-c,--count", "COUNT", "packets of the session", &options->count},
         {"--loop", "", "begin the session anew when it is over", &options->loop},
         {"--once", "", "end with the first host or the session's end", &options->once},
         {"--drop-after", "N", "break the connection off in the middle of the frame behind N packets",
          &options->drop_after},
         {"--corrupt", "N", "damage about one frame in N", &options->corrupt},
         {"--seed", "SEED", "of made-up sessions and of damage", &options->seed},
         {"--alter", "S[.M]=N", "the target has structure S so large, or its member M there", &options->alterations},
         {"--baseline", "NAME", "the build that the target says it is of", &options->baseline}},
        [options](session &work) { return run(work, *options); },
    };
}

} // namespace solvane::tools
