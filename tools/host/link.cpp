#include "link.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <fmt/format.h>
#include <netdb.h>
#include <arpa/inet.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "failure.h"
#include "link_child.h"

namespace solvane::tools {

namespace {

constexpr std::int64_t second = 1'000'000'000;
constexpr std::int64_t patience = second;               /* with a child that was asked to end */
constexpr std::size_t  longest_message = 128 * 1024;    /* octets; packets end at 100000 */
constexpr int          channel_room = 4 * 1024 * 1024;  /* octets that may wait for us */

constexpr const char      *peer_closed = "the agent closed the connection";
constexpr std::string_view closed_line = "closed by peer";
constexpr std::string_view expected_lines[] = {"connecting on ", "Failed to connect with ", "Connected on port "};

void own_process(const plugin &loaded, const endpoint &to, int channel, int speech)
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    std::signal(SIGINT, SIG_IGN); /* the parent decides when to end */
    std::signal(SIGTERM, SIG_IGN);
    ::dup2(speech, STDOUT_FILENO);
    ::dup2(speech, STDERR_FILENO);
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    serve_link(loaded, to, channel);
}

[[noreturn]] void cannot(const char *what)
{
    throw failure(exit_cannot_open, fmt::format("{}: {}", what, std::strerror(errno)));
}

int time_left(std::int64_t limit)
{
    const std::int64_t left = (limit - steady_now() + 999'999) / 1'000'000;
    return static_cast<int>(std::clamp<std::int64_t>(left, 0, 1'000'000));
}

} // namespace

std::int64_t steady_now()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

std::string endpoint::text() const
{
    return fmt::format("{}:{}", address, port);
}

endpoint find_endpoint(const std::string &host, std::uint64_t port)
{
    if (port == 0 || port > 0xFFFF) {
        throw failure(exit_usage, fmt::format("{} is no port of an agent", port));
    }
    addrinfo wanted = {};
    wanted.ai_family = AF_INET;
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    if (const int error = ::getaddrinfo(host.c_str(), nullptr, &wanted, &found); error != 0) {
        throw failure(exit_cannot_open, fmt::format("no host {}: {}", host, ::gai_strerror(error)));
    }
    char text[INET_ADDRSTRLEN] = "";
    ::inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in *>(found->ai_addr)->sin_addr, text, sizeof text);
    ::freeaddrinfo(found);
    return {text, static_cast<std::uint16_t>(port)};
}

agent_link::agent_link(const plugin &loaded, const endpoint &to) : to_(to)
{
    int channel[2];
    int speech[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, channel) != 0 || ::pipe2(speech, O_CLOEXEC) != 0) {
        cannot("no channel to a child process");
    }
    ::setsockopt(channel[1], SOL_SOCKET, SO_SNDBUF, &channel_room, sizeof channel_room);
    std::fflush(nullptr); /* nothing of ours is to be said twice */
    child_ = ::fork();
    if (child_ < 0) {
        cannot("no child process");
    }
    if (child_ == 0) {
        ::close(channel[0]);
        ::close(speech[0]);
        own_process(loaded, to, channel[1], speech[1]);
    }
    ::close(channel[1]);
    ::close(speech[1]);
    channel_ = channel[0];
    speech_ = speech[0];
    ::fcntl(speech_, F_SETFL, O_NONBLOCK);
}

agent_link::~agent_link()
{
    ::close(channel_);
    const std::int64_t limit = steady_now() + patience;
    pollfd             watched = {speech_, POLLIN, 0};
    char               rest[4096];
    /* The pipe ends with the child. */
    while (child_ > 0 && time_left(limit) > 0 && ::poll(&watched, 1, time_left(limit)) >= 0 &&
           ::read(speech_, rest, sizeof rest) != 0) {
    }
    ::close(speech_);
    if (child_ > 0) {
        ::kill(child_, SIGKILL); /* no harm to one that has ended: it is waited for below */
        ::waitpid(child_, nullptr, 0);
    }
}

