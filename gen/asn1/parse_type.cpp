// Types (X.680 clauses 17 to 31).
#include <utility>

#include <fmt/format.h>

#include "asn1/parser.h"

namespace solvane::gen::asn1 {
namespace {

// tag = "[" [ class ] number "]" [ "IMPLICIT" | "EXPLICIT" ] ;
void parse_tags(parser &in, type &out)
{
    while (in.accept("[")) {
        tag t;
        if (in.accept_word("UNIVERSAL"))
            t.where_from = tag_class::universal;
        else if (in.accept_word("APPLICATION"))
            t.where_from = tag_class::application;
        else if (in.accept_word("PRIVATE"))
            t.where_from = tag_class::private_;
        t.number = parse_value(in);
        in.expect("]", "the tag");
        if (in.accept_word("IMPLICIT"))
            t.mode = tag_mode::implicit;
        else if (in.accept_word("EXPLICIT"))
            t.mode = tag_mode::explicit_;
        out.tags.push_back(std::move(t));
    }
}

// named_number = identifier [ "(" value ")" ] ;
named_number parse_named_number(parser &in, std::string_view what)
{
    named_number n;
    n.id = in.expect_identifier(what);
    if (in.accept("(")) {
        n.number = parse_value(in);
        in.expect(")", "the number");
    }
    return n;
}

// exception = [ "!" value ] ;   what a marker says of an error serves nothing here
void skip_exception(parser &in)
{
    if (in.accept("!"))
        parse_value(in);
}

// enumerated = "{" item { "," ( item | "..." ) } "}" ;
void parse_enumeration(parser &in, type &out)
{
    in.expect("{", "ENUMERATED");
    do {
        if (in.accept("...")) {
            if (out.extensible)
                in.fail("an enumerator: the extension marker stands once");
            out.extensible = true;
            skip_exception(in);
            continue;
        }
        out.numbers.push_back(parse_named_number(in, "an enumerator"));
        out.numbers.back().is_addition = out.extensible;
    } while (in.accept(","));
    in.expect("}", "the enumerators");
}

// named_numbers = [ "{" named_number { "," named_number } "}" ] ;
void parse_named_numbers(parser &in, type &out)
{
    if (!in.is("{"))
        return;
    in.next();
    do
        out.numbers.push_back(parse_named_number(in, "a name"));
    while (in.accept(","));
    in.expect("}", "the names");
}

// presence = [ "OPTIONAL" | "DEFAULT" value ] ;
void parse_presence(parser &in, member &out)
{
    if (in.accept_word("OPTIONAL")) {
        out.presence = presence::optional;
    } else if (in.accept_word("DEFAULT")) {
        out.presence = presence::with_default;
        out.fallback = parse_value(in);
    }
}

// component = identifier type presence | "COMPONENTS" "OF" type ;
member parse_component(parser &in)
{
    member m;
    if (in.is_word("COMPONENTS")) {
        m.id = {in.peek().text, in.peek().where};
        in.next();
        in.expect_word("OF", "COMPONENTS");
        m.is_components_of = true;
        m.of.push_back(parse_type(in));
        return m;
    }
    m.id = in.expect_identifier("a member");
    m.of.push_back(parse_type(in));
    parse_presence(in, m);
    return m;
}

// group = "[[" [ number ":" ] component { "," component } "]]" ;
member parse_group(parser &in, std::uint32_t number)
{
    member m;
    m.id = {fmt::format("bracket_{}", number), in.peek().where};
    m.is_group = m.is_addition = true;
    m.presence = presence::optional;
    type group;
    group.kind = type_kind::sequence;
    group.where = in.next().where;
    if (in.is_kind(token_kind::number) && in.is(":", 1)) {
        in.next();
        in.next();
    }
    do
        group.members.push_back(parse_component(in));
    while (in.accept(","));
    in.expect("]]", "the group");
    m.of.push_back(std::move(group));
    return m;
}

// components = "{" [ ( component | group | "..." ) { "," ( component | group | "..." ) } ] "}" ;
// Behind a second marker stand members of the root again.
void parse_components(parser &in, type &out, std::string_view behind)
{
    in.expect("{", behind);
    int           markers = 0;
    std::uint32_t groups = 0;
    while (!in.is("}")) {
        if (in.accept("...")) {
            out.extensible = true;
            if (++markers > 2)
                in.fail("a member: there are two extension markers at most");
            skip_exception(in);
        } else if (in.is("[[")) {
            if (markers != 1)
                in.fail("'...' ahead of a group");
            out.members.push_back(parse_group(in, ++groups));
        } else {
            out.members.push_back(parse_component(in));
            out.members.back().is_addition = markers == 1;
        }
        if (!in.accept(","))
            break;
    }
    in.expect("}", "the members");
}

/// The constraint between SEQUENCE or SET and OF.
// size = [ "(" ... ")" | "SIZE" "(" ... ")" ] ;
void parse_list_size(parser &in, type &out)
{
    if (in.is_word("SIZE")) {
        constraint_set set;
        set.where = in.peek().where;
        constraint size;
        size.kind = constraint::what::size;
        size.where = in.next().where;
        size.inner = parse_constraints(in);
        set.any_of.push_back(std::move(size));
        out.constraints.push_back(std::move(set));
    } else if (in.is("(")) {
        out.constraints = parse_constraints(in);
    }
}

// list = ( "SEQUENCE" | "SET" ) [ size ] "OF" [ identifier ] type ;   sequence = ( "SEQUENCE" | "SET" ) components ;
void parse_sequence(parser &in, type &out)
{
    const bool set = in.next().text == "SET";
    if (in.is("{")) {
        out.kind = set ? type_kind::set : type_kind::sequence;
        parse_components(in, out, set ? "SET" : "SEQUENCE");
        return;
    }
    out.kind = set ? type_kind::set_of : type_kind::sequence_of;
    parse_list_size(in, out);
    in.expect_word("OF", set ? "SET" : "SEQUENCE");
    if (in.is_kind(token_kind::lower))
        in.next();
    out.element.push_back(parse_type(in));
}

/// One argument: a type, or something else that is skipped.
void parse_argument(parser &in, type &out)
{
    const bool is_type = in.is_kind(token_kind::upper) || in.is("[");
    if (is_type) {
        out.arguments.push_back(parse_type(in));
        return;
    }
    out.other_arguments = true;
    if (in.is("{"))
        in.skip_braces();
    else
        parse_value(in);
}

// reference = [ module "." ] name [ "{" argument { "," argument } "}" ] | class ".&" field ;
void parse_reference(parser &in, type &out)
{
    out.kind = type_kind::reference;
    out.text = in.expect_type_name("a type").text;
    if (in.is(".") && in.is("&", 1)) {
        in.next();
        in.next();
        out.kind = type_kind::class_field;
        out.field = in.next().text;
        while (in.is(".") && in.is("&", 1)) {
            in.next();
            in.next();
            out.field = in.next().text;
        }
        return;
    }
    if (in.is(".") && in.is_type_name(1)) {
        in.next();
        out.module = std::exchange(out.text, in.next().text);
    }
    if (in.accept("{")) {
        do
            parse_argument(in, out);
        while (in.accept(","));
        in.expect("}", "the arguments");
    }
}

bool is_character_string(std::string_view word)
{
    return word.ends_with("String") || word == "GeneralizedTime" || word == "UTCTime" || word == "ObjectDescriptor";
}

// any = "ANY" [ "DEFINED" "BY" identifier ] ;
void parse_any(parser &in, type &out)
{
    out.kind = type_kind::any;
    in.next();
    if (in.accept_word("DEFINED")) {
        in.expect_word("BY", "DEFINED");
        out.text = in.expect_identifier("a member").text;
    }
}

// plain = "BOOLEAN" | "NULL" | "REAL" | "INTEGER" numbers | "BIT" "STRING" numbers | "OCTET" "STRING" | ... ;
void parse_plain(parser &in, type &out)
{
    const std::string word = in.peek().text;
    const auto        take = [&](type_kind kind, std::string_view second = {}) {
        out.kind = kind;
        in.next();
        if (!second.empty())
            in.expect_word(second, word);
    };
    if (word == "BOOLEAN")
        take(type_kind::boolean);
    else if (word == "NULL")
        take(type_kind::null);
    else if (word == "REAL")
        take(type_kind::real);
    else if (word == "INTEGER")
        take(type_kind::integer);
    else if (word == "BIT")
        take(type_kind::bits, "STRING");
    else if (word == "OCTET")
        take(type_kind::octets, "STRING");
    else if (word == "OBJECT")
        take(type_kind::object_identifier, "IDENTIFIER");
    else if (word == "ENUMERATED")
        take(type_kind::enumerated);
    else if (word == "CHOICE")
        take(type_kind::choice);
    else if (word == "SEQUENCE" || word == "SET")
        parse_sequence(in, out);
    else if (word == "ANY")
        parse_any(in, out);
    else
        in.fail("a type");
    if (out.kind == type_kind::integer || out.kind == type_kind::bits)
        parse_named_numbers(in, out);
    if (out.kind == type_kind::enumerated)
        parse_enumeration(in, out);
    if (out.kind == type_kind::choice)
        parse_components(in, out, "CHOICE");
}

} // namespace

// type = { tag } ( plain | reference ) { constraint } ;
type parse_type(parser &in)
{
    type out;
    out.where = in.peek().where;
    parse_tags(in, out);
    if (!in.is_kind(token_kind::upper))
        in.fail("a type");
    if (is_character_string(in.peek().text)) {
        out.kind = type_kind::characters;
        out.text = in.next().text;
    } else if (is_reserved(in.peek().text)) {
        parse_plain(in, out);
    } else {
        parse_reference(in, out);
    }
    for (constraint_set &set : parse_constraints(in))
        out.constraints.push_back(std::move(set));
    return out;
}

} // namespace solvane::gen::asn1
