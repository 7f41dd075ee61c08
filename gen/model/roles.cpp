// Decides the roles of members.
#include "model/roles.h"

namespace solvane::gen {
namespace {

/// Which members serve another one.
struct services {
    std::vector<bool> counts, guards, selects;
};

services find_services(const std::vector<member_links> &links)
{
    services   s{std::vector<bool>(links.size()), std::vector<bool>(links.size()), std::vector<bool>(links.size())};
    const auto mark = [](std::vector<bool> &flags, std::uint32_t n) {
        if (n != no_index)
            flags[n] = true;
    };
    for (const member_links &l : links) {
        mark(s.counts, l.counted_by);
        mark(s.guards, l.present_if);
        mark(s.selects, l.selected_by);
    }
    return s;
}

/// ORDER roles: the first that fits.
role find_role(const model &m, const member &member, const member_links &links, const services &s, std::size_t n)
{
    const type_use type = look_through(m, member.type);
    if (member.bit_width != 0 && !s.guards[n] && !s.counts[n] && !s.selects[n] && links.present_if == no_index)
        return role::plain;
    if (s.guards[n])
        return role::presence;
    if (s.counts[n])
        return role::count;
    if (s.selects[n])
        return role::selector;
    if (!member.dims.empty())
        return member.dims.front().pointer ? role::pointer : role::array;
    if (type.base == kind::union_)
        return role::union_;
    if (links.present_if != no_index)
        return role::optional;
    return type.base == kind::structure ? role::structure : role::plain;
}

/// The member that `ref` of a structure's member leads to, by its role.
std::uint32_t find_link(role r, const member_links &links)
{
    switch (r) {
    case role::pointer: return links.counted_by;
    case role::array:
    case role::optional: return links.present_if;
    case role::union_: return links.selected_by;
    case role::plain:
    case role::count:
    case role::structure:
    case role::selector:
    case role::presence: break;
    }
    return no_index;
}

/// Number of a member among those of the dictionary.
std::uint32_t dictionary_index(const record &r, std::uint32_t n)
{
    std::uint32_t index = 0;
    for (std::uint32_t before = 0; before < n; ++before)
        index += r.members[before].hidden ? 0 : 1;
    return index;
}

} // namespace

type_use look_through(const model &m, type_use use)
{
    while (use.base == kind::type_name) {
        const alias &a = m.aliases[use.id];
        use = a.dims.empty() ? a.base : type_use{};
    }
    return use;
}

void assign_roles(const model &m, record &r, const std::vector<member_links> &links)
{
    const services s = find_services(links);
    for (std::size_t n = 0; n < r.members.size(); ++n) {
        member &member = r.members[n];
        if (member.hidden)
            continue;
        member.role = find_role(m, member, links[n], s, n);
        if (r.is_union) {
            member.ref = links[n].case_value;
            continue;
        }
        const std::uint32_t link = find_link(member.role, links[n]);
        member.ref = link == no_index ? no_ref : dictionary_index(r, link);
    }
}

} // namespace solvane::gen
