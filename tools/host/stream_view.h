// What a target sends and is sent, a record a line: traces, classified messages, prints, other reports, commands, and
// what became of the connection.  The same view serves a live stream and a recording of it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "recording.h"
#include "session.h"
#include "trace_filter.h"

namespace solvane::tools {

struct view_options {
    std::string                  times = "relative";
    std::optional<std::uint64_t> count;
    std::optional<std::uint64_t> level;
    std::vector<std::string>     only;
    std::vector<std::string>     peers, not_peers;
    std::string                  way;
    bool                         bodies = false;
    bool                         isolate = false;
    trace_filter_words           filter;
};

/// The rows of an option table that fill `into`.
std::vector<option_spec> view_option_table(view_options &into);

class stream_view {
public:
    /// Starts the plug-in.  Throws `failure` for options that make no sense.
    stream_view(session &work, const view_options &options);
    ~stream_view();

    /// Shows one packet, unless the filters hold it back.  A packet that cannot be read costs a line and is a finding.
    void take(const packet &what);
    /// Whether as many records were shown as were wanted.
    bool enough() const;
    /// The last remark, and the exit code.
    int end();

private:
    struct state;
    std::unique_ptr<state> state_;
};

} // namespace solvane::tools
