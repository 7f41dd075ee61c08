// Lowers checked trees to the model.
#include "def/lower.h"

#include <iterator>
#include <utility>

#include "model/roles.h"

namespace solvane::gen::def {
namespace {

/// Lowers the definitions of one unit, in their order: the ids of the tree are those of the model.
struct lower_definition {
    model &m;
    unit  &out;

    void note(definition::what what, std::uint32_t id) const { out.definitions.push_back({what, id}); }

    std::uint32_t unit_id() const { return static_cast<std::uint32_t>(m.units.size()); }

    void add_alias(const name &id, type_use base, std::vector<dimension> dims, std::uint32_t list_id) const
    {
        note(definition::what::alias, static_cast<std::uint32_t>(m.aliases.size()));
        m.aliases.push_back({id.text, base, std::move(dims), unit_id(), list_id, id.where});
    }

    void operator()(const typedef_def &t) const { add_alias(t.decl.id, t.type.use, t.decl.dims, no_index); }

    void operator()(const constant_def &c) const
    {
        note(definition::what::constant, static_cast<std::uint32_t>(m.constants.size()));
        m.constants.push_back({c.id.text, c.number, unit_id()});
    }

    void operator()(const enum_def &e) const
    {
        enumeration out_enum{e.anonymous ? "" : e.id.text, e.alias_id, unit_id(), {}, e.id.where};
        for (const literal_def &l : e.literals)
            out_enum.literals.push_back({l.id.text, l.number, l.evaluated, l.id.where});
        note(definition::what::enumeration, e.enum_id);
        m.enums.push_back(std::move(out_enum));
        if (e.anonymous)
            add_alias(e.id, {kind::enumeration, e.enum_id}, {}, no_index);
    }

    void operator()(const record_def &r) const
    {
        record                    out_record{r.id.text, r.is_union, unit_id(), {}, r.id.where, std::nullopt};
        std::vector<member_links> links;
        for (const member_def &d : r.members) {
            member out_member;
            out_member.name = d.decl.id.text;
            out_member.type = d.type.use;
            out_member.dims = d.decl.dims;
            out_member.bit_width = d.bit_width;
            out_member.rt_selector = d.rt_selector;
            out_member.hidden = d.hidden;
            out_member.where = d.decl.id.where;
            out_record.members.push_back(std::move(out_member));
            links.push_back({d.counted_by, d.present_if, d.selected_by, d.case_value});
        }
        assign_roles(m, out_record, links);
        if (r.wire)
            out_record.wire = r.wire->codec;
        note(definition::what::record, r.record_id);
        m.records.push_back(std::move(out_record));
    }

    void operator()(const list_def &l) const
    {
        const type_use node{kind::structure, l.node_record};
        const auto     add = [&](std::size_t n, type_use base, std::vector<dimension> dims) {
            const std::uint32_t id = static_cast<std::uint32_t>(m.aliases.size());
            add_alias({list_prefixes[n] + l.id.text, l.id.where}, base, std::move(dims), l.list_id);
            return id;
        };
        list_family family;
        family.name = l.id.text;
        family.list_alias = add(0, {kind::structure, l.list_record}, {});
        family.node_alias = add(1, node, {});
        family.pointer_alias = add(2, node, {{true, 0}});
        family.element_alias = add(3, l.element.use, {});
        family.rt_node_alias = add(4, node, {});
        m.lists.push_back(std::move(family));
    }
};

void lower_unit(const unit_def &def, model &m)
{
    unit out;
    out.stem = def.stem;
    out.path = def.path;
    out.declared_in = def.declared_in ? def.declared_in->text : "";
    out.imports = def.import_ids;
    out.forward_records = def.forward_records;
    for (const definition_def &definition : def.definitions)
        std::visit(lower_definition{m, out}, definition);
    m.units.push_back(std::move(out));
}

std::vector<value_row> lower_values(const std::vector<text_def> &values)
{
    std::vector<value_row> rows;
    for (const text_def &v : values)
        rows.push_back({v.text.text, v.number});
    return rows;
}

value_field lower_field(const value_field_def &def)
{
    value_field field;
    field.name = def.id.text;
    if (def.comment) // stored with its own double quotes
        field.comment = "\"" + def.comment->text + "\"";
    field.values = lower_values(def.values);
    for (const value_case_def &c : def.cases)
        field.cases.push_back({c.number, lower_values(c.values)});
    return field;
}

void lower_value_records(const values_def &def, gen::domain &domain)
{
    for (const value_record_def &r : def.records) {
        value_record record;
        record.name = r.id.text;
        if (r.comment)
            record.comment = r.comment->text;
        record.values = lower_values(r.values);
        for (const value_field_def &f : r.fields)
            record.fields.push_back(lower_field(f));
        domain.values.push_back(std::move(record));
    }
}

void lower_peers(const peers_def &def, model &m)
{
    for (const peer_family_def &f : def.families) {
        peer_family family{f.id.text, {}};
        for (const peer_row_def &row : f.rows)
            family.rows.push_back({row.structure.text, row.type, row.of_schema, row.pack.text, row.unpack.text});
        m.peer_families.push_back(std::move(family));
    }
}

} // namespace

model lower(checked_folder folder)
{
    const folder_def   &tree = folder.tree;
    const baseline_def &baseline = *tree.baseline;
    model               m;
    m.baseline = baseline.baseline.front().text;
    m.version_text = baseline.version.front().text;
    m.variables_root = baseline.variables.front().text;
    m.entities_enum = baseline.entities.front().text;
    for (const unit_def &unit : tree.units)
        lower_unit(unit, m);
    for (checked_domain &domain : folder.domains) {
        m.domains.push_back(std::move(domain.out));
        for (const values_def &values : tree.values) {
            if (values.folder == m.domains.back().name)
                lower_value_records(values, m.domains.back());
        }
    }
    if (tree.peers)
        lower_peers(*tree.peers, m);
    m.trace_modules = std::move(folder.trace_modules);
    m.traces = std::move(folder.statements);
    return m;
}

} // namespace solvane::gen::def
