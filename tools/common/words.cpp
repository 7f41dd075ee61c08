#include "words.h"

#include <fmt/format.h>

namespace solvane::tools {

namespace {

const char *text_in(const tt_value_row *rows, std::uint32_t count, std::uint32_t value)
{
    for (std::uint32_t i = 0; i < count; ++i) {
        if (rows[i].value == value) {
            return rows[i].text;
        }
    }
    return nullptr;
}

std::string case_words(const tt_value_field &field, std::uint32_t value)
{
    std::string out;
    for (std::uint32_t i = 0; i < field.no_cases; ++i) {
        const tt_value_case &each = field.cases[i];
        const char          *text = text_in(each.values, each.no_values, value);
        if (text == nullptr) {
            continue;
        }
        const bool fallback = each.selector == TT_DEFAULT_SELECTOR;
        out += fmt::format("{}{} ({})", out.empty() ? "" : ", ", text,
                           fallback ? "any other case" : fmt::format("case {}", each.selector));
    }
    return out;
}

} // namespace

const tt_value_desc *description_of(const plugin &loaded, const domain &in, std::string_view structure)
{
    const auto *tables = loaded.info->value_desc_tables;
    const auto  number = static_cast<std::uint32_t>(in.number);
    if (tables == nullptr || number >= tables->count || tables->tables[number] == nullptr) {
        return nullptr;
    }
    const tt_value_desc *found = nullptr;
    for (std::uint32_t i = 0; i < tables->tables[number]->count; ++i) {
        const tt_value_desc_row &row = tables->tables[number]->rows[i];
        if (row.record != nullptr && structure == row.name) {
            found = row.record; /* of two rows the library's own look-up keeps the last */
        }
    }
    return found;
}

const tt_value_field *field_of(const tt_value_desc &described, std::string_view field)
{
    for (std::uint32_t i = 0; i < described.no_fields; ++i) {
        if (field == described.fields[i].name) {
            return &described.fields[i];
        }
    }
    return nullptr;
}

std::string words_of(const plugin &loaded, const domain &in, const char *structure, const char *field,
                     std::uint32_t value)
{
    const auto &info = *loaded.info;
    if (info.db_struct_known == nullptr || info.db_struct_known(in.number, structure) == 0) {
        return {};
    }
    if (const char *text = info.db_field_value_text(in.number, structure, field, value); text != nullptr) {
        return text;
    }
    const tt_value_desc  *described = description_of(loaded, in, structure);
    const tt_value_field *row = described != nullptr ? field_of(*described, field) : nullptr;
    return row != nullptr ? case_words(*row, value) : std::string();
}

} // namespace solvane::tools
