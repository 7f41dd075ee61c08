// Registry rows, literals, messages and value texts of the domains; the peer table.
#include "def/check_domains.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <limits>
#include <map>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>

#include <fmt/format.h>

namespace solvane::gen::def {
namespace {

constexpr std::uint32_t no_domains = 8;    // databases of a build
constexpr std::uint32_t stack_entity = 1;  // the domain that has the per-module tables
constexpr std::uint32_t most_modules = 256;
constexpr std::int64_t  int32_low = std::numeric_limits<std::int32_t>::min();
constexpr std::int64_t  uint32_high = std::numeric_limits<std::uint32_t>::max();

bool is_identifier(std::string_view text)
{
    const auto word = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; };
    return !text.empty() && std::isdigit(static_cast<unsigned char>(text.front())) == 0 &&
           std::all_of(text.begin(), text.end(), word);
}

std::vector<bool> unit_set(const scope &s, const gen::domain &domain)
{
    std::vector<bool> units(s.folder.units.size());
    for (const std::uint32_t id : domain.units)
        units[id] = true;
    return units;
}

enum class wanted { structure, enumeration };

/// A name of a domain's dictionary that stands for what is wanted, typedefs looked through; null and a message
/// where there is none.
const type_symbol *find_in_domain(scope &s, const std::vector<bool> &units, const std::string &domain, const name &id,
                                  wanted kind_wanted)
{
    const std::string_view what = kind_wanted == wanted::structure ? "structure" : "enumeration";
    const auto             at = s.types.find(id.text);
    if (at == s.types.end()) {
        s.diag.error(id.where, fmt::format("unknown {} '{}'", what, id.text));
        return nullptr;
    }
    if (!units[at->second.unit]) {
        s.diag.conflict(id.where, fmt::format("{} '{}' is not in the dictionary of '{}'", what, id.text, domain),
                        at->second.where, fmt::format("it is defined in \"{}\"",
                                                      s.folder.units[at->second.unit].path));
        return nullptr;
    }
    const resolved_type type = look_through(s, at->second.use);
    const bool          fits = kind_wanted == wanted::enumeration
                                   ? type.use.base == kind::enumeration
                                   : type.use.base == kind::structure || type.use.base == kind::union_;
    if (type.plain && fits)
        return &at->second;
    s.diag.conflict(id.where, fmt::format("'{}' is no {}", id.text, what), at->second.where, "it is defined here");
    return nullptr;
}

/// The definition of an enumeration by its id.
const enum_def *find_enum(const scope &s, std::uint32_t enum_id)
{
    for (const unit_def &unit : s.folder.units) {
        for (const definition_def &definition : unit.definitions) {
            const enum_def *e = std::get_if<enum_def>(&definition);
            if (e != nullptr && e->enum_id == enum_id)
                return e;
        }
    }
    return nullptr;
}

/// Reports every place of `seen` but the first of each name.
struct once {
    scope                       &s;
    std::map<std::string, place> seen;

