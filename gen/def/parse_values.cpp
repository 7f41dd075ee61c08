// Recursive descent over a `.val` file: what the values of structures and fields mean in words.
#include <filesystem>

#include "def/parse.h"
#include "def/parser.h"

namespace solvane::gen::def {
namespace {

// value = text "=" expression ";" ;
text_def parse_value(parser &in)
{
    text_def v;
    v.text = in.expect_text("a text in double quotes");
    in.expect("=", "the text");
    v.value = parse_expression(in);
    in.expect_semicolon("the value");
    return v;
}

// case = ( "case" expression | "default" ) "{" { value } "}" [ ";" ] ;
value_case_def parse_case(parser &in)
{
    value_case_def c;
    c.where = in.peek().where;
    if (in.next().text == "case")
        c.selector = parse_expression(in);
    parse_block(in, "the case", [&] { c.values.push_back(parse_value(in)); });
    in.accept(";");
    return c;
}

// field = "field" name [ "comment" text ] "{" { value | case } "}" [ ";" ] ;
value_field_def parse_field(parser &in)
{
    value_field_def f;
    f.id = in.expect_identifier("the name of a field");
    if (in.accept_word("comment"))
        f.comment = in.expect_text("a text in double quotes");
    parse_block(in, "the field", [&] {
        if (in.is_word("case") || in.is_word("default"))
            f.cases.push_back(parse_case(in));
        else if (in.is_text())
            f.values.push_back(parse_value(in));
        else
            in.fail("a text, 'case' or 'default'");
    });
    in.accept(";");
    return f;
}

// record = "values" name "{" [ "comment" text ";" ] { value | field } "}" [ ";" ] ;
value_record_def parse_value_record(parser &in)
{
    value_record_def r;
    in.expect_word("values");
    r.id = in.expect_identifier("the name of a structure");
    parse_block(in, "the structure", [&] {
        if (in.accept_word("field")) {
            r.fields.push_back(parse_field(in));
        } else if (in.accept_word("comment")) {
            r.comment = in.expect_text("a text in double quotes");
            in.expect_semicolon("the comment");
        } else if (in.is_text()) {
            r.values.push_back(parse_value(in));
        } else {
            in.fail("a text, 'field' or 'comment'");
        }
    });
    in.accept(";");
    return r;
}

} // namespace

// values = { record } ;
values_def parse_values(diagnostics &diag, const std::vector<token> &tokens, std::uint32_t file,
                        const std::string &path)
{
    values_def values;
    values.file = file;
    values.path = path;
    values.folder = std::filesystem::path(path).parent_path().generic_string();
    parser in{diag, tokens};
    parse_file(in, [&] { values.records.push_back(parse_value_record(in)); });
    return values;
}

} // namespace solvane::gen::def
