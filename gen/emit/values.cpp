// The value texts of a domain.  Rows of one kind are one array each; what holds them points into it.
#include "emit/emit.h"
#include "emit/tables.h"
#include "emit/text.h"

namespace solvane::gen {

namespace {

/// The arrays of a domain while they grow.
struct value_arrays {
    cell_table values{.rows = {}, .widest = 60};
    cell_table cases;
    cell_table fields;
    cell_table records;
    cell_table rows;
    // Rows of the first two arrays: headings stand between them.
    std::size_t no_values = 0;
    std::size_t no_cases = 0;
};

std::string slice(std::string_view array, std::size_t at, std::size_t count)
{
    if (count == 0)
        return "nullptr";
    return std::string(array) + (at == 0 ? "" : " + " + std::to_string(at));
}

std::string comment_text(const std::optional<std::string> &comment)
{
    return comment ? text_literal(*comment) : "nullptr";
}

/// Appends a list of texts and answers the pointer to it.
std::string add_values(value_arrays &arrays, const std::vector<value_row> &values, const std::string &heading)
{
    const std::size_t at = arrays.no_values;
    if (!values.empty())
        arrays.values.heading(heading);
    for (const value_row &v : values)
        arrays.values.add({text_literal(v.text), std::to_string(v.value)});
    arrays.no_values += values.size();
    return slice("values", at, values.size());
}

std::string add_cases(value_arrays &arrays, const value_field &field, const std::string &heading)
{
    const std::size_t at = arrays.no_cases;
    for (const value_case &c : field.cases) {
        const bool        is_default = c.selector == no_index;
        const std::string selector = is_default ? "TT_DEFAULT_SELECTOR" : std::to_string(c.selector);
        const std::string values =
            add_values(arrays, c.values, heading + (is_default ? ", default" : ", case " + selector));
        arrays.cases.add({selector, std::to_string(c.values.size()), values}, heading);
    }
    arrays.no_cases += field.cases.size();
    return slice("cases", at, field.cases.size());
}

void add_record(value_arrays &arrays, const value_record &record)
{
    const std::size_t first_field = arrays.fields.rows.size();
    const std::string values = add_values(arrays, record.values, record.name);
    for (const value_field &field : record.fields) {
        const std::string heading = record.name + "." + field.name;
        const std::string field_values = add_values(arrays, field.values, heading);
        const std::string cases = add_cases(arrays, field, heading);
        arrays.fields.add({text_literal(field.name), comment_text(field.comment), std::to_string(field.values.size()),
                           field_values, std::to_string(field.cases.size()), cases},
                          record.name);
    }
    const std::string index = std::to_string(arrays.records.rows.size());
    arrays.records.add({comment_text(record.comment), std::to_string(record.values.size()), values,
                        std::to_string(record.fields.size()), slice("fields", first_field, record.fields.size())},
                       index + " " + record.name);
    arrays.rows.add({text_literal(record.name), slice("records", arrays.records.rows.size() - 1, 1)});
}

std::string values_source(const domain &d)
{
    value_arrays arrays;
    for (const value_record &record : d.values)
        add_record(arrays, record);
    arrays.rows.add({text_literal(""), "nullptr"}, "the end row");

    std::string out;
    put_head(out, "Value texts of the domain " + d.name + ".", d.name + "/*.val");
    out += "#include <iterator>\n\n" + tables_include(d) + '\n';
    put_array(out, "Texts, by field.", "static const tt_value_row values[]", arrays.values);
    put_array(out, "Cases: selector, texts.", "static const tt_value_case cases[]", arrays.cases);
    put_array(out, "Fields: name, comment, texts, cases.", "static const tt_value_field fields[]", arrays.fields);
    put_array(out, "Structures: comment, texts, fields.", "static const tt_value_desc records[]", arrays.records);
    put_array(out, "The table of the domain.", "static const tt_value_desc_row rows[]", arrays.rows);
    put(out, "const tt_value_desc_table $table$ = {std::size(rows), rows};\n",
        {{"table", table_name(d, "value_table")}});
    return out;
}

} // namespace

void emit_values(const model &m, std::vector<output_file> &files)
{
    for (const domain &d : m.domains)
        files.push_back({"production/" + d.name + "_values.cpp", values_source(d)});
}

} // namespace solvane::gen
