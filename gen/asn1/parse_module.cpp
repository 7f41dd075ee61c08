// Modules, imports and assignments (X.680 clauses 13 and 16 to 18, X.681, X.683).
#include <fmt/format.h>

#include "asn1/parser.h"

namespace solvane::gen::asn1 {
namespace {

// definitive_identifier = [ "{" ... "}" ] ;   the numbers of a module serve nothing here
void skip_module_number(parser &in)
{
    if (in.is("{"))
        in.skip_braces();
}

// exports = [ "EXPORTS" ( "ALL" | symbols ) ";" ] ;   everything can be imported
void skip_exports(parser &in)
{
    if (!in.accept_word("EXPORTS"))
        return;
    while (!in.is(";")) {
        if (in.done() || in.is("::="))
            in.fail("';' behind EXPORTS");
        in.next();
    }
    in.next();
}

// symbol = ( type | value ) [ "{" "}" ] ;
name parse_symbol(parser &in)
{
    if (!in.is_kind(token_kind::lower) && !in.is_kind(token_kind::upper))
        in.fail("a name to import");
    const token &t = in.next();
    if (in.is("{") && in.is("}", 1))
        in.skip_braces();
    return {t.text, t.where};
}

// import_list = symbol { "," symbol } "FROM" module [ module_number ] ;
import_list parse_import_list(parser &in)
{
    import_list list;
    do
        list.symbols.push_back(parse_symbol(in));
    while (in.accept(","));
    in.expect_word("FROM", "the imported names");
    list.from = in.expect_type_name("the name of a module");
    skip_module_number(in);
    return list;
}

// imports = [ "IMPORTS" { import_list } ";" ] ;
void parse_imports(parser &in, module &out)
{
    if (!in.accept_word("IMPORTS"))
        return;
    while (!in.is(";"))
        out.imports.push_back(parse_import_list(in));
    in.next();
}

// parameters = [ "{" parameter { "," parameter } "}" ] ;   parameter = [ governor ":" ] reference ;
void parse_parameters(parser &in, assignment &out)
{
    if (!in.accept("{"))
        return;
    do {
        while (!in.is(",") && !in.is("}") && in.is(":", 1)) {
            out.odd_parameters = true;
            in.next();
            in.next();
        }
        if (!in.is_kind(token_kind::upper) && !in.is_kind(token_kind::lower))
            in.fail("a parameter");
        out.odd_parameters = out.odd_parameters || in.is_kind(token_kind::lower);
        const token &t = in.next();
        out.parameters.push_back({t.text, t.where});
    } while (in.accept(","));
    in.expect("}", "the parameters");
}

// object_class = "CLASS" "{" ... "}" [ "WITH" "SYNTAX" "{" ... "}" ] ;
void skip_class(parser &in)
{
    in.next();
    if (!in.is("{"))
        in.fail("'{' behind CLASS");
    in.skip_braces();
    if (in.accept_word("WITH")) {
        in.expect_word("SYNTAX", "WITH");
        if (!in.is("{"))
            in.fail("'{' behind SYNTAX");
        in.skip_braces();
    }
}

// of_capital = name [ parameters ] ( "::=" ( type | object_class ) | type "::=" "{" ... "}" ) ;
void parse_capital_assignment(parser &in, assignment &out)
{
    out.id = in.expect_type_name("an assignment");
    parse_parameters(in, out);
    if (!in.is("::=")) { // a set of values or objects: the governor tells which
        out.kind = assignment_kind::object_set;
        out.of.push_back(parse_type(in));
        in.expect("::=", "the type");
        if (!in.is("{"))
            in.fail("'{'");
        in.skip_braces();
        return;
    }
    in.next();
    if (in.is_word("CLASS")) {
        out.kind = assignment_kind::object_class;
        skip_class(in);
    } else {
        out.kind = assignment_kind::type;
        out.of.push_back(parse_type(in));
    }
}

// of_small = name [ parameters ] type "::=" value ;   of a class it is an object
void parse_small_assignment(parser &in, assignment &out)
{
    out.kind = assignment_kind::value;
    out.id = in.expect_identifier("an assignment");
    parse_parameters(in, out);
    out.of.push_back(parse_type(in));
    in.expect("::=", "the type");
    out.content = parse_value(in);
}

/// A name at which a new assignment begins: what comes up to `::=` fits one.
bool begins_assignment(const parser &in)
{
    if (in.is_type_name())
        return in.is("::=", 1) || (in.is_type_name(1) && in.is("::=", 2));
    return in.is_kind(token_kind::lower) && in.is_kind(token_kind::upper, 1) && in.is("::=", 2);
}

// assignment = of_capital | of_small ;
void parse_assignment(parser &in, module &out, std::string_view text)
{
    const std::size_t begin = in.peek().begin_at;
    const std::size_t start = in.at;
    try {
        assignment a;
        if (in.is_kind(token_kind::lower))
            parse_small_assignment(in, a);
        else
            parse_capital_assignment(in, a);
        a.source = text_without_comments(text.substr(begin, in.tokens[in.at - 1].end_at - begin));
        out.assignments.push_back(std::move(a));
    } catch (const syntax_error &) {
        in.at += in.at == start;
        while (!in.done() && !in.is_word("END") && !begins_assignment(in))
            in.next();
    }
}

// tag_default = [ ( "EXPLICIT" | "IMPLICIT" | "AUTOMATIC" ) "TAGS" ] [ "EXTENSIBILITY" "IMPLIED" ] ;
void parse_tag_default(parser &in, module &out)
{
    if (in.is_word("EXPLICIT") || in.is_word("IMPLICIT") || in.is_word("AUTOMATIC")) {
        const std::string &word = in.next().text;
        out.automatic_tags = word == "AUTOMATIC";
        out.tags = word == "EXPLICIT" ? tag_mode::explicit_ : tag_mode::implicit;
        in.expect_word("TAGS", word);
    }
    if (in.accept_word("EXTENSIBILITY")) {
        in.expect_word("IMPLIED", "EXTENSIBILITY");
        out.extensibility_implied = true;
    }
}

// module = name [ number ] "DEFINITIONS" tag_default "::=" "BEGIN" exports imports { assignment } "END" ;
module parse_module(parser &in, std::string_view text, std::uint32_t file)
{
    module out;
    out.file = file;
    out.id = in.expect_type_name("a module");
    skip_module_number(in);
    in.expect_word("DEFINITIONS", "the module's name");
    parse_tag_default(in, out);
    in.expect("::=", "DEFINITIONS");
    in.expect_word("BEGIN", "'::='");
    try {
        skip_exports(in);
        parse_imports(in, out);
    } catch (const syntax_error &) {
        while (!in.done() && !in.accept(";") && !begins_assignment(in))
            in.next();
    }
    while (!in.is_word("END") && !in.done())
        parse_assignment(in, out, text);
    in.expect_word("END", "the assignments");
    return out;
}

} // namespace

// file = { module } ;
std::vector<module> parse_modules(diagnostics &diag, std::uint32_t file)
{
    const std::vector<token> tokens = lex(diag, file);
    const std::string        text = diag.text(file);
    parser                   in{diag, tokens};
    std::vector<module>      modules;
    try {
        while (!in.done())
            modules.push_back(parse_module(in, text, file));
    } catch (const syntax_error &) {
        // The head of a module or its END: what follows cannot be told.
    }
    return modules;
}

} // namespace solvane::gen::asn1
