// Loading and start-up of the plug-in as a host has them: dlopen, then init_dll, each in a process of its own.
//
// Start-up is once a process, so every round is a child that tells its figures through a pipe.  The counters are
// those of the last round: minor page faults of each step, and the private pages that the two leave dirty.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "solvane/solvane.h"

namespace {

struct figures {
    double load_seconds;
    double init_seconds;
    double load_faults;
    double init_faults;
    double dirty_kib;
};

double seconds_now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double faults_now()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_minflt);
}

/// Private pages of the plug-in's own mappings that were written to, in KiB.
double dirty_kib()
{
    std::FILE *maps = std::fopen("/proc/self/smaps", "r");
    if (maps == nullptr)
        return 0;
    char   line[512];
    bool   ours = false;
    double total = 0;
    while (std::fgets(line, sizeof line, maps) != nullptr) {
        long kib = 0;
        if (std::strstr(line, "libsolvane") != nullptr)
            ours = true;
        else if (std::strchr(line, '-') != nullptr && std::strstr(line, "kB") == nullptr)
            ours = ours && std::strstr(line, " 0 ") != nullptr && std::strchr(line, '/') == nullptr &&
                   std::strchr(line, '[') == nullptr; // the zeroed storage behind the file's last mapping
        else if (ours && std::sscanf(line, "Private_Dirty: %ld kB", &kib) == 1)
            total += static_cast<double>(kib);
    }
    std::fclose(maps);
    return total;
}

figures load_and_start()
{
    figures      result{};
    const double faults_before = faults_now();
    const double start = seconds_now();
    void *const  plugin = dlopen(SOLVANE_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    const double loaded = seconds_now();
    if (plugin == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        std::exit(1);
    }
    const auto   init = reinterpret_cast<void (*)()>(dlsym(plugin, "init_dll"));
    const double faults_loaded = faults_now();
    const double init_start = seconds_now();
    init();
    result.init_seconds = seconds_now() - init_start;
    result.load_seconds = loaded - start;
    result.load_faults = faults_loaded - faults_before;
    result.init_faults = faults_now() - faults_loaded;
    result.dirty_kib = dirty_kib();
    return result;
}

/// One round in a child.
bool measure(figures *result)
{
    int ends[2];
    if (pipe(ends) != 0)
        return false;
    const pid_t child = fork();
    if (child == 0) {
        const figures mine = load_and_start();
        const bool    told = write(ends[1], &mine, sizeof mine) == static_cast<ssize_t>(sizeof mine);
        _exit(told ? 0 : 1);
    }
    close(ends[1]);
    const bool read_all = read(ends[0], result, sizeof *result) == static_cast<ssize_t>(sizeof *result);
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return read_all && status == 0;
}

void load_and_init(benchmark::State &state)
{
    figures last{};
    double  least_load = 1e9;
    double  least_init = 1e9;
    for (auto _ : state) {
        if (!measure(&last)) {
            state.SkipWithError("a child failed");
            return;
        }
        state.SetIterationTime(last.load_seconds + last.init_seconds);
        least_load = std::min(least_load, last.load_seconds);
        least_init = std::min(least_init, last.init_seconds);
    }
    state.counters["dlopen_ms"] = least_load * 1e3;
    state.counters["init_ms"] = least_init * 1e3;
    state.counters["dlopen_faults"] = last.load_faults;
    state.counters["init_faults"] = last.init_faults;
    state.counters["dirty_KiB"] = last.dirty_kib;
}

BENCHMARK(load_and_init)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(50);

} // namespace
