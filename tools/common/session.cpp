#include "session.h"

#include <unistd.h>

#include "failure.h"
#include "text.h"

namespace solvane::tools {

session::session(common_settings chosen, data_stream &stream)
    : settings(std::move(chosen)), out(stream), paint(wants_colour(settings.colour, stream.is_terminal()))
{
}

const plugin &session::loaded()
{
    if (!plugin_) {
        plugin_ = load_plugin(settings.library);
    }
    return *plugin_;
}

const plugin &session::started()
{
    if (!started_) {
        start_plugin(loaded());
        started_ = true;
        if (settings.verbose) {
            remark("loaded " + plugin_->path);
        }
    }
    return *plugin_;
}

const std::vector<domain> &session::domains()
{
    if (!domains_) {
        domains_ = chosen_domains(started(), settings.domain);
    }
    return *domains_;
}

void session::line(std::string_view text)
{
    out.write(text);
    out.write("\n");
    out.end_record();
}

void session::remark(const std::string &text) const
{
    if (!settings.quiet) {
        complain(text);
    }
}

void session::finding(const std::string &text)
{
    complain(text);
    found_ = true;
}

int session::result() const
{
    return found_ ? exit_findings : exit_done;
}

void complain(const std::string &text)
{
    const std::string line = std::string(running_tool().name) + ": " + one_line(text) + "\n";
    /* Nothing can be done when standard error does not take it. */
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line.data(), line.size());
}

} // namespace solvane::tools