    bool operator()(const name &id, std::string_view what)
    {
        const auto [at, fresh] = seen.emplace(id.text, id.where);
        if (!fresh)
            s.diag.conflict(id.where, fmt::format("{} '{}' stands here twice", what, id.text), at->second, "the first");
        return fresh;
    }
};

// ------------------------------------------------------------------------------------------- registry rows

struct registry_row {
    std::string_view          key;
    std::string gen::domain::*field;
    wanted                    what;
};

constexpr std::array registry_rows = {
    registry_row{"file_codes",    &gen::domain::file_codes,    wanted::enumeration},
    registry_row{"saps",          &gen::domain::saps,          wanted::enumeration},
    registry_row{"messages",      &gen::domain::messages_enum, wanted::enumeration},
    registry_row{"modules",       &gen::domain::modules,       wanted::enumeration},
    registry_row{"channels",      &gen::domain::channels,      wanted::enumeration},
    registry_row{"error_actions", &gen::domain::error_actions, wanted::enumeration},
    registry_row{"peer_params",   &gen::domain::peer_params,   wanted::enumeration},
    registry_row{"context",       &gen::domain::context,       wanted::structure},
};

/// In the order of `module_table`.
constexpr std::array<std::string_view, no_module_tables> module_table_keys = {
    "module_file_codes", "module_peer_msgs", "module_proto_errors", "module_timers", "module_fsms", "module_states"};

void check_registry_row(scope &s, checked_domain &domain, const std::vector<bool> &units, const domain_row_def &row)
{
    if (row.key.text == "entity")
        return; // resolved ahead of all other rows
    const auto at = std::find_if(registry_rows.begin(), registry_rows.end(),
                                 [&](const registry_row &r) { return r.key == row.key.text; });
    if (at == registry_rows.end()) {
        s.diag.error(row.key.where, fmt::format("a domain has no row '{}'", row.key.text));
        return;
    }
    if (find_in_domain(s, units, domain.out.name, row.value, at->what) != nullptr)
        domain.out.*at->field = row.value.text;
}

void check_module_row(scope &s, checked_domain &domain, const std::vector<bool> &units, std::size_t table,
                      const module_row_def &row)
{
    const bool states = table == static_cast<std::size_t>(module_table::states);
    if (states != row.machine.has_value()) {
        s.diag.error(row.where, states ? "a row of module_states has a module and a state machine, as in 3.0"
                                       : "a row of this table has a module number alone");
        return;
    }
    if (row.module >= most_modules || row.machine.value_or(0) >= most_modules) {
        s.diag.error(row.where, fmt::format("modules and state machines are numbered from 0 to {}", most_modules - 1));
        return;
    }
    if (find_in_domain(s, units, domain.out.name, row.enumeration, wanted::enumeration) == nullptr)
        return;
    const std::uint64_t index = states ? row.module * most_modules + *row.machine : row.module;
    domain.out.module_tables[table].push_back({static_cast<std::uint32_t>(index), row.enumeration.text});
}

void check_module_table(scope &s, checked_domain &domain, const std::vector<bool> &units, const module_table_def &def)
{
    const auto key = std::find(module_table_keys.begin(), module_table_keys.end(), def.key.text);
    if (key == module_table_keys.end()) {
        s.diag.error(def.key.where, fmt::format("a domain has no table '{}'", def.key.text));
        return;
    }
    if (domain.out.entity_value != stack_entity)
        s.diag.error(def.key.where, fmt::format("per-module tables belong to the domain of entity {}", stack_entity));
    const auto table = static_cast<std::size_t>(key - module_table_keys.begin());
    for (const module_row_def &row : def.rows)
        check_module_row(s, domain, units, table, row);
}

void check_registry(scope &s, checked_domain &domain, const std::vector<bool> &units)
{
    once first{s, {}};
    for (const domain_row_def &row : domain.def.rows) {
        if (first(row.key, "row"))
            check_registry_row(s, domain, units, row);
    }
    for (const module_table_def &table : domain.def.tables) {
        if (first(table.key, "table"))
            check_module_table(s, domain, units, table);
    }
    for (const name &word : domain.def.indexed)
        first(word, "row");
    domain.out.indexed = !domain.def.indexed.empty();
}

/// The registry row of a domain that gives its entity; null and a message where there is none.
const name *entity_row(scope &s, const domain_def &domain)
{
    for (const domain_row_def &row : domain.rows) {
        if (row.key.text == "entity")
            return &row.value;
    }
    s.diag.error(domain.id.where, fmt::format("domain '{}' has no entity", domain.id.text));
    return nullptr;
}

/// The entities enumeration that the baseline names; null and a message where there is none.
const enum_def *entities(scope &s)
{
    const baseline_def &baseline = *s.folder.baseline;
    if (baseline.entities.empty())
        return nullptr;
    const name &id = baseline.entities.front();
    const auto  at = s.types.find(id.text);
    const bool  found = at != s.types.end() && look_through(s, at->second.use).use.base == kind::enumeration;
    if (!found) {
        s.diag.error(id.where, fmt::format("unknown enumeration '{}'", id.text));
        return nullptr;
    }
    return find_enum(s, look_through(s, at->second.use).use.id);
}

// ------------------------------------------------------------------------------------------- literals

/// Every literal and constant of a domain is a name of its own, among themselves and among the types.
void check_literals(scope &s, const gen::domain &domain, const std::vector<bool> &units)
{
    std::unordered_map<std::string_view, place> seen;
    const auto check = [&](const name &id) {
        const auto [at, fresh] = seen.emplace(id.text, id.where);
        if (!fresh)
            s.diag.conflict(id.where, fmt::format("'{}' is defined twice in '{}'", id.text, domain.name), at->second,
                            "the other definition");
        const auto type = s.types.find(id.text);
        if (type != s.types.end() && units[type->second.unit])
            s.diag.conflict(id.where, fmt::format("'{}' is also a type", id.text), type->second.where, "this one");
    };
    for (const std::uint32_t unit : domain.units) {
        for (const definition_def &definition : s.folder.units[unit].definitions) {
            if (const enum_def *e = std::get_if<enum_def>(&definition)) {
                for (const literal_def &l : e->literals)
                    check(l.id);
            } else if (const constant_def *c = std::get_if<constant_def>(&definition)) {
                check(c->id);
            }
        }
    }
}

// ------------------------------------------------------------------------------------------- messages

/// Literals of the enumeration of access points by name.
std::unordered_map<std::string_view, const literal_def *> access_points(const scope &s, const gen::domain &domain)
{
    std::unordered_map<std::string_view, const literal_def *> points;
    if (domain.saps.empty())
        return points;
    const enum_def *e = find_enum(s, look_through(s, s.types.at(domain.saps).use).use.id);
    for (const literal_def &l : e->literals)
        points.emplace(l.id.text, &l);
    return points;
}

void check_messages(scope &s, checked_domain &domain, const std::vector<bool> &units)
{
    const table &rows = s.folder.messages.at(domain.out.name);
    if (domain.out.saps.empty()) {
        s.diag.error({rows.file, 0, 0}, fmt::format("domain '{}' has messages and no row 'saps'", domain.out.name));
        return;
    }
    const auto points = access_points(s, domain.out);
    for (std::size_t n = 0; n < rows.rows.size(); ++n) {
        const std::vector<cell> &row = rows.rows[n];
        message_row             &message = domain.out.messages[n];

        const cell &sap = row[message_column::sap];
        const auto  point = points.find(sap.text);
        if (point == points.end())
            s.diag.error(sap.where, fmt::format("'{}' is no literal of '{}'", sap.text, domain.out.saps));
        else
            message.sap_code = static_cast<std::uint32_t>(point->second->number);

        const cell &structure = row[message_column::structure];
        if (structure.text != "-")
            find_in_domain(s, units, domain.out.name, {structure.text, structure.where}, wanted::structure);

        const cell &code = row[message_column::code];
        if (domain.out.indexed && (message.code == 0 || message.code > 0xFFFF))
            s.diag.error(code.where, "a code of the message index has 16 bits and is not 0");
    }
}

// ------------------------------------------------------------------------------------------- value texts

/// Walks the value texts of one domain.
struct value_check {
    scope                   &s;
    const checked_domain    &domain;
    const std::vector<bool> &units;

