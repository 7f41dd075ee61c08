// The text form of a recording: a line a packet, made to be written by hand and to be read in a diff.
//
//     start 2026-05-14T08:30:00Z
//     0.000100 in  trace SDI+3 "3" "5"
//     0.000200 in  words SDI+3 3 5
//     0.000300 in  message src=1 dest=9 sap=49 msg=27 peer=0345
//     0.000400 out packet 21
//     12 00080003 00000003 330135
//
// docs/recordings.md tells the whole of it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "recording.h"

namespace solvane::tools {

class script_reader : public packet_source {
public:
    script_reader(byte_source from, plugin_provider names) : from_(std::move(from)), names_(std::move(names)) {}
    std::optional<packet> next() override;
    bool                  is_live() const override { return from_.is_live(); }

private:
    byte_source     from_;
    plugin_provider names_;
    std::int64_t    start_ = 0;
    std::uint64_t   line_ = 0;
    std::uint64_t   count_ = 0;
};

/// The line of a packet that `script_reader` turns into the same packet again; `start` is the time that its time is
/// told from.  With `names` traces are written as module and number in it.
std::string script_line(const packet &what, std::int64_t start, const plugin *names);

/// Whether a line can stand in a script: for finding out what a file is.
bool looks_like_script(std::string_view head);

} // namespace solvane::tools
