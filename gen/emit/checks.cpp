// Definitions whose records are written by hand, held against their header.
//
// The records of the definition are declared a second time, in a namespace, and every size and offset is compared.
// Bit-fields have neither: the two declarations agree on them as far as the members around them tell.
#include "emit/checks.h"

#include <algorithm>

#include "emit/record.h"
#include "emit/text.h"

namespace solvane::gen {

namespace {

std::string namespace_name(const unit &u)
{
    return "defined_" + u.stem;
}

void put_value_check(std::string &out, std::string_view name, std::int64_t value)
{
    put(out, "static_assert($name$ == $value$);\n", {{"name", name}, {"value", std::to_string(value)}});
}

void put_record_checks(std::string &out, const model &m, const unit &u, std::uint32_t record_id)
{
    const std::string               space = namespace_name(u);
    const std::string               name = record_name(m, record_id);
    const std::vector<gen::member> &members = m.records[record_id].members;
    put(out, "static_assert(sizeof($space$::$name$) == sizeof($name$));\n", {{"space", space}, {"name", name}});
    for (std::uint32_t n = 0; n < members.size(); ++n)
        if (members[n].bit_width == 0)
            put(out, "SAME_PLACE($space$, $name$, $member$);\n",
                {{"space", space}, {"name", name}, {"member", member_name(m, record_id, n)}});
}

void put_alias_check(std::string &out, const model &m, const unit &u, std::uint32_t alias_id)
{
    if (has_typedef(m, alias_id))
        put(out, "static_assert(sizeof($space$::$name$) == sizeof($name$));\n",
            {{"space", namespace_name(u)}, {"name", alias_name(m, alias_id)}});
}

void put_definition_checks(std::string &out, const model &m, const unit &u, const definition &d)
{
    switch (d.kind) {
    case definition::what::enumeration:
        put(out, "static_assert(sizeof($name$) == 4);\n", {{"name", enum_name(m, d.id)}});
        for (const literal &l : m.enums[d.id].literals)
            put_value_check(out, cpp_identifier(l.name), l.value);
        break;
    case definition::what::record:
        put_record_checks(out, m, u, d.id);
        break;
    case definition::what::alias:
        put_alias_check(out, m, u, d.id);
        break;
    case definition::what::constant:
        put_value_check(out, cpp_identifier(m.constants[d.id].name), m.constants[d.id].value);
        break;
    }
}

/// The types of the definition in a namespace of their own.
void put_defined(std::string &out, const model &m, const unit &u)
{
    put(out, "namespace $space$ {\n", {{"space", namespace_name(u)}});
    for (const std::uint32_t id : u.forward_records)
        put_forward(out, m, id);
    for (const definition &d : u.definitions) {
        if (d.kind == definition::what::record)
            put_record(out, m, d.id);
        if (d.kind == definition::what::alias && has_typedef(m, d.id))
            put_typedef(out, m, d.id);
    }
    out += "}\n";
}

} // namespace

void put_checks(std::string &out, const model &m, const unit &u)
{
    put(out, R"(
// The types of $path$ are written by hand in $header$; they are what the definition says.
#define SAME_PLACE(space, type, member) \
    static_assert(offsetof(space::type, member) == offsetof(type, member) && \
                  sizeof(space::type::member) == sizeof(type::member))
)", {{"path", u.path}, {"header", u.declared_in}});
    const bool has_types = std::ranges::any_of(u.definitions, [](const definition &d) {
        return d.kind == definition::what::record || d.kind == definition::what::alias;
    });
    if (has_types)
        put_defined(out, m, u);
    for (const definition &d : u.definitions)
        put_definition_checks(out, m, u, d);
    out += "#undef SAME_PLACE\n\n";
}

const domain *checking_domain(const model &m, std::uint32_t unit_id)
{
    for (const domain &d : m.domains)
        if (std::ranges::find(d.units, unit_id) != d.units.end())
            return &d;
    return nullptr;
}

} // namespace solvane::gen
