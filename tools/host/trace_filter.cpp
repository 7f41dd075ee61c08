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
void check_modules(const std::vector<std::string> &wanted, const tsc_db_info_struct &db,
                   const std::vector<std::string> &more)
{
    for (const auto &word : wanted) {
        suggestions near(word);
        bool        known = word.find_first_of("*?[") != std::string::npos;
        for (std::uint32_t i = 0; i < db.mod_num; ++i) {
            known = known || name_fits(db.mod_list[i].mod_name, word);
            near.offer(db.mod_list[i].mod_name);
        }
        for (const auto &name : more) {
            known = known || name_fits(name, word);
            near.offer(name);
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

trace_filter::trace_filter(const trace_filter_words &words, const plugin &loaded, const std::vector<std::string> &more)
    : parts_(std::make_shared<parts>(parts{words.modules, words.not_modules, words.files, words.not_files,
                                           ranges_of(words.ids), ranges_of(words.not_ids), patterns_of(words.texts),
                                           patterns_of(words.not_texts)}))
{
    check_modules(words.modules, *loaded.info->tsc_db_get(), more);
    check_modules(words.not_modules, *loaded.info->tsc_db_get(), more);
}

bool trace_filter::passes(const filter_subject &what) const
{
    const auto module_is = [&](const std::string &p) {
        return std::any_of(what.modules.begin(), what.modules.end(),
                           [&](std::string_view name) { return name_fits(name, p); });
    };
    const auto file_is = [&](const std::string &p) { return name_fits(what.file, p); };
    const auto in_range = [&](const id_range &r) { return what.id && r.first <= *what.id && *what.id <= r.last; };
    const auto found_by = [&](const std::regex &re) {
        return std::regex_search(what.text.begin(), what.text.end(), re);
    };
    return selects(parts_->ids, parts_->not_ids, in_range) &&
           selects(parts_->modules, parts_->not_modules, module_is) &&
           selects(parts_->files, parts_->not_files, file_is) &&
           selects(parts_->texts, parts_->not_texts, found_by);
}

} // namespace solvane::tools
