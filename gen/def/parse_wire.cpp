// Recursive descent over elements and messages: items and the lines of message tables.
#include "def/parse_wire.h"

#include <array>
#include <string_view>

#include "def/parse_members.h"

namespace solvane::gen::def {
namespace {

using item_kind = wire_item_def::what;

// ------------------------------------------------------------------------------------------------ conditions

// comparison = ( "==" | "!=" | "<" | "<=" | ">" | ">=" | "&" ) expression ;
void parse_comparison(parser &in, condition_def &c)
{
    struct sign {
        std::string_view    text;
        condition_def::what kind;
    };
    constexpr std::array<sign, 7> signs = {{{"==", condition_def::what::equal},
                                            {"!=", condition_def::what::unequal},
                                            {"<", condition_def::what::less},
                                            {"<=", condition_def::what::less_equal},
                                            {">", condition_def::what::greater},
                                            {">=", condition_def::what::greater_equal},
                                            {"&", condition_def::what::mask}}};
    for (const sign &s : signs) {
        if (in.accept(s.text)) {
            c.kind = s.kind;
            c.value = parse_expression(in);
            return;
        }
    }
}

// condition = "left" [ "(" expression ")" ] | "!" name | name [ comparison ] ;
condition_def parse_condition(parser &in)
{
    condition_def c;
    const bool    clear = in.accept("!");
    c.member = in.expect_identifier("a member");
    if (clear) {
        c.kind = condition_def::what::clear;
    } else if (c.member.text == "left") {
        c.kind = condition_def::what::left;
        if (in.accept("(")) {
            c.value = parse_expression(in);
            in.expect(")", "the number of octets");
        }
    } else {
        parse_comparison(in, c);
    }
    return c;
}

// conditions = condition { "&&" condition } ;
std::vector<condition_def> parse_conditions(parser &in)
{
    std::vector<condition_def> all;
    do
        all.push_back(parse_condition(in));
    while (in.accept("&&"));
    return all;
}

// ------------------------------------------------------------------------------------------------ items

void parse_item(parser &in, std::vector<wire_item_def> &items);

// items = "{" { item } "}" ;
std::vector<wire_item_def> parse_items(parser &in, std::string_view behind)
{
    std::vector<wire_item_def> items;
    parse_block(in, behind, [&] { parse_item(in, items); });
    return items;
}

// spare = "spare" ":" expression [ "=" expression ] ";" | "spare" "M" "V1" ";" ;
void parse_spare(parser &in, wire_item_def &item)
{
    item.kind = item_kind::spare;
    if (in.accept_word("M")) {
        in.expect_word("V1");
        item.kind = item_kind::line;
        item.is_spare = true;
        item.format = wire_format::half;
    } else {
        in.expect(":", "'spare'");
        item.width = parse_expression(in);
        if (in.accept("="))
            item.value = parse_expression(in);
    }
    in.expect_semicolon("the spare bits");
}

// part = name { "[" expression "]" | "." name } [ ":" expression ] ;
wire_item_def::part parse_part(parser &in)
{
    wire_item_def::part p;
    do {
        p.ref.steps.push_back({in.expect_identifier("a member"), std::nullopt});
        if (in.accept("[")) {
            p.ref.steps.back().index = parse_expression(in);
            in.expect("]", "the index");
        }
    } while (in.accept("."));
    if (in.accept(":"))
        p.width = parse_expression(in);
    return p;
}

// parts = "wire" part { "," part } ";" ;
void parse_parts(parser &in, wire_item_def &item)
{
    item.kind = item_kind::parts;
    do
        item.parts.push_back(parse_part(in));
    while (in.accept(","));
    in.expect_semicolon("the parts");
}

// flag = "flag" [ "!" ] ( "any" "(" name ")" | name [ "=" conditions ] ) ";" ;
void parse_flag(parser &in, wire_item_def &item)
{
    item.kind = item_kind::flag;
    item.inverse = in.accept("!");
    item.id = in.expect_identifier("a member");
    if (item.id.text == "any" && in.accept("(")) {
        item.any = true;
        item.id = in.expect_identifier("an array");
        in.expect(")", "the array");
    } else if (!item.inverse && in.accept("=")) {
        item.conditions = parse_conditions(in);
    }
    in.expect_semicolon("the flag");
}

// group = "if" "(" conditions ")" items [ "else" items ] ;
void parse_group(parser &in, wire_item_def &item)
{
    item.kind = item_kind::group;
    in.expect("(", "'if'");
    item.conditions = parse_conditions(in);
    in.expect(")", "the condition");
    item.items = parse_items(in, "the condition");
    if (in.accept_word("else"))
        item.otherwise = parse_items(in, "'else'");
}

// trim = "trim" "(" name ")" ;
std::optional<name> parse_trim(parser &in)
{
    if (!in.is_word("trim") || !in.is("(", 1))
        return std::nullopt;
    in.next();
    in.next();
    name member = in.expect_identifier("a member");
    in.expect(")", "the member");
    return member;
}

// block = "length" "(" expression ")" name [ trim ] items ;
void parse_length_block(parser &in, wire_item_def &item)
{
    item.kind = item_kind::block;
    in.expect("(", "'length'");
    item.width = parse_expression(in);
    in.expect(")", "the width");
    item.id = in.expect_identifier("a name");
    item.trim = parse_trim(in);
    item.items = parse_items(in, "the name");
}

// within = "within" "(" name ")" [ name ] items ;
void parse_within(parser &in, wire_item_def &item)
{
    item.kind = item_kind::within;
    in.expect("(", "'within'");
    item.id = in.expect_identifier("a member");
    in.expect(")", "the member");
    if (in.is_identifier())
        item.title = in.expect_identifier("a name");
    item.items = parse_items(in, "the size");
}

// ------------------------------------------------------------------------------------------------ lines

bool is_presence(const parser &in, std::size_t ahead = 0)
{
    return in.is_word("M", ahead) || in.is_word("O", ahead) || in.is_word("C", ahead);
}

bool begins_table_columns(const parser &in, std::size_t ahead)
{
    return is_presence(in, ahead) || in.peek(ahead).kind == token_kind::number;
}

// presence = "M" | "O" | "C" ;
void parse_presence(parser &in, wire_item_def &line)
{
    if (!is_presence(in))
        in.fail("the presence: M, O or C");
    const std::string word = in.next().text;
    line.need = word == "M"   ? wire_item_def::presence::mandatory
                : word == "O" ? wire_item_def::presence::optional
                              : wire_item_def::presence::conditional;
}

// format = "V" | "V1" | "LV" [ "-" "E" ] | "T" | "TV" | "TV1" | "TLV" [ "-" "E" ] ;
void parse_format(parser &in, wire_item_def &line)
{
    struct word {
        std::string_view text;
        wire_format      format, extended;
    };
    constexpr std::array<word, 7> words = {{
        {"V", wire_format::value, wire_format::value},
        {"V1", wire_format::half, wire_format::half},
        {"LV", wire_format::length_value, wire_format::length_value_e},
        {"T", wire_format::tag, wire_format::tag},
        {"TV", wire_format::tag_value, wire_format::tag_value},
        {"TV1", wire_format::tag_half, wire_format::tag_half},
        {"TLV", wire_format::tag_length_value, wire_format::tag_length_value_e},
    }};
    for (const word &w : words) {
        if (!in.accept_word(w.text))
            continue;
        line.format = w.format;
        if (w.format != w.extended && in.accept("-")) {
            in.expect_word("E");
            line.format = w.extended;
        }
        return;
    }
    in.fail("the format: V, V1, LV, LV-E, T, TV, TV1, TLV or TLV-E");
}

// length = number [ "/" "2" | ".." ( number | "n" ) ] ;
void parse_line_length(parser &in, wire_item_def &line)
{
    if (in.peek().kind != token_kind::number)
        return;
    const token &t = in.next();
    line.shortest = expression{expression::what::number, t.number, {}, {}, t.where};
    line.exact = true;
    if (t.number == 1 && in.accept("/")) {
        in.expect_number("2");
        line.half_length = true;
    } else if (in.accept("..")) {
        line.exact = false;
        if (!in.accept_word("n")) {
            const place where = in.peek().where;
            line.longest = expression{expression::what::number, in.expect_number("a length or 'n'"), {}, {}, where};
        }
    }
}

// columns = [ identifier ] presence format [ length ] { attribute } [ clause ] ";" ;
void parse_columns(parser &in, wire_item_def &line)
{
    line.kind = item_kind::line;
    if (in.peek().kind == token_kind::number) {
        line.identifier_where = in.peek().where;
        line.identifier = in.next().number;
    }
    parse_presence(in, line);
    parse_format(in, line);
    parse_line_length(in, line);
    while (begins_attribute(in) && line.member)
        line.member->attributes.push_back(parse_attribute(in));
    if (in.is_text())
        line.clause = in.next().text;
    in.expect_semicolon("the line");
}

// line = name columns | type declarator columns ;  member = type declarator [ ":" expression ] { attribute } ";" ;
void parse_line_or_member(parser &in, wire_item_def &item)
{
    if (in.is_identifier() && begins_table_columns(in, 1)) {
        item.id = in.expect_identifier("a name");
        parse_columns(in, item);
        return;
    }
    member_def m;
    m.type = parse_type(in);
    m.decl = parse_declarator(in);
    item.id = m.decl.id;
    if (begins_table_columns(in, 0)) {
        item.member = std::move(m);
        parse_columns(in, item);
        return;
    }
    item.member = parse_member_rest(in, std::move(m));
}

// item = spare | parts | flag | group | block | within | "align" ";" | line | member ;
void parse_item(parser &in, std::vector<wire_item_def> &items)
{
    wire_item_def item;
    item.where = in.peek().where;
    if (in.is_word("spare") && (in.is(":", 1) || in.is_word("M", 1))) {
        in.next();
        parse_spare(in, item);
    } else if (in.accept_word("wire")) {
        parse_parts(in, item);
    } else if (in.accept_word("flag")) {
        parse_flag(in, item);
    } else if (in.accept_word("if")) {
        parse_group(in, item);
    } else if (in.is_word("length") && in.is("(", 1)) {
        in.next();
        parse_length_block(in, item);
    } else if (in.is_word("within") && in.is("(", 1)) {
        in.next();
        parse_within(in, item);
    } else if (in.is_word("align") && in.is(";", 1)) {
        in.next();
        item.kind = item_kind::align;
        in.expect_semicolon("'align'");
    } else {
        parse_line_or_member(in, item);
    }
    items.push_back(std::move(item));
}

bool begins_other_definition(const parser &in)
{
    return begins_wire(in) || ((in.is_word("struct") || in.is_word("union") || in.is_word("enum")) && in.is("{", 2));
}

} // namespace

bool begins_wire(const parser &in)
{
    return (in.is_word("element") || in.is_word("message")) && in.is_identifier(1) &&
           (in.is("{", 2) || in.is_word("length", 2) || in.is_word("uplink", 2) || in.is_word("downlink", 2));
}

// length = "length" "(" expression ")" [ name ] [ trim ] ;
void parse_own_length(parser &in, wire_def &w)
{
    in.expect("(", "'length'");
    w.length = parse_expression(in);
    in.expect(")", "the width");
    const bool direction = in.is_word("uplink") || in.is_word("downlink");
    if (in.is_identifier() && !direction && !in.is("(", 1))
        w.length_name = in.expect_identifier("a name");
    w.trim = parse_trim(in);
}

// wire = ( "element" | "message" ) name [ length ] [ "uplink" | "downlink" ] "{" { item } "}" ;
record_def parse_wire(parser &in)
{
    record_def r;
    wire_def   w;
    w.is_message = in.next().text == "message";
    r.id = in.expect_identifier("a name");
    if (in.accept_word("length"))
        parse_own_length(in, w);
    if (in.accept_word("uplink"))
        w.direction = wire_direction::uplink;
    else if (in.accept_word("downlink"))
        w.direction = wire_direction::downlink;
    in.expect("{", "the name");
    while (!in.is("}") && !in.done() && !begins_other_definition(in))
        parse_statement(in, [&] { parse_item(in, w.items); });
    close_block(in, r.id.text);
    r.wire = std::move(w);
    return r;
}

} // namespace solvane::gen::def
