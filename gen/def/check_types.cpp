// Definitions: names, types and values.
#include "def/check_types.h"

#include <algorithm>
#include <array>
#include <limits>
#include <unordered_map>
#include <utility>

#include <fmt/format.h>

#include "def/check_members.h"
#include "def/check_wire.h"

namespace solvane::gen::def {
namespace {

constexpr std::int64_t int32_low = std::numeric_limits<std::int32_t>::min();
constexpr std::int64_t int32_high = std::numeric_limits<std::int32_t>::max();
constexpr std::int64_t uint32_high = std::numeric_limits<std::uint32_t>::max();
constexpr std::int64_t largest_array = 0xFFFF; // octets that an entry of `offsize` can tell

// ------------------------------------------------------------------------------------------- ids and names

void enter_type(scope &s, const unit_def &unit, const name &id, type_use use)
{
    check_word(s, id);
    const auto [at, fresh] = s.types.emplace(id.text, type_symbol{use, unit.unit_id, id.where, false});
    if (!fresh) {
        s.diag.conflict(id.where, fmt::format("type '{}' is defined twice", id.text), at->second.where,
                        "the other definition");
    }
}

std::uint32_t new_alias(scope &s)
{
    s.aliases.emplace_back();
    return static_cast<std::uint32_t>(s.aliases.size() - 1);
}

struct enter_definition {
    scope          &s;
    const unit_def &unit;

    void operator()(typedef_def &t) const
    {
        t.alias_id = new_alias(s);
        enter_type(s, unit, t.decl.id, {kind::type_name, t.alias_id});
    }

    void operator()(enum_def &e) const
    {
        e.enum_id = s.no_enums++;
        if (e.anonymous)
            e.alias_id = new_alias(s);
        enter_type(s, unit, e.id,
                   e.anonymous ? type_use{kind::type_name, e.alias_id} : type_use{kind::enumeration, e.enum_id});
    }

    void operator()(record_def &r) const
    {
        r.record_id = static_cast<std::uint32_t>(s.records.size());
        s.records.push_back(&r);
        enter_type(s, unit, r.id, {r.is_union ? kind::union_ : kind::structure, r.record_id});
    }

    void operator()(list_def &l) const
    {
        l.list_id = s.no_lists++;
        for (const char *prefix : list_prefixes) {
            const std::uint32_t id = new_alias(s);
            l.alias_id = l.alias_id == no_index ? id : l.alias_id;
            enter_type(s, unit, {prefix + l.id.text, l.id.where}, {kind::type_name, id});
        }
    }

    void operator()(constant_def &c) const { c.constant_id = s.no_constants++; }
};

// ------------------------------------------------------------------------------------------- the definitions

/// Walks the definitions of one unit.
struct check_definition {
    scope                &s;
    const checked_folder &tables;
    unit_def             &unit;

    const std::vector<bool> &sees() const { return s.visible[unit.unit_id]; }

    void enter_value(const name &id, std::int64_t number, bool evaluated) const
    {
        check_word(s, id);
        s.values.emplace(id.text, value_symbol{unit.unit_id, number, evaluated, id.where});
    }

    void mark_defined(const std::string &id) const { s.types.at(id).defined = true; }

    /// Resolves a type; `inside` is the structure that is being defined.
    bool resolve(type_ref &type, bool behind_pointer, const record_def *inside) const;
    void note_forward(const type_symbol &symbol, const record_def *inside) const;
    void measure(declarator &d) const;
    void check_member(member_def &m, const record_def &record) const;
    void check_literals(enum_def &e) const;
    void add_messages(enum_def &e) const;
    void add_trace_modules(enum_def &e) const;

