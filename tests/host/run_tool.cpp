#include "run_tool.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace solvane::tools::test {

namespace {

[[noreturn]] void become_tool(const std::vector<std::string> &words, const std::string &in, const std::string &out,
                              const std::string &err, const std::vector<std::string> &environment)
{
    const int descriptors[] = {::open(in.c_str(), O_RDONLY), ::open(out.c_str(), O_WRONLY | O_TRUNC),
                               ::open(err.c_str(), O_WRONLY | O_TRUNC)};
    for (int i = 0; i < 3; ++i) {
        ::dup2(descriptors[i], i);
        ::close(descriptors[i]);
    }
    ::unsetenv("SOLVANE_LIB");
    ::unsetenv("NO_COLOR");
    for (const auto &word : environment) {
        const auto split = word.find('=');
        ::setenv(word.substr(0, split).c_str(), word.substr(split + 1).c_str(), 1);
    }
    std::vector<char *> argv = {const_cast<char *>(SOLVANE_HOST_TOOL)};
    for (const auto &word : words) {
        argv.push_back(const_cast<char *>(word.c_str()));
    }
    argv.push_back(nullptr);
    ::execv(SOLVANE_HOST_TOOL, argv.data());
    ::_exit(127);
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
    std::ostringstream out;
    out << std::ifstream(path_, std::ios::binary).rdbuf();
    return out.str();
}

tool_result run_tool(const std::vector<std::string> &words, const std::string &input,
                     const std::vector<std::string> &environment)
{
    const temporary_file in(input), out, err;
    const pid_t          child = ::fork();
    if (child == 0) {
        become_tool(words, in.path(), out.path(), err.path(), environment);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), out.content(), err.content()};
}

} // namespace solvane::tools::test
