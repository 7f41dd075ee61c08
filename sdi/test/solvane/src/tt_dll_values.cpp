// What the value of a field means in words: six queries over the value description tables.
//
// The searches run in table order, so that of equal values the first row's text is given; the lists are short.
// The maps are built by init_dll and only read afterwards, from any thread.
#include <cstring>
#include <map>

#include "tt_dll.h"

namespace {

struct text_less {
    bool operator()(const char *one, const char *other) const { return std::strcmp(one, other) < 0; }
};

using value_map = std::map<const char *, const tt_value_desc *, text_less>;

// One map a registry row, empty at load time.  On the heap and never released: a query may still come from an
// exit handler of the host, when the static objects of the library are gone.
value_map *const value_maps = new value_map[ENTITY_LAST];

/// The record of a structure, or null.  The empty name finds the null record of a table's end row: a miss too.
const tt_value_desc *find_record(std::int32_t domain, const char *struct_name)
{
    // Callers owe a domain that is not negative; such a one is a miss here too, so that no read goes astray.
    if (static_cast<std::uint32_t>(domain) >= ENTITY_LAST || struct_name == nullptr)
        return nullptr;
    const value_map &map = value_maps[domain];
    const auto       found = map.find(struct_name);
    return found == map.end() ? nullptr : found->second;
}

const tt_value_field *find_field(const tt_value_desc *record, const char *field)
{
    if (record == nullptr || field == nullptr)
        return nullptr;
    for (std::uint32_t n = 0; n < record->no_fields; ++n)
        if (std::strcmp(record->fields[n].name, field) == 0)
            return &record->fields[n];
    return nullptr;
}

const tt_value_case *find_case(const tt_value_field *field, std::uint32_t selector)
{
    for (std::uint32_t n = 0; n < field->no_cases; ++n)
        if (field->cases[n].selector == selector)
            return &field->cases[n];
    return nullptr;
}

const char *find_text(const tt_value_row *rows, std::uint32_t count, std::uint32_t value)
{
    for (std::uint32_t n = 0; n < count; ++n)
        if (rows[n].value == value)
            return rows[n].text;
    return nullptr;
}

} // namespace

void tt_build_value_maps()
{
    for (std::uint32_t domain = 0; domain < TT_NO_DOMAINS; ++domain) {
        if (!tt_entity_infos[domain].valid)
            continue;
        const tt_value_desc_table *table = tt_value_tables[domain];
        for (std::uint32_t n = 0; n < table->count; ++n)
            value_maps[domain][table->rows[n].name] = table->rows[n].record; // of two records the last stays
    }
}

std::uint32_t db_struct_known(std::int32_t domain, const char *struct_name)
{
    return find_record(domain, struct_name) != nullptr;
}

const char *db_struct_value_text(std::int32_t domain, const char *struct_name, std::uint32_t value)
{
    const tt_value_desc *record = find_record(domain, struct_name);
    return record == nullptr ? nullptr : find_text(record->values, record->no_values, value);
}

const char *db_field_value_text(std::int32_t domain, const char *struct_name, const char *field,
                                std::uint32_t value)
{
    const tt_value_field *found = find_field(find_record(domain, struct_name), field);
    return found == nullptr ? nullptr : find_text(found->values, found->no_values, value);
}

const char *db_field_case_value_text(std::int32_t domain, const char *struct_name, const char *field,
                                     std::uint32_t selector, std::uint32_t value)
{
    const tt_value_field *found = find_field(find_record(domain, struct_name), field);
    if (found == nullptr)
        return nullptr;
    // The default case stands in for a selector that has no case, not for a value that its case does not hold.
    const tt_value_case *chosen = find_case(found, selector);
    if (chosen == nullptr)
        chosen = find_case(found, TT_DEFAULT_SELECTOR);
    return chosen == nullptr ? nullptr : find_text(chosen->values, chosen->no_values, value);
}

const char *db_struct_comment(std::int32_t domain, const char *struct_name)
{
    const tt_value_desc *record = find_record(domain, struct_name);
    return record == nullptr ? nullptr : record->comment;
}

const char *db_field_comment(std::int32_t domain, const char *struct_name, const char *field)
{
    const tt_value_field *found = find_field(find_record(domain, struct_name), field);
    return found == nullptr ? nullptr : found->comment;
}
