#include "byte_source.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include "failure.h"
#include "text.h"

namespace solvane::tools {

byte_source byte_source::open(const std::string &path)
{
    byte_source source(path == "-" ? "standard input" : path);
    source.descriptor_ = path == "-" ? ::dup(STDIN_FILENO) : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat about = {};
    if (source.descriptor_ < 0 || ::fstat(source.descriptor_, &about) != 0) {
        throw failure(exit_cannot_open, "cannot open " + source.name_ + ": " + std::strerror(errno));
    }
    if (S_ISDIR(about.st_mode)) {
        throw failure(exit_cannot_open, "cannot read " + source.name_ + ": it is a folder");
    }
    source.live_ = !S_ISREG(about.st_mode);
    return source;
}

byte_source byte_source::from_memory(std::string octets)
{
    byte_source source("memory");
    source.buffer_ = std::move(octets);
    return source;
}

byte_source::byte_source(byte_source &&other) noexcept
    : name_(std::move(other.name_)), descriptor_(std::exchange(other.descriptor_, -1)), live_(other.live_),
      buffer_(std::move(other.buffer_)), used_(other.used_), offset_(other.offset_)
{
}

byte_source::~byte_source()
{
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

bool byte_source::fill()
{
    if (descriptor_ < 0) {
        return false;
    }
    std::array<char, 65536> block;
    ssize_t                 got = 0;
    do {
        got = ::read(descriptor_, block.data(), block.size());
    } while (got < 0 && errno == EINTR);
    if (got < 0) {
        throw failure(exit_cannot_open, "cannot read " + name_ + ": " + std::strerror(errno));
    }
    buffer_.erase(0, used_);
    used_ = 0;
    buffer_.append(block.data(), static_cast<std::size_t>(got));
    return got > 0;
}

std::string_view byte_source::peek(std::size_t count)
{
    while (buffer_.size() - used_ < count && fill()) {
    }
    return std::string_view(buffer_).substr(used_, count);
}

std::string_view byte_source::take(std::size_t count)
{
    const std::string_view taken = peek(count);
    used_ += taken.size();
    offset_ += taken.size();
    return taken;
}

bool byte_source::line(std::string &into)
{
    std::size_t end = buffer_.find('\n', used_);
    while (end == std::string::npos) {
        const std::size_t seen = buffer_.size() - used_;
        if (!fill()) {
            break;
        }
        end = buffer_.find('\n', used_ + seen);
    }
    const bool        ended = end != std::string::npos;
    const std::size_t length = (ended ? end : buffer_.size()) - used_;
    if (!ended && length == 0) {
        return false;
    }
    into.assign(buffer_, used_, length);
    take(length + (ended ? 1 : 0));
    return true;
}

std::string whole(byte_source from)
{
    std::string out;
    while (true) {
        const auto block = from.take(65536);
        if (block.empty()) {
            return out;
        }
        out += block;
    }
}

std::vector<std::uint8_t> hex_words(const std::vector<std::string> &words, const char *what)
{
    std::string text;
    for (const auto &word : words) {
        text += word == "-" ? whole(byte_source::open("-")) : word + " ";
    }
    hex_result read = parse_hex(text);
    if (read.bad_column != 0) {
        throw failure(exit_usage, fmt::format("column {} of {}: {}", read.bad_column, what, read.complaint));
    }
    return std::move(read.value);
}

} // namespace solvane::tools
