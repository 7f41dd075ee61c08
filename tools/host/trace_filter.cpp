#include "trace_filter.h"

#include <algorithm>
#include <regex>

#include <fmt/format.h>
#include <fnmatch.h>

#include "failure.h"
#include "text.h"

namespace solvane::tools {

namespace {

bool name_fits(std::string_view name, const std::string &pattern)
{
    return fnmatch(lower_case(pattern).c_str(), lower_case(name).c_str(), 0) == 0;
}

/* A misspelt module would silently leave nothing, or everything; names with wildcards may fit none. */
void check_modules(const std::vector<std::string> &wanted, const tsc_db_info_struct &db)
{
    for (const auto &word : wanted) {
        suggestions near(word);
        bool        known = word.find_first_of("*?[") != std::string::npos;
        for (std::uint32_t i = 0; i < db.mod_num; ++i) {
            known = known || name_fits(db.mod_list[i].mod_name, word);
            near.offer(db.mod_list[i].mod_name);
        }
        if (!known) {
            throw failure(exit_findings, fmt::format("no trace module {}{}", word, near.text()));
        }
    }
}

struct id_range {
    std::uint64_t first;
    std::uint64_t last;
};

std::vector<id_range> ranges_of(const std::vector<std::string> &words)
{
    std::vector<id_range> out;
    for (const auto &word : words) {
        const std::size_t dash = word.find('-');
        const auto        first = parse_number(word.substr(0, dash));
        const auto        last = dash == std::string::npos ? first : parse_number(word.substr(dash + 1));
        if (!first || !last || *first > *last) {
            throw failure(exit_usage, fmt::format("{} is no range of ids", word));
        }
        out.push_back({*first, *last});
    }
    return out;
}

std::vector<std::regex> patterns_of(const std::vector<std::string> &words)
{
    std::vector<std::regex> out;
    for (const auto &word : words) {
        try {
            out.emplace_back(word, std::regex::ECMAScript | std::regex::optimize);
        } catch (const std::regex_error &error) {
            throw failure(exit_usage, fmt::format("{} is no regular expression: {}", word, error.what()));
        }
    }
    return out;
}

/* Nothing wanted lets everything pass; one unwanted that fits holds it back. */
template <class T, class F> bool selects(const std::vector<T> &wanted, const std::vector<T> &unwanted, F fits)
{
    return (wanted.empty() || std::any_of(wanted.begin(), wanted.end(), fits)) &&
           std::none_of(unwanted.begin(), unwanted.end(), fits);
}

} // namespace

std::vector<option_spec> filter_options(trace_filter_words &into)
{
    return {
        {"--module", "NAME", "only traces of this module, * and ? fit any text", &into.modules},
        {"--not-module", "NAME", "none of this module", &into.not_modules},
        {"--grep", "RE", "only texts that this regular expression finds", &into.texts},
        {"--not-grep", "RE", "none of these texts", &into.not_texts},
        {"--file", "NAME", "only traces of this source file", &into.files},
        {"--not-file", "NAME", "none of this source file", &into.not_files},
        {"--id", "ID[-ID]", "only this trace id or range of ids", &into.ids},
        {"--not-id", "ID[-ID]", "none of these ids", &into.not_ids},
    };
}

struct trace_filter::parts {
    std::vector<std::string> modules, not_modules;
    std::vector<std::string> files, not_files;
    std::vector<id_range>    ids, not_ids;
    std::vector<std::regex>  texts, not_texts;
};

trace_filter::trace_filter(const trace_filter_words &words, const plugin &loaded)
    : parts_(std::make_shared<parts>(parts{words.modules, words.not_modules, words.files, words.not_files,
                                           ranges_of(words.ids), ranges_of(words.not_ids), patterns_of(words.texts),
                                           patterns_of(words.not_texts)}))
{
    check_modules(words.modules, *loaded.info->tsc_db_get());
    check_modules(words.not_modules, *loaded.info->tsc_db_get());
}

bool trace_filter::passes(std::uint32_t id, std::string_view module, std::string_view file,
                          std::string_view text) const
{
    const auto name_is = [](std::string_view name) {
        return [name](const std::string &p) { return name_fits(name, p); };
    };
    const auto in_range = [id](const id_range &r) { return r.first <= id && id <= r.last; };
    const auto found_by = [text](const std::regex &re) { return std::regex_search(text.begin(), text.end(), re); };
    return selects(parts_->ids, parts_->not_ids, in_range) &&
           selects(parts_->modules, parts_->not_modules, name_is(module)) &&
           selects(parts_->files, parts_->not_files, name_is(file)) &&
           selects(parts_->texts, parts_->not_texts, found_by);
}

} // namespace solvane::tools
