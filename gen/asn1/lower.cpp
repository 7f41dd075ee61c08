// The types of a schema as units of definitions.
#include "asn1/lower.h"

#include <set>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include <fmt/format.h>

#include "asn1/layout.h"
#include "asn1/lower_codecs.h"

namespace solvane::gen::asn1 {
namespace {

constexpr std::size_t part_octets = 24 * 1024;

def::type_ref type_ref(const std::string &id, const place &where)
{
    def::type_ref ref;
    ref.written = {id, where};
    return ref;
}

def::declarator declared(const std::string &id, const place &where)
{
    def::declarator d;
    d.id = {id, where};
    return d;
}

def::member_def member_def(const std::string &type, const std::string &id, const place &where)
{
    def::member_def m;
    m.type = type_ref(type, where);
    m.decl = declared(id, where);
    return m;
}

// ------------------------------------------------------------------------------------------- definitions

/// A member that has a DEFAULT always holds a value: its presence field tells only whether it is the default, so the
/// dictionary does not let it guard the member.
def::record_def sequence_def(const per::codec &c)
{
    def::record_def r;
    r.id = {c.name, c.where};
    r.of_schema = true;
    for (const per::member &m : c.members) {
        if (!m.flag.empty())
            r.members.push_back(member_def("opt_present", m.flag, m.where));
        r.members.push_back(member_def(m.type.cpp_type, m.name, m.where));
        if (m.presence == per::presence::optional)
            r.members.back().attributes.push_back({def::attribute::what::optional, m.where, {}, {}, {}});
    }
    return r;
}

void add_choice(const per::codec &c, std::vector<def::definition_def> &out)
{
    const std::string union_name = c.name + "choiceunion";
    def::record_def   alternatives;
    alternatives.id = {union_name, c.where};
    alternatives.is_union = true;
    for (const per::alternative &a : c.alternatives)
        alternatives.members.push_back(member_def(a.type.cpp_type, a.name, a.where));
    def::record_def r;
    r.id = {c.name, c.where};
    r.members.push_back(member_def("uint32", "ChoiceId", c.where));
    r.members.push_back(member_def(union_name, "a", c.where));
    r.members.back().attributes.push_back(
        {def::attribute::what::selected, c.where, def::name{"ChoiceId", c.where}, {}, {}});
    out.push_back(std::move(alternatives));
    out.push_back(std::move(r));
}

/// Enumerators are told apart by the name of their type, which is put ahead of them.
def::enum_def enumeration_def(const per::codec &c, const std::unordered_set<std::string> &types)
{
    def::enum_def e;
    e.id = {c.name, c.where};
    for (const std::string &enumerator : c.enumerators) {
        std::string literal = c.name + "_" + cpp_name(enumerator);
        while (types.contains(literal))
            literal += "_";
        def::literal_def l;
        l.id = {std::move(literal), c.where};
        e.literals.push_back(std::move(l));
    }
    return e;
}

def::typedef_def typedef_def(const per::codec &c, const std::string &base)
{
    def::typedef_def t;
    t.type = type_ref(base, c.where);
    t.decl = declared(c.name, c.where);
    return t;
}

def::typedef_def array_def(const per::codec &c)
{
    def::typedef_def t = typedef_def(c, c.element.front().cpp_type);
    def::expression  count;
    count.number = static_cast<std::uint64_t>(c.type.number.upper);
    count.where = c.where;
    t.decl.arrays.push_back(std::move(count));
    return t;
}

void add_definition(const per::codec &c, const std::unordered_set<std::string> &types,
                    std::vector<def::definition_def> &out)
{
    if (c.is_alias) {
        out.push_back(typedef_def(c, c.type.cpp_type));
        return;
    }
    switch (c.type.shape) {
    case per::shape::boolean: out.push_back(typedef_def(c, "AsnBool")); break;
    case per::shape::integer: out.push_back(typedef_def(c, c.type.number.is_unsigned ? "UAsnInt" : "AsnInt")); break;
    case per::shape::enumerated: out.push_back(enumeration_def(c, types)); break;
    case per::shape::null:
    case per::shape::unsupported: out.push_back(typedef_def(c, "AsnNull")); break;
    case per::shape::octets: out.push_back(typedef_def(c, "AsnOcts")); break;
    case per::shape::bits: out.push_back(typedef_def(c, "AsnBits")); break;
    case per::shape::sequence: out.push_back(sequence_def(c)); break;
    case per::shape::choice: add_choice(c, out); break;
    case per::shape::list:
        out.push_back(def::list_def{{c.name, c.where}, type_ref(c.element.front().cpp_type, c.where)});
        break;
    case per::shape::array: out.push_back(array_def(c)); break;
    }
}

// ------------------------------------------------------------------------------------------- units

std::string part_name(std::uint32_t part) { return fmt::format("{:02}", part + 1); }

def::unit_def empty_unit(const family &f, std::uint32_t part, std::uint32_t file)
{
    def::unit_def u;
    u.file = file;
    u.folder = f.rules.name;
    u.stem = f.rules.name + "_rrc_" + part_name(part);
    u.path = fmt::format("{}/*.asn:{}", f.rules.name, part_name(part));
    u.of_schema = true;
    u.imports.push_back({std::string(value_types_unit), {file, 0, 0}});
    return u;
}

/// The usages that a codec's definition is made of.
template <typename Visit> void for_each_usage(const per::codec &c, Visit visit)
{
    if (c.is_alias)
        visit(c.type);
    for (const per::member &m : c.members)
        visit(m.type);
    for (const per::alternative &a : c.alternatives)
        visit(a.type);
    for (const per::usage &u : c.element)
        visit(u);
}

/// Cuts the items into parts of the same weight, in their order.
std::vector<std::uint32_t> parts_of(const layout &types, std::uint32_t parts)
{
    std::uint64_t total = 0, passed = 0;
    for (const item &i : types.items)
        total += i.weight;
    std::vector<std::uint32_t> part;
    for (const item &i : types.items) {
        part.push_back(static_cast<std::uint32_t>(passed * parts / total));
        passed += i.weight;
    }
    return part;
}

struct unit_maker {
    const family &f;
    lowered      &out;
    std::uint32_t first_codec, first_unit, schema_id;

