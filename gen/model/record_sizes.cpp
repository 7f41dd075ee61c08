// Reads tables of record sizes.
#include "model/record_sizes.h"

#include <unordered_map>
#include <unordered_set>

#include <fmt/format.h>

#include "def/tsv.h"

namespace solvane::gen {
namespace {

enum : std::size_t { type_column, ilp32_column, lp64_column, module_column };

struct known_codecs {
    std::unordered_map<std::string, per::codec *> by_name;
    std::unordered_set<std::string>               modules;
};

known_codecs known(model &m)
{
    known_codecs k;
    for (per::codec &c : m.codecs.codecs) {
        k.by_name.emplace(c.name, &c);
        k.modules.insert(c.module);
    }
    return k;
}

std::uint32_t size_of(diagnostics &diag, const def::cell &cell)
{
    const std::optional<std::uint64_t> size = def::parse_number(cell.text);
    if (!size || *size == 0 || *size > UINT32_MAX)
        diag.error(cell.where, fmt::format("'{}' is no size", cell.text));
    return static_cast<std::uint32_t>(size.value_or(0));
}

} // namespace

void read_record_sizes(diagnostics &diag, std::uint32_t file, model &m)
{
    std::vector<std::string_view> columns = {"type", "ilp32", "lp64", "module"};
    const std::string            &text = diag.text(file);
    if (text.substr(0, text.find('\n')).ends_with("\tkind"))
        columns.push_back("kind");
    const known_codecs types = known(m);
    for (const std::vector<def::cell> &row : def::read_table(diag, file, diag.path(file), columns).rows) {
        if (!types.modules.contains(row[module_column].text))
            continue;
        const auto at = types.by_name.find(row[type_column].text);
        if (at == types.by_name.end()) {
            diag.error(row[type_column].where, fmt::format("module '{}' has no type '{}'", row[module_column].text,
                                                           row[type_column].text));
            continue;
        }
        at->second->ilp32_size = size_of(diag, row[ilp32_column]);
        at->second->lp64_size = size_of(diag, row[lp64_column]);
    }
}

} // namespace solvane::gen
