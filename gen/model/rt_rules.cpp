// Lays the run-time type rules: what stands behind the untyped pointers of bit strings and lists.
#include <fmt/format.h>

#include "model/lay.h"

namespace solvane::gen {
namespace {

// Selectors of the members that the rules are about, as common/asn_types.def gives them.
constexpr std::uint16_t bits_selector = 2;   // AsnBits.bits
constexpr std::uint16_t first_selector = 4;  // AsnList.first
constexpr std::uint16_t next_selector = 6;   // AsnListNode.next
constexpr std::uint16_t data_selector = 7;   // AsnListNode.data

constexpr const char *rt_prefix = "TT_RTYPE_";
constexpr const char *octet_type = "asn_uint8";  // what an AsnBits points to

/// Ids count from 1: 0 stands for a rule that has a length function and no type.
std::uint32_t add_rt_type(domain &d, const std::string &name)
{
    const auto id = static_cast<std::uint32_t>(d.rt_types.size() + 1);
    d.rt_types.push_back({id, rt_prefix + name});
    return id;
}

void lay_family(const model &m, domain &d, const row_numbers &rows, const list_family &family)
{
    const auto type = [&](std::uint32_t alias_id) { return add_rt_type(d, m.aliases[alias_id].name); };
    const auto tag = [&](std::uint32_t alias_id) { return static_cast<std::uint16_t>(rows.alias_tags[alias_id]); };
    type(family.list_alias);
    type(family.node_alias);
    const std::uint32_t pointer = type(family.pointer_alias);
    const std::uint32_t element = type(family.element_alias);
    type(family.rt_node_alias);
    d.rt_rules.push_back({first_selector, tag(family.list_alias), false, pointer});
    d.rt_rules.push_back({next_selector, tag(family.node_alias), false, pointer});
    d.rt_rules.push_back({data_selector, tag(family.node_alias), false, element});
}

bool has_octet_type(const model &m, const row_numbers &rows)
{
    for (std::size_t id = 0; id < rows.types.size(); ++id) {
        if (rows.types[id] != no_index && m.aliases[id].name == octet_type)
            return true;
    }
    return false;
}

} // namespace

void lay_rt_rules(const model &m, domain &d, const row_numbers &rows, diagnostics &diag)
{
    if (rows.bits_record == no_index)
        return;
    const place &where = m.records[rows.bits_record].where;
    if (!has_octet_type(m, rows))
        diag.error(where, fmt::format("AsnBits wants a type '{}' beside it", octet_type));
    constexpr std::size_t most_lists = 0x7FFF; // two tags of 16 bits each, and that of AsnBits
    if (rows.lists.size() > most_lists - 1)
        diag.error(where, fmt::format("'{}' has more than {} lists", d.name, most_lists - 1));

    d.rt_rules.push_back({bits_selector, static_cast<std::uint16_t>(rows.record_tags[rows.bits_record]), true, 0});
    for (const std::uint32_t id : rows.lists)
        lay_family(m, d, rows, m.lists[id]);
    add_rt_type(d, octet_type);
}

} // namespace solvane::gen
