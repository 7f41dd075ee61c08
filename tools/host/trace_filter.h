// Which traces are wanted: by module, id, source file and text, each with a negated form.  The same options serve
// recordings and the statement table.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "command.h"
#include "plugin.h"

namespace solvane::tools {

/// The words given for each filter; a trace passes a filter when one of them fits, its negation when none does.
struct trace_filter_words {
    std::vector<std::string> modules, not_modules;
    std::vector<std::string> files, not_files;
    std::vector<std::string> ids, not_ids;
    std::vector<std::string> texts, not_texts;
};

/// What a filter looks at; what is no trace has no id, and may have several modules or none.
struct filter_subject {
    std::optional<std::uint32_t>  id;
    std::vector<std::string_view> modules;
    std::string_view              file;
    std::string_view              text;
};

/// The rows of an option table that fill `into`.
std::vector<option_spec> filter_options(trace_filter_words &into);

class trace_filter {
public:
    /// `more` are names of modules beside those of the trace table.  Throws `failure`: exit_usage for a word that
    /// makes no sense, exit_findings for an unknown module.
    trace_filter(const trace_filter_words &words, const plugin &loaded, const std::vector<std::string> &more = {});

    bool passes(const filter_subject &what) const;

private:
    struct parts; ///< the words made ready
    std::shared_ptr<const parts> parts_;
};

} // namespace solvane::tools
