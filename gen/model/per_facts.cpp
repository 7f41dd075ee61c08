// Facts of the codecs: which can fail, which own memory, which always take as many bits; what is coded in place.
//
// A usage has the facts of its type, a type those of what it is made of.  Types stand behind those that they are made
// of, so that one walk in their order reaches the fixed point; the loop holds for any order.
#include "model/per.h"

namespace solvane::gen::per {
namespace {

bool is_made_of_others(shape s)
{
    return s == shape::sequence || s == shape::choice || s == shape::list || s == shape::array;
}

/// Facts of a type that is made of no other.
facts facts_of_plain(const usage &u)
{
    facts f;
    switch (u.shape) {
    case shape::boolean: f.constant_bits = 1; break;
    case shape::null: f.constant_bits = 0; break;
    case shape::integer:
        f.can_fail = !u.number.exact; // outside the range, or the end of the frame
        if (u.number.has_upper)
            f.constant_bits = u.number.width;
        break;
    case shape::enumerated: {
        const bool fills = u.index.root_count != 0 && u.index.root_count == UINT64_C(1) << u.index.width;
        f.can_fail = !fills;
        f.constant_bits = u.index.width + (u.index.extensible ? 1 : 0);
        break;
    }
    case shape::octets:
    case shape::bits:
        f.can_fail = true;
        f.owns_memory = true;
        break;
    case shape::unsupported:
    case shape::sequence:
    case shape::choice:
    case shape::list:
    case shape::array: break;
    }
    return f;
}

void add(facts &whole, const facts &part)
{
    whole.can_fail = whole.can_fail || part.can_fail;
    whole.owns_memory = whole.owns_memory || part.owns_memory;
    if (whole.constant_bits && part.constant_bits)
        *whole.constant_bits += *part.constant_bits;
    else
        whole.constant_bits.reset();
}

facts facts_of_sequence(const codec &c)
{
    facts f;
    f.can_fail = c.is_extensible; // a length that is not understood
    f.constant_bits = 0;
    for (const member &m : c.members) {
        add(f, m.type.facts);
        if (!m.flag.empty())
            f.constant_bits.reset();
    }
    if (c.is_extensible)
        f.constant_bits.reset();
    return f;
}

facts facts_of_choice(const plan &p, const codec &c)
{
    facts f;
    f.can_fail = c.type.index.extensible || (p.schemas[c.schema].choice_is_checked && !c.type.index.exact);
    std::optional<std::uint32_t> bits;
    bool                         same = !c.type.index.extensible;
    for (const alternative &a : c.alternatives) {
        f.can_fail = f.can_fail || a.type.facts.can_fail;
        f.owns_memory = f.owns_memory || a.type.facts.owns_memory;
        same = same && a.type.facts.constant_bits && (!bits || bits == a.type.facts.constant_bits);
        bits = a.type.facts.constant_bits;
    }
    if (same && bits)
        f.constant_bits = *bits + c.type.index.width;
    return f;
}

facts facts_of_list(const codec &c)
{
    facts        f;
    const usage &element = c.element.front();
    f.can_fail = element.facts.can_fail || !c.type.number.has_upper;
    f.owns_memory = element.facts.owns_memory || c.type.shape == shape::list;
    if (c.type.shape == shape::array && element.facts.constant_bits)
        f.constant_bits = *element.facts.constant_bits * static_cast<std::uint32_t>(c.type.number.upper);
    return f;
}

void set_usage(const plan &p, usage &u)
{
    u.in_place = !is_made_of_others(u.shape);
    u.facts = u.in_place ? facts_of_plain(u) : p.codecs[u.codec].type.facts;
}

void set_codec(const plan &p, codec &c)
{
    for (member &m : c.members)
        set_usage(p, m.type);
    for (alternative &a : c.alternatives)
        set_usage(p, a.type);
    for (usage &u : c.element)
        set_usage(p, u);
    if (c.is_alias || !is_made_of_others(c.type.shape))
        set_usage(p, c.type);
    else if (c.type.shape == shape::sequence)
        c.type.facts = facts_of_sequence(c);
    else if (c.type.shape == shape::choice)
        c.type.facts = facts_of_choice(p, c);
    else
        c.type.facts = facts_of_list(c);
    if (!c.is_alias)
        c.type.in_place = true;
}

bool same(const facts &a, const facts &b)
{
    return a.can_fail == b.can_fail && a.owns_memory == b.owns_memory && a.constant_bits == b.constant_bits;
}

} // namespace

void find_facts(plan &p)
{
    bool changed = true;
    while (changed) {
        changed = false;
        for (codec &c : p.codecs) {
            const facts before = c.type.facts;
            set_codec(p, c);
            changed = changed || !same(before, c.type.facts);
        }
    }
}

} // namespace solvane::gen::per
