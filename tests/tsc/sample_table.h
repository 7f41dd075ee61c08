// Trace tables made by a test: any ids, any modules, and the ways in which a maker may or may not tell where the
// modules start.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "tsc_search.h"

struct sample_table {
    std::deque<std::string>         texts; ///< what the rows point to
    std::vector<tsc_db_item_struct> items;
    std::vector<tsc_db_mod_struct>  modules;
    std::vector<std::uint32_t>      first_items;
    tsc_db_info_struct              db_info{};

    const char *keep(std::string text) { return texts.emplace_back(std::move(text)).c_str(); }

    void add_module(std::uint32_t start, const std::string &name)
    {
        first_items.push_back(static_cast<std::uint32_t>(items.size()));
        modules.push_back({start, keep(name), 1});
        items.push_back({start, keep(start == 0 ? "" : name), TSC_DIS_HEAD, "", 0});
    }

    void add_item(std::uint32_t id, const std::string &format, const char *file = "", std::int32_t line = 0)
    {
        items.push_back({id, keep(format), TSC_DIS_ARGS, file, line});
    }

    /// Adds the last item; to be called once all others are in.
    void close()
    {
        items.push_back({UINT32_C(0xFFFFFFFF), "", TSC_DIS_LAST, "", 0});
        db_info = {"tsc_db", items.data(), static_cast<std::uint32_t>(items.size()), modules.data(),
                   static_cast<std::uint32_t>(modules.size())};
    }

    [[nodiscard]] tsc_table view() const { return {&db_info, first_items.data()}; }
    [[nodiscard]] tsc_table view_without_positions() const { return {&db_info, nullptr}; }
};

/// The assertion that a table of fewer than two items, or none, ends in; a pattern for the text on standard error.
inline std::string assertion_text(const std::string &expression)
{
    return "^Assertion failed: " + expression +
           R"(, file \.\.\\\.\.\\MS_System\\MS_Ref\\source\\log_diag\\tsc\\tsc_libdb_api, line [1-9][0-9]*)";
}