    void values(std::vector<text_def> &values) const
    {
        for (text_def &v : values) // a negative value is stored as its 32 bits
            v.number = static_cast<std::uint32_t>(
                evaluate(s, v.value, units, int32_low, uint32_high, "the value").value_or(0));
    }

    void cases(std::vector<value_case_def> &cases) const
    {
        std::map<std::uint32_t, place> seen;
        for (value_case_def &c : cases) {
            std::optional<std::int64_t> selector = no_index; // of the default case
            if (c.selector)
                selector = evaluate(s, *c.selector, units, 0, uint32_high - 1, "the selector");
            c.number = static_cast<std::uint32_t>(selector.value_or(0));
            const auto [at, fresh] = seen.emplace(c.number, c.where);
            if (selector && !fresh)
                s.diag.conflict(c.where, "this case stands here twice", at->second, "the first");
            values(c.values);
        }
    }

    void record(value_record_def &r) const
    {
        values(r.values);
        for (value_field_def &f : r.fields) {
            values(f.values);
            cases(f.cases);
        }
        const type_symbol *symbol = find_in_domain(s, units, domain.out.name, r.id, wanted::structure);
        if (symbol == nullptr)
            return;
        const record_def &def = *s.records[look_through(s, symbol->use).use.id];
        once              first{s, {}};
        for (const value_field_def &f : r.fields) {
            first(f.id, "field");
            const bool found = std::any_of(def.members.begin(), def.members.end(), [&](const member_def &m) {
                return !m.hidden && m.decl.id.text == f.id.text;
            });
            if (!found)
                s.diag.conflict(f.id.where, fmt::format("'{}' has no member '{}'", r.id.text, f.id.text), def.id.where,
                                "it is defined here");
        }
    }
};

} // namespace

// ------------------------------------------------------------------------------------------- the steps

void read_messages(diagnostics &diag, const table &rows, gen::domain &domain)
{
    std::map<std::uint32_t, place> codes;
    std::map<std::string, place>   names;
    domain.has_messages = true;
    for (const std::vector<cell> &row : rows.rows) {
        const cell                        &code = row[message_column::code];
        const cell                        &id = row[message_column::name];
        const std::optional<std::uint64_t> number = parse_number(code.text);
        if (!number || *number > static_cast<std::uint64_t>(uint32_high)) {
            diag.error(code.where, fmt::format("'{}' is no number of 32 bits", code.text));
        } else if (const auto [at, fresh] = codes.emplace(static_cast<std::uint32_t>(*number), code.where); !fresh) {
            diag.conflict(code.where, fmt::format("code {} is taken", code.text), at->second, "by this message");
        }
        if (!is_identifier(id.text))
            diag.error(id.where, fmt::format("'{}' cannot be a literal", id.text));
        else if (const auto [at, fresh] = names.emplace(id.text, id.where); !fresh)
            diag.conflict(id.where, fmt::format("message '{}' stands here twice", id.text), at->second, "the first");

        const std::string &structure = row[message_column::structure].text;
        domain.messages.push_back({static_cast<std::uint32_t>(number.value_or(0)), id.text, 0,
                                   row[message_column::sap].text, structure == "-" ? "" : structure});
    }
}

