// Runs the front ends in their order: ASN.1 types become definitions, and all definitions the model.
#include "stages.h"

#include <unordered_map>
#include <utility>

#include "def/check.h"
#include "def/lower.h"
#include "model/per.h"

namespace solvane::gen {
namespace {

/// A codec that a row of the peer table names has entries.
void mark_entries(model &m)
{
    std::unordered_map<std::string, std::uint32_t> by_name;
    for (std::uint32_t id = 0; id < m.codecs.codecs.size(); ++id)
        by_name.emplace(m.codecs.codecs[id].name, id);
    for (const peer_family &family : m.peer_families) {
        for (const peer_row &row : family.rows) {
            if (row.of_schema)
                m.codecs.codecs[by_name.at(row.struct_name)].has_entry = true;
        }
    }
}

} // namespace

parsed_folder parse_all(diagnostics &diag, const std::vector<input_file> &inputs,
                        const std::vector<asn1::replacement> &schemas, const std::string &shown_root)
{
    parsed_folder folder;
    folder.definitions = def::parse_folder(diag, inputs, shown_root);
    folder.schemas = asn1::parse_schemas(diag, inputs, schemas, shown_root);
    return folder;
}

model lower_all(diagnostics &diag, parsed_folder folder)
{
    asn1::lowered schemas = asn1::lower_schemas(diag, folder.schemas);
    if (diag.failed())
        return {};
    for (const def::unit_def &unit : schemas.units)
        folder.definitions.units.push_back(unit);
    def::checked_folder checked = def::check(diag, std::move(folder.definitions));
    if (diag.failed())
        return {};
    model m = def::lower(std::move(checked));
    asn1::bind_units(schemas, m);
    per::find_facts(m.codecs);
    mark_entries(m);
    return m;
}

} // namespace solvane::gen
