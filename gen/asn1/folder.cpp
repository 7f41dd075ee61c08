// Takes the ASN.1 files of a folder through the front end.
#include "asn1/folder.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

#include <fmt/format.h>

#include "asn1/check.h"
#include "asn1/family.h"
#include "asn1/parser.h"

namespace solvane::gen::asn1 {
namespace {

bool is_schema(const input_file &input) { return input.path.ends_with(".asn"); }

std::string folder_of(const input_file &input)
{
    return std::filesystem::path(input.path).parent_path().generic_string();
}

domain_schema &schema_of(std::vector<domain_schema> &schemas, const std::string &domain)
{
    const auto at = std::find_if(schemas.begin(), schemas.end(),
                                 [&](const domain_schema &d) { return d.domain == domain; });
    if (at != schemas.end())
        return *at;
    schemas.push_back({domain, {}, 0});
    return schemas.back();
}

/// Only what a replacement names is generated of its modules.
void choose_modules(diagnostics &diag, domain_schema &d, const replacement &by)
{
    if (by.modules.empty())
        return;
    for (module &m : d.modules.modules)
        m.is_generated = std::find(by.modules.begin(), by.modules.end(), m.id.text) != by.modules.end();
    for (const std::string &wanted : by.modules) {
        const bool found = std::any_of(d.modules.modules.begin(), d.modules.modules.end(),
                                       [&](const module &m) { return m.id.text == wanted; });
        if (!found && !d.modules.modules.empty())
            diag.error({d.modules.modules.front().file, 0, 0}, fmt::format("there is no module '{}'", wanted));
    }
}

} // namespace

bool replace_schemas(std::vector<input_file> &inputs, const std::vector<replacement> &by, std::string &unreadable)
{
    for (const replacement &r : by) {
        std::erase_if(inputs, [&](const input_file &i) { return is_schema(i) && folder_of(i) == r.domain; });
        std::optional<input_file> file = read_input(r.file);
        if (!file) {
            unreadable = r.file;
            return false;
        }
        file->path = r.domain + "/" + file->path + (is_schema(*file) ? "" : ".asn");
        inputs.push_back(std::move(*file));
    }
    std::sort(inputs.begin(), inputs.end(),
              [](const input_file &a, const input_file &b) { return a.path < b.path; });
    return true;
}

std::vector<domain_schema> parse_schemas(diagnostics &diag, const std::vector<input_file> &inputs,
                                         const std::vector<replacement> &by, const std::string &shown_root)
{
    std::vector<domain_schema> schemas;
    for (const input_file &input : inputs) {
        if (!is_schema(input))
            continue;
        const std::uint32_t file = diag.add_file(input.shown.empty() ? shown_root + input.path : input.shown,
                                                 input.text);
        if (family_of(folder_of(input)) == nullptr) {
            diag.error({file, 0, 0}, "the domain of this folder has no schema");
            continue;
        }
        domain_schema &d = schema_of(schemas, folder_of(input));
        d.octets += input.text.size();
        for (module &m : parse_modules(diag, file))
            d.modules.modules.push_back(std::move(m));
    }
    for (const replacement &r : by)
        choose_modules(diag, schema_of(schemas, r.domain), r);
    return schemas;
}

lowered lower_schemas(diagnostics &diag, std::vector<domain_schema> &schemas)
{
    lowered out;
    for (domain_schema &d : schemas)
        check(diag, d.modules);
    if (diag.failed())
        return out;
    for (domain_schema &d : schemas)
        lower(diag, d.modules, *family_of(d.domain), no_parts(d.octets), out);
    return out;
}

} // namespace solvane::gen::asn1