void check_entities(scope &s, checked_folder &folder)
{
    const enum_def *all = entities(s);
    if (all == nullptr)
        return;
    std::map<std::uint32_t, const name *> taken;
    for (checked_domain &domain : folder.domains) {
        const name *row = entity_row(s, domain.def);
        if (row == nullptr)
            continue;
        const auto literal = std::find_if(all->literals.begin(), all->literals.end(),
                                          [&](const literal_def &l) { return l.id.text == row->text; });
        if (literal == all->literals.end()) {
            s.diag.error(row->where, fmt::format("'{}' is no literal of '{}'", row->text, all->id.text));
            continue;
        }
        domain.out.entity = row->text;
        domain.out.entity_value = static_cast<std::uint32_t>(literal->number);
        const auto [at, fresh] = taken.emplace(domain.out.entity_value, row);
        if (!fresh)
            s.diag.conflict(row->where, "two domains have the same entity", at->second->where, "the other one");
        if (domain.out.entity_value >= no_domains)
            s.diag.error(row->where, fmt::format("a domain's entity is from 0 to {}", no_domains - 1));
    }
    if (folder.domains.size() != no_domains)
        s.diag.error(s.folder.baseline->entities.front().where,
                     fmt::format("the baseline names {} domains, there must be {}", folder.domains.size(), no_domains));
    std::stable_sort(folder.domains.begin(), folder.domains.end(),
                     [](const checked_domain &a, const checked_domain &b) {
                         return a.out.entity_value < b.out.entity_value;
                     });
}

void check_domain(scope &s, checked_domain &domain)
{
    const std::vector<bool> units = unit_set(s, domain.out);
    check_registry(s, domain, units);
    check_literals(s, domain.out, units);
    if (domain.out.has_messages)
        check_messages(s, domain, units);
    else if (domain.out.indexed)
        s.diag.error(domain.def.indexed.front().where,
                     fmt::format("domain '{}' has no messages.tsv to make an index of", domain.out.name));
}

void check_values(scope &s, const checked_domain &domain)
{
    const std::vector<bool> units = unit_set(s, domain.out);
    const value_check       check{s, domain, units};
    once                    first{s, {}};
    for (values_def &values : s.folder.values) {
        if (values.folder != domain.out.name)
            continue;
        for (value_record_def &record : values.records) {
            if (first(record.id, "structure"))
                check.record(record);
        }
    }
}

void check_variables(scope &s, const checked_folder &folder)
{
    const baseline_def &baseline = *s.folder.baseline;
    if (baseline.variables.empty() || baseline.entities.empty() || folder.domains.empty())
        return;
    const checked_domain   &first = folder.domains.front();
    const std::vector<bool> units = unit_set(s, first.out);
    find_in_domain(s, units, first.out.name, baseline.variables.front(), wanted::structure);
    find_in_domain(s, units, first.out.name, baseline.entities.front(), wanted::enumeration);
}

namespace {

/// A row without functions has those of the structure's wire format.
void name_functions(scope &s, peer_row_def &row)
{
    const record_def &r = *s.records[row.type.id];
    if (!r.wire) {
        s.diag.conflict(row.structure.where, fmt::format("'{}' has no wire format: name its functions",
                                                         row.structure.text), r.id.where, "it is defined here");
        return;
    }
    row.pack.text = wire_function(r.id.text, "pack");
    row.unpack.text = wire_function(r.id.text, "unpack");
}

/// A row without functions whose name is an ASN.1 type has the entries of that type's codec.
bool name_entries(const scope &s, peer_row_def &row)
{
    const auto at = s.types.find(row.structure.text);
    row.of_schema = row.pack.text.empty() && at != s.types.end() && s.folder.units[at->second.unit].of_schema;
    if (!row.of_schema)
        return false;
    row.type = at->second.use;
    row.pack.text = row.structure.text + "_encode";
    row.unpack.text = row.structure.text + "_decode";
    return true;
}

} // namespace

void check_peers(scope &s, const checked_folder &folder)
{
    if (!s.folder.peers)
        return;
    std::vector<bool> units(s.folder.units.size());
    for (const checked_domain &domain : folder.domains) {
        for (const std::uint32_t id : domain.out.units)
            units[id] = true;
    }
    once families{s, {}};
    for (peer_family_def &family : s.folder.peers->families) {
        families(family.id, "family");
        once rows{s, {}};
        for (peer_row_def &row : family.rows) {
            rows(row.structure, "structure");
            if (name_entries(s, row))
                continue;
            const type_symbol *symbol = find_in_domain(s, units, "any domain", row.structure, wanted::structure);
            if (symbol == nullptr)
                continue;
            row.type = look_through(s, symbol->use).use;
            if (row.pack.text.empty())
                name_functions(s, row);
        }
    }
}

} // namespace solvane::gen::def