    void operator()(typedef_def &t) const;
    void operator()(enum_def &e) const;
    void operator()(record_def &r) const;
    void operator()(list_def &l) const;
    void operator()(constant_def &c) const;
};

/// A structure that is pointed to ahead of its definition is declared ahead of it, once.
void check_definition::note_forward(const type_symbol &symbol, const record_def *inside) const
{
    const bool itself = inside != nullptr && inside->record_id == symbol.use.id;
    if (symbol.defined || itself)
        return;
    if (std::find(unit.forward_records.begin(), unit.forward_records.end(), symbol.use.id) ==
        unit.forward_records.end())
        unit.forward_records.push_back(symbol.use.id);
}

bool check_definition::resolve(type_ref &type, bool behind_pointer, const record_def *inside) const
{
    if (type.basic) {
        if (type.use.base == kind::nothing && !behind_pointer)
            s.diag.error(type.written.where, "void stands behind a pointer only");
        return true;
    }
    if (inside != nullptr && !behind_pointer && type.written.text == inside->id.text) {
        s.diag.error(type.written.where, fmt::format("'{}' contains itself", inside->id.text));
        return false;
    }
    const type_symbol *symbol = find_type(s, unit, type.written, behind_pointer);
    if (symbol == nullptr)
        return false;
    note_forward(*symbol, inside);
    type.use = symbol->use;
    return true;
}

void check_definition::measure(declarator &d) const
{
    for (const expression &size : d.arrays) {
        const std::optional<std::int64_t> count = evaluate(s, size, sees(), 1, largest_array, "the array size");
        d.dims.push_back({false, static_cast<std::uint32_t>(count.value_or(1))});
    }
    d.dims.insert(d.dims.end(), d.pointers, dimension{true, 0});
}

void check_definition::operator()(typedef_def &t) const
{
    resolve(t.type, t.decl.pointers > 0, nullptr);
    measure(t.decl);
    s.aliases[t.alias_id] = {t.type.use, t.decl.dims};
    mark_defined(t.decl.id.text);
}

void check_definition::operator()(constant_def &c) const
{
    c.number = evaluate(s, c.value, sees(), int32_low, uint32_high, "the constant").value_or(0);
    enter_value(c.id, c.number, true);
}

// ------------------------------------------------------------------------------------------- enumerations

void check_definition::check_literals(enum_def &e) const
{
    std::int64_t next = 0;
    bool         counts = true; // the literal before has a value
    for (literal_def &l : e.literals) {
        std::optional<std::int64_t> number = 0;
        if (l.value) {
            number = evaluate(s, *l.value, sees(), int32_low, int32_high, "the literal");
        } else if (l.evaluated) {
            number = next;
            if (!counts)
                s.diag.error(l.id.where, fmt::format("'{}' follows a literal that is not evaluated and needs a value "
                                                     "of its own", l.id.text));
            else if (next > int32_high)
                s.diag.error(l.id.where, fmt::format("the literal is {}, outside {} to {}", next, int32_low,
                                                     int32_high));
        }
        counts = l.evaluated;
        l.number = static_cast<std::int32_t>(number.value_or(0));
        next = std::int64_t{l.number} + 1;
        enter_value(l.id, l.number, l.evaluated);
    }
}

void check_definition::add_messages(enum_def &e) const
{
    const auto domain = std::find_if(tables.domains.begin(), tables.domains.end(),
                                     [&](const checked_domain &d) { return d.def.id.text == unit.folder; });
    const auto rows = s.folder.messages.find(unit.folder);
    if (domain == tables.domains.end() || rows == s.folder.messages.end()) {
        s.diag.error(e.id.where, fmt::format("'{}' has no messages.tsv", unit.folder));
        return;
    }
    for (std::size_t n = 0; n < domain->out.messages.size(); ++n) {
        const message_row &row = domain->out.messages[n];
        const place       &where = rows->second.rows[n][message_column::name].where;
        if (row.code > int32_high)
            s.diag.error(where, fmt::format("code {} is too large for a literal of '{}'", row.code, e.id.text));
        e.literals.push_back({{row.name, where}, true, std::nullopt, static_cast<std::int32_t>(row.code)});
    }
}

/// The module of row 0 has no name of its own among the literals.
void check_definition::add_trace_modules(enum_def &e) const
{
    for (std::size_t n = 0; n < tables.trace_modules.size(); ++n) {
        const std::string id = n == 0 ? "_TSC_SYSTEM" : "_TSC_MOD_" + tables.trace_modules[n];
        const place      &where = s.folder.trace_modules->rows[n][0].where;
        e.literals.push_back({{id, where}, true, std::nullopt, static_cast<std::int32_t>(n)});
    }
}

void check_definition::operator()(enum_def &e) const
{
    switch (e.from) {
    case enum_def::source::here: check_literals(e); break;
    case enum_def::source::messages: add_messages(e); break;
    case enum_def::source::trace_modules: add_trace_modules(e); break;
    }
    if (e.from != enum_def::source::here) {
        for (const literal_def &l : e.literals)
            enter_value(l.id, l.number, true);
    } else if (e.literals.empty()) {
        s.diag.error(e.id.where, fmt::format("'{}' has no literals", e.id.text));
    }
    if (e.anonymous)
        s.aliases[e.alias_id].base = {kind::enumeration, e.enum_id};
    mark_defined(e.id.text);
}

// ------------------------------------------------------------------------------------------- structures and unions

void check_definition::check_member(member_def &m, const record_def &record) const
{
    check_word(s, m.decl.id);
    const bool resolved = resolve(m.type, m.decl.pointers > 0, &record);
    measure(m.decl);
    if (!m.width || !resolved)
        return;
    const resolved_type base = look_through(s, m.type.use);
    const std::uint32_t octets = base.plain ? integer_size(base.use.base) : 0;
    if (octets == 0 || !m.decl.dims.empty()) {
        s.diag.error(m.decl.id.where, fmt::format("bit-field '{}' is no integer", m.decl.id.text));
        return;
    }
    const std::string what = fmt::format("the width of a bit-field of type '{}'", m.type.written.text);
    m.bit_width = static_cast<std::uint32_t>(evaluate(s, *m.width, sees(), 1, octets * 8, what).value_or(1));
}

void check_definition::operator()(record_def &r) const
{
    if (r.wire)
        expand_wire(r);
    if (r.members.empty() && !r.of_schema && !unit.declared_in)
        s.diag.error(r.id.where, fmt::format("'{}' has no members", r.id.text));
    std::unordered_map<std::string, place> names;
    for (member_def &m : r.members) {
        const auto [at, fresh] = names.emplace(m.decl.id.text, m.decl.id.where);
        if (!fresh) {
            s.diag.conflict(m.decl.id.where, fmt::format("'{}' has a member '{}' already", r.id.text, m.decl.id.text),
                            at->second, "the other one");
        }
        check_member(m, r);
    }
    check_attributes(s, unit, r);
    if (r.wire)
        check_wire(s, unit, r);
    mark_defined(r.id.text);
}

void check_definition::operator()(list_def &l) const
{
    type_ref list{{"AsnList", l.id.where}, false, {}};
    type_ref node{{"AsnListNode", l.id.where}, false, {}};
    type_ref bits{{"AsnBits", l.id.where}, false, {}};
    type_ref octet{{"asn_uint8", l.id.where}, false, {}};
    for (type_ref *type : {&list, &node, &bits, &octet}) {
        if (!resolve(*type, false, nullptr))
            return;
    }
    l.list_record = list.use.id;
    l.node_record = node.use.id;
    resolve(l.element, false, nullptr);

    const std::array<alias_facts, std::size(list_prefixes)> facts = {{
        {list.use, {}},
        {node.use, {}},
        {node.use, {{true, 0}}},
        {l.element.use, {}},
        {node.use, {}},
    }};
    for (std::uint32_t n = 0; n < facts.size(); ++n) {
        s.aliases[l.alias_id + n] = facts[n];
        mark_defined(list_prefixes[n] + l.id.text);
    }
}

} // namespace

void check_types(scope &s, const checked_folder &tables)
{
    for (unit_def &unit : s.folder.units) {
        for (definition_def &definition : unit.definitions)
            std::visit(enter_definition{s, unit}, definition);
    }
    for (unit_def &unit : s.folder.units) {
        for (definition_def &definition : unit.definitions)
            std::visit(check_definition{s, tables, unit}, definition);
    }
}

} // namespace solvane::gen::def
