#include "streams.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

#include "failure.h"

namespace solvane::tools {

namespace {

constexpr std::size_t buffer_limit = 64 * 1024;

const char *code_of(ink colour)
{
    switch (colour) {
    case ink::plain: return "";
    case ink::type: return "\033[36m";
    case ink::name: return "\033[1m";
    case ink::number: return "\033[33m";
    case ink::text: return "\033[32m";
    case ink::module: return "\033[35m";
    case ink::note: return "\033[2m";
    case ink::bad: return "\033[31m";
    }
    return "";
}

} // namespace

data_stream::~data_stream()
{
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

void data_stream::attach(int descriptor)
{
    descriptor_ = descriptor;
}

void data_stream::open(const std::string &path)
{
    if (path == "-") {
        return;
    }
    const int fresh = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fresh < 0) {
        throw failure(exit_cannot_open, "cannot write " + path + ": " + std::strerror(errno));
    }
    flush();
    ::close(descriptor_);
    descriptor_ = fresh;
}

void data_stream::write(std::string_view text)
{
    buffer_ += text;
    if (buffer_.size() >= buffer_limit) {
        flush();
    }
}

void data_stream::end_record()
{
    if (line_flush_) {
        flush();
    }
}

void data_stream::flush()
{
    /* Emptied first: after a failure nothing is written twice. */
    const std::string waiting = std::move(buffer_);
    buffer_.clear();
    put(waiting);
}

void data_stream::put(std::string_view text)
{
    while (!text.empty()) {
        const ssize_t done = ::write(descriptor_, text.data(), text.size());
        if (done >= 0) {
            text.remove_prefix(static_cast<std::size_t>(done));
        } else if (errno == EPIPE) {
            throw closed_pipe();
        } else if (errno != EINTR) {
            throw failure(exit_cannot_open, std::string("cannot write: ") + std::strerror(errno));
        }
    }
}

bool data_stream::is_terminal() const
{
    return descriptor_ >= 0 && ::isatty(descriptor_) == 1;
}

int keep_data_apart()
{
    std::signal(SIGPIPE, SIG_IGN);
    const int data = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    if (data < 0 || ::dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
        throw failure(exit_cannot_open, std::string("no standard output: ") + std::strerror(errno));
    }
    return data;
}

std::string painter::operator()(ink colour, std::string_view text) const
{
    if (!on_ || colour == ink::plain || text.empty()) {
        return std::string(text);
    }
    return std::string(code_of(colour)) + std::string(text) + "\033[0m";
}

std::string painter::padded(ink colour, std::string_view text, std::size_t width) const
{
    const std::size_t room = text.size() < width ? width - text.size() : 0;
    return (*this)(colour, text) + std::string(room, ' ');
}

bool wants_colour(const std::string &choice, bool terminal)
{
    if (choice != "auto") {
        return choice == "always";
    }
    const char *refused = std::getenv("NO_COLOR");
    const char *kind = std::getenv("TERM");
    return terminal && (refused == nullptr || *refused == '\0') &&
           (kind == nullptr || std::strcmp(kind, "dumb") != 0);
}

} // namespace solvane::tools
