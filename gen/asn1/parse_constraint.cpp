// Constraints and values (X.680 clauses 17, 49 to 53, X.682).
#include <limits>

#include <fmt/format.h>

#include "asn1/parser.h"

namespace solvane::gen::asn1 {
namespace {

// end_value = "MIN" | "MAX" | value ;   none for MIN and MAX
std::optional<value> parse_end(parser &in)
{
    if (in.accept_word("MIN") || in.accept_word("MAX"))
        return std::nullopt;
    return parse_value(in);
}

// range = end_value [ [ "<" ] ".." [ "<" ] end_value ] ;
void parse_range(parser &in, constraint &out)
{
    out.kind = constraint::what::range;
    out.low = parse_end(in);
    out.high = out.low;
    if (in.is("<"))
        in.fail("'..': open ends are not supported");
    if (!in.accept(".."))
        return;
    if (in.is("<"))
        in.fail("a bound: open ends are not supported");
    out.high = parse_end(in);
}

// containing = "CONTAINING" type [ "ENCODED" "BY" value ] ;
void parse_containing(parser &in, constraint &out)
{
    out.kind = constraint::what::containing;
    in.next();
    out.types.push_back(parse_type(in));
    if (in.accept_word("ENCODED")) {
        in.expect_word("BY", "ENCODED");
        parse_value(in);
    }
}

// element = size | alphabet | containing | components | table | described | subtype | range | "(" ... ")" ;
constraint parse_element(parser &in)
{
    constraint c;
    c.where = in.peek().where;
    if (in.is_word("SIZE") || in.is_word("FROM")) {
        c.kind = in.next().text == "SIZE" ? constraint::what::size : constraint::what::alphabet;
        c.inner = parse_constraints(in);
        if (c.inner.empty())
            in.fail("'('");
    } else if (in.is_word("CONTAINING")) {
        parse_containing(in, c);
    } else if (in.accept_word("WITH")) { // COMPONENT restricts elements, COMPONENTS the presence of members
        c.kind = constraint::what::components;
        if (in.accept_word("COMPONENT"))
            parse_constraints(in);
        else {
            in.expect_word("COMPONENTS", "WITH");
            in.skip_braces();
        }
    } else if (in.accept_word("CONSTRAINED")) {
        c.kind = constraint::what::described;
        in.expect_word("BY", "CONSTRAINED");
        in.skip_braces();
    } else if (in.accept_word("PATTERN")) {
        c.kind = constraint::what::described;
        parse_value(in);
    } else if (in.is("{")) { // of an information object class
        c.kind = constraint::what::table;
        in.skip_braces();
        if (in.is("{"))
            in.skip_braces();
    } else if (in.is_type_name() || in.is_word("INCLUDES")) {
        c.kind = constraint::what::subtype;
        in.accept_word("INCLUDES");
        c.types.push_back(parse_type(in));
    } else if (in.is_word("ALL")) {
        in.fail("a constraint: ALL EXCEPT is not supported");
    } else {
        parse_range(in, c);
    }
    return c;
}

// constraint = "(" element { ( "|" | "UNION" ) element } [ "," "..." [ "," element ] ] ")" ;
constraint_set parse_constraint(parser &in)
{
    constraint_set set;
    set.where = in.next().where;
    do {
        if (in.accept("(")) { // grouping alone
            --in.at;
            for (constraint &c : parse_constraint(in).any_of)
                set.any_of.push_back(std::move(c));
        } else {
            set.any_of.push_back(parse_element(in));
        }
        if (in.is("^") || in.is_word("INTERSECTION") || in.is_word("EXCEPT"))
            in.fail("')': intersections and exceptions are not supported");
    } while (in.accept("|") || in.accept_word("UNION"));
    if (in.accept(",")) {
        in.expect("...", "','");
        set.extensible = true;
        if (in.accept(",")) // what a later version allows
            parse_element(in);
    }
    if (in.accept("!"))
        parse_value(in);
    in.expect(")", "the constraint");
    return set;
}

std::int64_t number_of(parser &in, const token &t, bool negative)
{
    constexpr std::uint64_t most = std::numeric_limits<std::int64_t>::max();
    if (t.number > most)
        in.diag.error(t.where, fmt::format("'{}' does not fit 64 bits with a sign", t.text));
    const auto number = static_cast<std::int64_t>(t.number & most);
    return negative ? -number : number;
}

/// Words of a value in braces, as the named bits of a BIT STRING; anything else in them is skipped.
void parse_braces(parser &in, value &out)
{
    out.kind = value::what::braces;
    for (std::size_t ahead = 1; in.is_kind(token_kind::lower, ahead); ++ahead) {
        out.names.push_back({in.peek(ahead).text, in.peek(ahead).where});
        if (in.is(",", ahead + 1))
            ++ahead;
    }
    in.skip_braces();
}

void parse_word_value(parser &in, value &out)
{
    const token &t = in.next();
    if (t.text == "TRUE" || t.text == "FALSE") {
        out.kind = value::what::boolean;
        out.number = t.text == "TRUE";
    } else if (t.text == "NULL") {
        out.kind = value::what::null;
    } else {
        out.kind = value::what::reference;
        out.text = t.text;
        if (t.kind == token_kind::upper) {
            out.module = t.text;
            in.expect(".", "the name of a module");
            out.text = in.expect_identifier("a value").text;
        } else if (in.accept(":")) { // identifier ":" value, of a CHOICE
            out = parse_value(in);
            out.kind = value::what::braces;
        }
    }
}

} // namespace

// constraints = { constraint } ;
std::vector<constraint_set> parse_constraints(parser &in)
{
    std::vector<constraint_set> sets;
    while (in.is("("))
        sets.push_back(parse_constraint(in));
    return sets;
}

// value = [ "-" ] number | bits | hex | text | "TRUE" | "FALSE" | "NULL" | [ module "." ] name | "{" ... "}" ;
value parse_value(parser &in)
{
    value        out;
    const token &t = in.peek();
    out.where = t.where;
    if (in.is("-") || t.kind == token_kind::number) {
        const bool negative = in.accept("-");
        if (!in.is_kind(token_kind::number))
            in.fail("a number");
        out.kind = value::what::number;
        out.number = number_of(in, in.next(), negative);
        return out;
    }
    switch (t.kind) {
    case token_kind::bits: out.kind = value::what::bits; break;
    case token_kind::hex: out.kind = value::what::hex; break;
    case token_kind::text: out.kind = value::what::text; break;
    case token_kind::upper:
    case token_kind::lower: parse_word_value(in, out); return out;
    case token_kind::punctuation:
        if (!in.is("{"))
            in.fail("a value");
        parse_braces(in, out);
        return out;
    case token_kind::number:
    case token_kind::end: in.fail("a value");
    }
    out.text = in.next().text;
    return out;
}

} // namespace solvane::gen::asn1
