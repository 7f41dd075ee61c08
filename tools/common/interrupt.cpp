#include "interrupt.h"

#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

#include "failure.h"

namespace solvane::tools {

namespace {

int                   ends[2] = {-1, -1};
volatile sig_atomic_t came = 0;

void note(int)
{
    came = 1;
    [[maybe_unused]] const auto written = ::write(ends[1], "", 1);
}

} // namespace

int watch_interrupts()
{
    if (ends[0] < 0) {
        if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
            throw failure(exit_cannot_open, std::string("no pipe: ") + std::strerror(errno));
        }
        struct sigaction action = {};
        action.sa_handler = note;
        ::sigaction(SIGINT, &action, nullptr);
        ::sigaction(SIGTERM, &action, nullptr);
    }
    return ends[0];
}

bool interrupted()
{
    return came != 0;
}

} // namespace solvane::tools
