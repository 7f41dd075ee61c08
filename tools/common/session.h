// What a command works with: the settings common to all, the stream for its data, and the plug-in, which is loaded
// when first asked for.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "command.h"
#include "dictionary.h"
#include "plugin.h"
#include "streams.h"

namespace solvane::tools {

class session {
public:
    session(common_settings settings, data_stream &out);

    const common_settings settings;
    data_stream          &out;
    const painter         paint;

    /// The plug-in as loaded, before `init_dll`.
    const plugin &loaded();
    /// The plug-in after `init_dll`.
    const plugin &started();
    /// The domains that --domain leaves.
    const std::vector<domain> &domains();

    /// Writes one record of data and ends it.
    void line(std::string_view text);
    /// A remark on standard error, unless --quiet.
    void remark(const std::string &text) const;
    /// A finding: a line on standard error, and exit code 1 in the end.
    void finding(const std::string &text);
    /// Only the exit code, where the data tells already what is wrong.
    void note_finding() { found_ = true; }
    int  result() const;

private:
    std::optional<plugin>              plugin_;
    bool                               started_ = false;
    std::optional<std::vector<domain>> domains_;
    bool                               found_ = false;
};

/// Writes `tool: text` to standard error in one piece.
void complain(const std::string &text);

} // namespace solvane::tools
