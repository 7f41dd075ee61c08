#include "run_tool.h"

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace solvane::tools::test {

namespace {

constexpr unsigned time_limit = 30; /* seconds */

[[noreturn]] void become_tool(const char *tool, const std::vector<std::string> &words, const int (&descriptors)[3],
                              const std::vector<std::string> &environment)
{
    for (int i = 0; i < 3; ++i) {
        ::dup2(descriptors[i], i);
        ::close(descriptors[i]);
    }
    ::alarm(time_limit);
    ::unsetenv("SOLVANE_LIB");
    ::unsetenv("NO_COLOR");
    for (const auto &word : environment) {
        const auto split = word.find('=');
        ::setenv(word.substr(0, split).c_str(), word.substr(split + 1).c_str(), 1);
    }
    std::vector<char *> argv = {const_cast<char *>(tool)};
    for (const auto &word : words) {
        argv.push_back(const_cast<char *>(word.c_str()));
    }
    argv.push_back(nullptr);
    ::execv(tool, argv.data());
    ::_exit(127);
}

int exit_code_of(int process)
{
    int status = 0;
    ::waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string content_of(const std::string &path)
{
    std::ostringstream out;
    out << std::ifstream(path, std::ios::binary).rdbuf();
    return out.str();
}

} // namespace

temporary_file::temporary_file(const std::string &content)
{
    char      name[] = "/tmp/solvane-host-test-XXXXXX";
    const int descriptor = ::mkstemp(name);
    if (descriptor < 0) {
        throw std::runtime_error("no temporary file");
    }
    ::close(descriptor);
    path_ = name;
    std::ofstream(path_, std::ios::binary) << content;
}

temporary_file::~temporary_file()
{
    ::unlink(path_.c_str());
}

std::string temporary_file::content() const
{
    return content_of(path_);
}

running_tool::running_tool(const char *tool, const std::vector<std::string> &words)
{
    char      name[] = "/tmp/solvane-host-test-XXXXXX";
    const int errors = ::mkstemp(name);
    int       output[2];
    if (errors < 0 || ::pipe2(output, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    error_path_ = name;
    process_ = ::fork();
    if (process_ == 0) {
        become_tool(tool, words, {::open("/dev/null", O_RDONLY), output[1], errors}, {});
    }
    ::close(output[1]);
    ::close(errors);
    output_ = output[0];
}

running_tool::~running_tool()
{
    if (process_ > 0) {
        end(SIGKILL);
    }
    ::unlink(error_path_.c_str());
}

std::string running_tool::line()
{
    char    piece[4096];
    ssize_t got = 1;
    while (buffer_.find('\n') == std::string::npos && (got = ::read(output_, piece, sizeof piece)) > 0) {
        buffer_.append(piece, static_cast<std::size_t>(got));
    }
    const std::size_t end = buffer_.find('\n');
    const std::string found = buffer_.substr(0, end);
    buffer_.erase(0, end == std::string::npos ? end : end + 1);
    return found;
}

tool_result running_tool::end(int signal)
{
    if (signal != 0) {
        ::kill(process_, signal);
    }
    tool_result result;
    char        piece[4096];
    ssize_t     got = 0;
    while ((got = ::read(output_, piece, sizeof piece)) > 0) {
        buffer_.append(piece, static_cast<std::size_t>(got));
    }
    ::close(output_);
    result.out = std::move(buffer_);
    result.code = exit_code_of(process_);
    result.err = content_of(error_path_);
    process_ = -1;
    return result;
}

tool_result run_tool(const std::vector<std::string> &words, const std::string &input,
                     const std::vector<std::string> &environment)
{
    const temporary_file in(input), out, err;
    const pid_t          child = ::fork();
    if (child == 0) {
        become_tool(SOLVANE_HOST_TOOL, words,
                    {::open(in.path().c_str(), O_RDONLY), ::open(out.path().c_str(), O_WRONLY | O_TRUNC),
                     ::open(err.path().c_str(), O_WRONLY | O_TRUNC)},
                    environment);
    }
    const int code = exit_code_of(child);
    return {code, out.content(), err.content()};
}

} // namespace solvane::tools::test
