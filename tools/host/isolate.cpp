#include "isolate.h"

#include <cerrno>
#include <cstring>
#include <string_view>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "failure.h"

namespace solvane::tools {

namespace {

[[noreturn]] void child(int answer, const std::function<std::string()> &work)
{
    const struct rlimit none = {0, 0};
    ::setrlimit(RLIMIT_CORE, &none); /* its death is expected and leaves no core file */
    std::string text;
    try {
        text = work();
    } catch (...) {
        ::_exit(1);
    }
    std::string_view rest = text;
    while (!rest.empty()) {
        const ssize_t done = ::write(answer, rest.data(), rest.size());
        if (done < 0 && errno != EINTR) {
            ::_exit(1);
        }
        rest.remove_prefix(done > 0 ? static_cast<std::size_t>(done) : 0);
    }
    ::_exit(0);
}

std::string read_all(int descriptor)
{
    std::string out;
    char        block[4096];
    ssize_t     got = 0;
    while ((got = ::read(descriptor, block, sizeof block)) > 0 || (got < 0 && errno == EINTR)) {
        out.append(block, got > 0 ? static_cast<std::size_t>(got) : 0);
    }
    return out;
}

} // namespace

std::optional<std::string> in_isolation(const std::function<std::string()> &work)
{
    int ends[2];
    if (::pipe(ends) != 0) {
        throw failure(exit_cannot_open, std::string("no pipe: ") + std::strerror(errno));
    }
    const pid_t process = ::fork();
    if (process < 0) {
        throw failure(exit_cannot_open, std::string("no child process: ") + std::strerror(errno));
    }
    if (process == 0) {
        ::close(ends[0]);
        child(ends[1], work);
    }
    ::close(ends[1]);
    std::string text = read_all(ends[0]);
    ::close(ends[0]);
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? std::optional(std::move(text)) : std::nullopt;
}

} // namespace solvane::tools
