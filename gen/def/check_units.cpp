// Imports and the order of the units.
#include "def/check_units.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

#include <fmt/format.h>

namespace solvane::gen::def {
namespace {

bool is_domain(const folder_def &folder, const std::string &name)
{
    const std::vector<domain_def> &domains = folder.baseline->domains;
    return std::any_of(domains.begin(), domains.end(), [&](const domain_def &d) { return d.id.text == name; });
}

void check_folders(diagnostics &diag, const folder_def &folder)
{
    const auto check = [&](std::uint32_t file, const std::string &name) {
        if (name != common_folder && !is_domain(folder, name))
            diag.error({file, 0, 0}, fmt::format("baseline.def has no domain '{}'", name));
    };
    for (const unit_def &unit : folder.units)
        check(unit.file, unit.folder);
    for (const values_def &values : folder.values)
        check(values.file, values.folder);
    for (const auto &[name, messages] : folder.messages)
        check(messages.file, name);
}

void check_stems(diagnostics &diag, const folder_def &folder)
{
    std::map<std::string, const unit_def *> stems;
    for (const unit_def &unit : folder.units) {
        const auto [at, fresh] = stems.emplace(unit.stem, &unit);
        if (!fresh) {
            diag.conflict({unit.file, 0, 0}, fmt::format("the stem '{}' is taken", unit.stem),
                          {at->second->file, 0, 0}, "by this unit");
        }
    }
}

/// Number of the unit that an import names, in the order of the paths.
std::optional<std::uint32_t> imported_unit(diagnostics &diag, const folder_def &folder, const unit_def &unit,
                                           const name &path)
{
    const auto at = std::find_if(folder.units.begin(), folder.units.end(),
                                 [&](const unit_def &u) { return u.path == path.text; });
    if (at == folder.units.end()) {
        diag.error(path.where, fmt::format("there is no unit \"{}\" below the root of the definitions", path.text));
        return std::nullopt;
    }
    if (at->folder != common_folder && at->folder != unit.folder) {
        diag.error(path.where, fmt::format("\"{}\" belongs to the domain '{}': what domains share stands in common",
                                           path.text, at->folder));
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(at - folder.units.begin());
}

/// `import "lte/*.asn"` stands for all units that the domain's ASN.1 files become.
void expand_imports(diagnostics &diag, folder_def &folder, unit_def &unit)
{
    std::vector<name> imports;
    for (const name &path : unit.imports) {
        if (!path.text.ends_with("/*.asn")) {
            imports.push_back(path);
            continue;
        }
        const std::size_t before = imports.size();
        for (const unit_def &other : folder.units) {
            if (other.of_schema && other.folder + "/*.asn" == path.text)
                imports.push_back({other.path, path.where});
        }
        if (imports.size() == before)
            diag.error(path.where, fmt::format("there are no files \"{}\"", path.text));
    }
    unit.imports = std::move(imports);
}

void resolve_imports(diagnostics &diag, folder_def &folder)
{
    for (unit_def &unit : folder.units) {
        expand_imports(diag, folder, unit);
        for (const name &path : unit.imports) {
            if (const std::optional<std::uint32_t> id = imported_unit(diag, folder, unit, path))
                unit.import_ids.push_back(*id);
            else
                unit.import_ids.push_back(no_index);
        }
    }
}

/// Depth-first walk along the imports.
struct import_walk {
    diagnostics               &diag;
    const folder_def          &folder;
    std::vector<char>          state;  ///< 0 not reached, 1 on the way, 2 done
    std::vector<std::uint32_t> order;
    bool                       circle = false;

    void visit(std::uint32_t id)
    {
        if (state[id] == 2)
            return;
        state[id] = 1;
        const unit_def &unit = folder.units[id];
        for (std::size_t n = 0; n < unit.import_ids.size(); ++n) {
            const std::uint32_t next = unit.import_ids[n];
            if (next == no_index)
                continue;
            if (state[next] == 1) {
                diag.error(unit.imports[n].where, fmt::format("\"{}\" imports this unit, perhaps through others",
                                                              unit.imports[n].text));
                circle = true;
            } else {
                visit(next);
            }
        }
        state[id] = 2;
        order.push_back(id);
    }
};

/// Moves the units into `order` and rewrites the imports to the new numbers.
void renumber(folder_def &folder, const std::vector<std::uint32_t> &order)
{
    std::vector<std::uint32_t> new_id(order.size());
    for (std::uint32_t n = 0; n < order.size(); ++n)
        new_id[order[n]] = n;

    std::vector<unit_def> units;
    for (const std::uint32_t old : order) {
        units.push_back(std::move(folder.units[old]));
        unit_def &unit = units.back();
        unit.unit_id = new_id[old];
        std::erase(unit.import_ids, no_index);
        for (std::uint32_t &id : unit.import_ids)
            id = new_id[id];
    }
    folder.units = std::move(units);
}

void append_with_imports(const folder_def &folder, std::uint32_t id, std::vector<bool> &taken,
                         std::vector<std::uint32_t> &out)
{
    if (taken[id])
        return;
    taken[id] = true;
    for (const std::uint32_t import : folder.units[id].import_ids)
        append_with_imports(folder, import, taken, out);
    out.push_back(id);
}

} // namespace

bool order_units(diagnostics &diag, folder_def &folder)
{
    check_folders(diag, folder);
    check_stems(diag, folder);
    resolve_imports(diag, folder);
    import_walk walk{diag, folder, std::vector<char>(folder.units.size()), {}};
    for (std::uint32_t id = 0; id < folder.units.size(); ++id)
        walk.visit(id);
    if (walk.circle)
        return false;
    renumber(folder, walk.order);
    return true;
}

std::vector<std::uint32_t> units_of_domain(const folder_def &folder, const std::string &domain)
{
    std::vector<const unit_def *> own;
    for (const unit_def &unit : folder.units) {
        if (unit.folder == domain)
            own.push_back(&unit);
    }
    std::sort(own.begin(), own.end(), [](const unit_def *a, const unit_def *b) { return a->path < b->path; });

    std::vector<bool>          taken(folder.units.size());
    std::vector<std::uint32_t> out;
    for (const unit_def *unit : own)
        append_with_imports(folder, unit->unit_id, taken, out);
    return out;
}

} // namespace solvane::gen::def
