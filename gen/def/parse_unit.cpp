// Recursive descent over a `.def` file: imports, types, lists and constants.
#include <filesystem>
#include <optional>
#include <utility>

#include "def/parse.h"
#include "def/parse_members.h"
#include "def/parse_wire.h"
#include "def/parser.h"

namespace solvane::gen::def {
namespace {

/// A definition that begins inside a block: the block's own `}` was forgotten.
bool begins_definition(const parser &in)
{
    const bool block = in.is_word("struct") || in.is_word("union") || in.is_word("enum");
    return (block && in.is("{", 2)) || in.is_word("typedef") || (in.is_word("list") && in.is_word("of", 2)) ||
           begins_wire(in);
}

// record = ( "struct" | "union" ) name "{" { member } "}" [ ";" ] ;
record_def parse_record(parser &in)
{
    record_def r;
    r.is_union = in.next().text == "union";
    r.id = in.expect_identifier("a name");
    in.expect("{", "the name");
    while (!in.is("}") && !in.done() && !begins_definition(in))
        parse_statement(in, [&] { r.members.push_back(parse_member(in)); });
    close_block(in, r.id.text);
    return r;
}

// literal = name [ "=" ( "unevaluated" | expression ) ] ;
literal_def parse_literal(parser &in)
{
    literal_def l{in.expect_identifier("a literal"), true, std::nullopt, 0};
    if (in.accept("=")) {
        if (in.accept_word("unevaluated"))
            l.evaluated = false;
        else
            l.value = parse_expression(in);
    }
    return l;
}

/// Inside an enumeration a literal that does not fit costs the text up to the next comma.
void skip_literal(parser &in)
{
    while (!in.is(",") && !in.is("}") && !in.done())
        in.next();
}

// literals = "{" [ literal { "," literal } [ "," ] ] "}" ;
void parse_literals(parser &in, enum_def &e)
{
    in.expect("{", "the name");
    while (!in.is("}") && !in.done()) {
        try {
            e.literals.push_back(parse_literal(in));
            if (!in.is(",") && !in.is("}"))
                in.fail("',' or '}' behind the literal");
        } catch (const syntax_error &) {
            skip_literal(in);
        }
        in.accept(",");
    }
    in.expect("}", "the enumeration");
}

// enumeration = "enum" name ( literals [ ";" ] | "from" ( "messages" | "trace_modules" ) ";" ) ;
enum_def parse_enum(parser &in)
{
    enum_def e;
    in.next();
    e.id = in.expect_identifier("a name");
    if (!in.accept_word("from")) {
        parse_literals(in, e);
        in.accept(";");
        return e;
    }
    if (in.accept_word("messages"))
        e.from = enum_def::source::messages;
    else if (in.accept_word("trace_modules"))
        e.from = enum_def::source::trace_modules;
    else
        in.fail("'messages' or 'trace_modules'");
    in.expect_semicolon("the enumeration");
    return e;
}

// typedef = "typedef" ( type declarator ";" | "enum" literals name [ ";" ] ) ;
definition_def parse_typedef(parser &in)
{
    in.next();
    if (in.is_word("enum")) {
        in.next();
        enum_def e;
        e.anonymous = true;
        parse_literals(in, e);
        e.id = in.expect_identifier("the name of the enumeration");
        in.accept(";");
        return e;
    }
    typedef_def t;
    t.type = parse_type(in);
    t.decl = parse_declarator(in);
    in.expect_semicolon("the typedef");
    return t;
}

// list = "list" name "of" type ";" ;
list_def parse_list(parser &in)
{
    in.next();
    list_def l;
    l.id = in.expect_identifier("a name");
    in.expect_word("of");
    l.element = parse_type(in);
    in.expect_semicolon("the list");
    return l;
}

// constant = "const" name "=" expression ";" ;
constant_def parse_constant(parser &in)
{
    in.next();
    constant_def c;
    c.id = in.expect_identifier("a name");
    in.expect("=", "the name");
    c.value = parse_expression(in);
    in.expect_semicolon("the constant");
    return c;
}

// statement = import | declared | typedef | enumeration | record | wire | list | constant ;
// import = "import" text ";" ;  declared = "declared" "in" text ";" ;
void parse_unit_statement(parser &in, unit_def &unit)
{
    if (in.accept_word("import")) {
        unit.imports.push_back(in.expect_text("a path in double quotes"));
        in.expect_semicolon("the import");
    } else if (in.is_word("declared")) {
        const place where = in.next().where;
        in.expect_word("in");
        const name header = in.expect_text("a header in double quotes");
        if (unit.declared_in)
            in.diag.conflict(where, "a unit is declared in one header", unit.declared_in->where, "the other one");
        unit.declared_in = header;
        in.expect_semicolon("the header");
    } else if (in.is_word("typedef")) {
        unit.definitions.push_back(parse_typedef(in));
    } else if (in.is_word("enum")) {
        unit.definitions.emplace_back(parse_enum(in));
    } else if (in.is_word("struct") || in.is_word("union")) {
        unit.definitions.emplace_back(parse_record(in));
    } else if (begins_wire(in)) {
        unit.definitions.emplace_back(parse_wire(in));
    } else if (in.is_word("list")) {
        unit.definitions.emplace_back(parse_list(in));
    } else if (in.is_word("const")) {
        unit.definitions.emplace_back(parse_constant(in));
    } else {
        in.fail("a definition");
    }
}

} // namespace

// unit = { statement } ;
unit_def parse_unit(diagnostics &diag, const std::vector<token> &tokens, std::uint32_t file, const std::string &path)
{
    unit_def unit;
    unit.file = file;
    unit.path = path;
    unit.folder = std::filesystem::path(path).parent_path().generic_string();
    unit.stem = std::filesystem::path(path).stem().generic_string();
    parser in{diag, tokens};
    parse_file(in, [&] { parse_unit_statement(in, unit); });
    return unit;
}

} // namespace solvane::gen::def
