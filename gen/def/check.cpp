// The checker's driver.
#include "def/check.h"

#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "def/check_domains.h"
#include "def/check_traces.h"
#include "def/check_types.h"
#include "def/check_units.h"
#include "def/scope.h"

namespace solvane::gen::def {
namespace {

/// Each of the four rows at the head of baseline.def stands there once.
void check_baseline_head(diagnostics &diag, const baseline_def &baseline)
{
    const auto check = [&](std::string_view key, const std::vector<name> &rows) {
        if (rows.empty())
            diag.error({baseline.file, 0, 0}, fmt::format("there is no row '{}'", key));
        for (std::size_t n = 1; n < rows.size(); ++n)
            diag.conflict(rows[n].where, fmt::format("row '{}' stands here twice", key), rows[0].where, "the first");
    };
    check("baseline", baseline.baseline);
    check("version", baseline.version);
    check("variables", baseline.variables);
    check("entities", baseline.entities);

    for (std::size_t n = 0; n < baseline.domains.size(); ++n) {
        const name &id = baseline.domains[n].id;
        if (id.text == common_folder || id.text == trace_folder)
            diag.error(id.where, fmt::format("'{}' cannot be a domain", id.text));
        for (std::size_t before = 0; before < n; ++before) {
            const name &other = baseline.domains[before].id;
            if (other.text == id.text)
                diag.conflict(id.where, fmt::format("domain '{}' stands here twice", id.text), other.where,
                              "the first");
        }
    }
}

void miss_file(diagnostics &diag, const char *path)
{
    diag.error({diag.add_file(path, ""), 0, 0}, "the folder of the definitions has no such file");
}

/// Which units see which, in the order of the units: an import sees less than who imports it.
std::vector<std::vector<bool>> visibility(const folder_def &folder)
{
    const std::size_t              count = folder.units.size();
    std::vector<std::vector<bool>> visible(count, std::vector<bool>(count));
    for (std::size_t n = 0; n < count; ++n) {
        visible[n][n] = true;
        for (const std::uint32_t import : folder.units[n].import_ids) {
            for (std::size_t other = 0; other < count; ++other)
                visible[n][other] = visible[n][other] || visible[import][other];
        }
    }
    return visible;
}

void make_domains(diagnostics &diag, checked_folder &folder)
{
    for (const domain_def &def : folder.tree.baseline->domains) {
        checked_domain domain{def, {}};
        domain.out.name = def.id.text;
        domain.out.units = units_of_domain(folder.tree, def.id.text);
        const auto rows = folder.tree.messages.find(def.id.text);
        if (rows != folder.tree.messages.end())
            read_messages(diag, rows->second, domain.out);
        folder.domains.push_back(std::move(domain));
    }
}

} // namespace

checked_folder check(diagnostics &diag, folder_def tree)
{
    checked_folder folder;
    folder.tree = std::move(tree);
    if (!folder.tree.baseline) { // which folders are domains is unknown
        miss_file(diag, "baseline.def");
        return folder;
    }
    check_baseline_head(diag, *folder.tree.baseline);
    if (!order_units(diag, folder.tree))
        return folder;
    make_domains(diag, folder);
    if (folder.tree.trace_modules)
        folder.trace_modules = read_trace_modules(diag, *folder.tree.trace_modules);
    else
        miss_file(diag, "traces/modules.tsv");
    folder.statements = read_statements(diag, folder.tree.traces, folder.trace_modules);

    scope s{diag, folder.tree, visibility(folder.tree), {}, {}, {}, {}, 0, 0, 0};
    check_types(s, folder);
    check_entities(s, folder); // gives the domains their order
    for (checked_domain &domain : folder.domains) {
        check_domain(s, domain);
        check_values(s, domain);
    }
    check_variables(s, folder);
    check_peers(s, folder);
    return folder;
}

} // namespace solvane::gen::def