void agent_link::send(const octets &packet)
{
    /* A child that has gone is told by `wait`. */
    [[maybe_unused]] const auto sent = ::send(channel_, packet.data(), packet.size(), MSG_NOSIGNAL);
}

/* The child has gone: by itself after `refused`, else because the library ended it. */
link_event agent_link::ended()
{
    while (from_library()) { /* its last words */
    }
    int status = 0;
    ::waitpid(child_, &status, 0);
    child_ = -1;
    over_ = true;
    if (parting_) {
        return {link_state::lost, {}, 0, peer_closed};
    }
    const std::string how = WIFSIGNALED(status) ? fmt::format("signal {}", WTERMSIG(status))
                                                : fmt::format("exit code {}", WEXITSTATUS(status));
    const std::string said = !line_.empty() ? line_ : last_said_;
    return {link_state::died, {}, 0,
            fmt::format("the library ended the connection's process, {}{}{}", how, said.empty() ? "" : ": ", said)};
}

std::optional<link_event> agent_link::from_channel()
{
    octets        message(longest_message);
    const ssize_t got = ::recv(channel_, message.data(), message.size(), MSG_DONTWAIT);
    if (got < 0 && (errno == EAGAIN || errno == EINTR)) {
        return std::nullopt;
    }
    link_head head;
    if (got < static_cast<ssize_t>(sizeof head)) {
        return ended();
    }
    std::memcpy(&head, message.data(), sizeof head);
    message.resize(static_cast<std::size_t>(got));
    message.erase(message.begin(), message.begin() + sizeof head);
    link_event out = {static_cast<link_state>(head.state), {}, head.time, {}};
    over_ = out.state == link_state::refused;
    if (out.state == link_state::packet) {
        out.content = std::move(message);
    } else {
        out.text.assign(message.begin(), message.end());
    }
    return out;
}

/* The next line that the library printed and that tells something new; that the peer has closed is kept for later. */
std::optional<link_event> agent_link::from_library()
{
    char          piece[4096];
    const ssize_t got = ::read(speech_, piece, sizeof piece);
    line_.append(piece, got > 0 ? static_cast<std::size_t>(got) : 0);
    for (std::size_t end = line_.find('\n'); end != std::string::npos; end = line_.find('\n')) {
        const std::string said = line_.substr(0, end);
        line_.erase(0, end + 1);
        const bool again = said == last_said_; /* a failing write tells so without end */
        last_said_ = said;
        const bool expected = std::any_of(std::begin(expected_lines), std::end(expected_lines),
                                          [&](std::string_view start) { return said.starts_with(start); });
        closed_ = closed_ || said.ends_with(closed_line);
        if (!again && !expected && !said.ends_with(closed_line)) {
            return link_event{link_state::said, {}, 0, said};
        }
    }
    return std::nullopt;
}

link_event agent_link::wait(std::int64_t limit, int interrupt)
{
    const std::int64_t parting_limit = steady_now() + patience;
    while (!over_) {
        pollfd watched[] = {{channel_, POLLIN, 0}, {speech_, POLLIN, 0}, {interrupt, POLLIN, 0}};
        ::poll(watched, 3, parting_ ? time_left(parting_limit) : closed_ ? 0 : time_left(limit));
        if (watched[0].revents != 0) {
            if (auto event = from_channel()) {
                return *event;
            }
        } else if (closed_ && !parting_) { /* all that came before is through; the child looks what is left over */
            parting_ = true;
            ::shutdown(channel_, SHUT_WR);
        }
        if ((watched[1].revents & POLLIN) != 0) {
            if (auto event = from_library()) {
                return *event;
            }
        }
        if (parting_ && time_left(parting_limit) == 0) {
            over_ = true;
            return {link_state::lost, {}, 0, peer_closed};
        }
        if (watched[2].revents != 0 || (!closed_ && time_left(limit) == 0)) {
            break;
        }
    }
    return {};
}

} // namespace solvane::tools