    /// Which units, of this schema, the definitions of one refer to.
    void link(std::uint32_t unit)
    {
        std::set<std::uint32_t> called;
        per::unit_codecs       &codecs = out.plan.units[unit];
        for (const std::uint32_t id : codecs.codecs) {
            for_each_usage(out.plan.codecs[id], [&](const per::usage &u) {
                if (u.codec != no_index && out.plan.codecs[u.codec].unit != unit)
                    called.insert(out.plan.codecs[u.codec].unit);
            });
        }
        codecs.called.assign(called.begin(), called.end());
        for (const std::uint32_t other : called)
            out.units[unit].imports.push_back({out.units[other].path, {out.units[unit].file, 0, 0}});
    }
};

} // namespace

std::uint32_t no_parts(std::size_t octets) { return static_cast<std::uint32_t>(octets / part_octets + 1); }

void lower(diagnostics &diag, schema &s, const family &f, std::uint32_t parts, lowered &out)
{
    const layout types = lay_out(diag, s, f);
    if (diag.failed())
        return;
    unit_maker maker{f, out, static_cast<std::uint32_t>(out.plan.codecs.size()),
                     static_cast<std::uint32_t>(out.units.size()),
                     static_cast<std::uint32_t>(out.plan.schemas.size())};
    out.plan.schemas.push_back(f.rules);
    add_codecs(diag, s, f, types, maker.schema_id, out.plan);
    for (std::uint32_t part = 0; part < parts; ++part) {
        out.units.push_back(empty_unit(f, part, s.modules.front().file));
        out.plan.units.push_back({maker.first_unit + part, maker.schema_id, {}, {}});
    }

    std::unordered_set<std::string> names;
    for (const item &i : types.items)
        names.insert(i.name);
    const std::vector<std::uint32_t> part = parts_of(types, parts);
    for (std::uint32_t n = 0; n < types.items.size(); ++n) {
        const std::uint32_t unit = maker.first_unit + part[n];
        const std::uint32_t id = maker.first_codec + n;
        out.plan.codecs[id].unit = unit;
        out.plan.units[unit].codecs.push_back(id);
        add_definition(out.plan.codecs[id], names, out.units[unit].definitions);
    }
    for (std::uint32_t n = 0; n < parts; ++n)
        maker.link(maker.first_unit + n);
}

void bind_units(const lowered &from, model &m)
{
    std::unordered_map<std::string, std::uint32_t> by_stem;
    for (std::uint32_t id = 0; id < m.units.size(); ++id)
        by_stem.emplace(m.units[id].stem, id);
    const auto bound = [&](std::uint32_t unit) { return by_stem.at(from.units[unit].stem); };

    m.codecs = from.plan;
    for (per::codec &c : m.codecs.codecs)
        c.unit = bound(c.unit);
    for (per::unit_codecs &u : m.codecs.units) {
        u.unit = bound(u.unit);
        for (std::uint32_t &called : u.called)
            called = bound(called);
    }
}

} // namespace solvane::gen::asn1
