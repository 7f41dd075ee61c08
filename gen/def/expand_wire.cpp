// Makes the members that a wire format implies: presence members, counts and capacities.
#include <algorithm>
#include <set>
#include <string>

#include <fmt/format.h>

#include "def/check_wire.h"

namespace solvane::gen::def {
namespace {

using what = wire_item_def::what;

struct expansion {
    record_def           &record;
    std::set<std::string> declared;  ///< by the definition itself
    std::set<std::string> made;

    void collect(const std::vector<wire_item_def> &items);
    void make(const char *type, const std::string &id, const place &where);
    void make_counts(const member_def &m, bool narrow);
    void add(wire_item_def &item);
    void walk(std::vector<wire_item_def> &items, bool narrow);
    void item(wire_item_def &i, bool narrow);
    void line(wire_item_def &i);
};

void expansion::collect(const std::vector<wire_item_def> &items)
{
    for (const wire_item_def &i : items) {
        if (i.member)
            declared.insert(i.member->decl.id.text);
        collect(i.items);
        collect(i.otherwise);
    }
}

void expansion::make(const char *type, const std::string &id, const place &where)
{
    if (declared.contains(id) || !made.insert(id).second)
        return;
    member_def m;
    m.type = {{type, where}, false, {}};
    m.decl.id = {id, where};
    record.members.push_back(std::move(m));
}

/// `narrow`: one octet bounds the length of what the array stands in, and so its elements.
void expansion::make_counts(const member_def &m, bool narrow)
{
    const std::string &id = m.decl.id.text;
    const bool         wide = !narrow && m.decl.pointers > 0;
    make(wide ? "uint16" : "uint8", "no_" + id, m.decl.id.where);
    if (m.decl.pointers > 0)
        make(wide ? "uint32" : "uint16", id + "_size", m.decl.id.where);
}

void expansion::add(wire_item_def &item)
{
    item.member_id = static_cast<std::uint32_t>(record.members.size());
    record.members.push_back(*item.member);
}

bool is_array(const member_def &m) { return m.decl.pointers > 0 || !m.decl.arrays.empty(); }

void expansion::line(wire_item_def &i)
{
    if (i.need != wire_item_def::presence::mandatory)
        make("opt_present", i.id.text + "_present", i.id.where);
    if (!i.member)
        return;
    const bool narrow = i.format == wire_format::length_value || i.format == wire_format::tag_length_value;
    const bool has_length = narrow || i.format == wire_format::length_value_e ||
                            i.format == wire_format::tag_length_value_e;
    if (is_array(*i.member) && (has_length || find_attribute(*i.member, attribute::what::bcd) != nullptr) &&
        find_attribute(*i.member, attribute::what::counted) == nullptr)
        make_counts(*i.member, narrow);
    add(i);
}

void expansion::item(wire_item_def &i, bool narrow)
{
    switch (i.kind) {
    case what::member: {
        const attribute *length = find_attribute(*i.member, attribute::what::length);
        const bool       byte = length != nullptr && length->value->number == 8;
        const bool       open = length != nullptr || find_attribute(*i.member, attribute::what::to_end) != nullptr ||
                          find_attribute(*i.member, attribute::what::chained) != nullptr ||
                          find_attribute(*i.member, attribute::what::linked) != nullptr ||
                          find_attribute(*i.member, attribute::what::bcd) != nullptr;
        if (is_array(*i.member) && open && find_attribute(*i.member, attribute::what::counted) == nullptr)
            make_counts(*i.member, length != nullptr ? byte : narrow);
        add(i);
        break;
    }
    case what::flag:
        if (!i.any)
            make("opt_present", i.id.text, i.id.where);
        break;
    case what::group:
        walk(i.items, narrow);
        walk(i.otherwise, narrow);
        break;
    case what::block: walk(i.items, i.width->number == 8); break;
    case what::within: walk(i.items, narrow); break;
    case what::line: line(i); break;
    case what::spare:
    case what::parts:
    case what::align: break;
    }
}

void expansion::walk(std::vector<wire_item_def> &items, bool narrow)
{
    for (wire_item_def &i : items)
        item(i, narrow);
}

} // namespace

const attribute *find_attribute(const member_def &m, attribute::what kind)
{
    const auto found = std::find_if(m.attributes.begin(), m.attributes.end(),
                                    [&](const attribute &a) { return a.kind == kind; });
    return found == m.attributes.end() ? nullptr : &*found;
}

void expand_wire(record_def &record)
{
    expansion e{record, {}, {}};
    e.collect(record.wire->items);
    const bool narrow = record.wire->length && record.wire->length->number == 8;
    e.walk(record.wire->items, narrow);
}

} // namespace solvane::gen::def
