// Types, declarators, attributes and members: what structures and wire formats share.
#include "def/parse_members.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace solvane::gen::def {
namespace {

bool is_basic_word(std::string_view word)
{
    constexpr std::array<std::string_view, 7> words = {"unsigned", "signed", "long", "int", "short", "char", "void"};
    for (const std::string_view w : words) {
        if (word == w)
            return true;
    }
    return false;
}

constexpr std::array basic_kinds = {kind::unsigned_long, kind::signed_long,    kind::unsigned_int, kind::signed_int,
                                    kind::unsigned_short, kind::signed_short, kind::unsigned_char, kind::plain_char,
                                    kind::signed_char,   kind::nothing};

// basic_type = "unsigned" "long" | "long" | … | "void" ;
type_ref parse_basic_type(parser &in)
{
    type_ref type{{{}, in.peek().where}, true, {}};
    while (in.is_identifier() && is_basic_word(in.peek().text))
        type.written.text += (type.written.text.empty() ? "" : " ") + in.next().text;
    for (const kind base : basic_kinds) {
        if (basic_name(base) == type.written.text) {
            type.use.base = base;
            return type;
        }
    }
    in.diag.error(type.written.where, "'" + type.written.text + "' is no base type: there are unsigned long, long, "
                                      "unsigned int, int, unsigned short, short, unsigned char, char, signed char "
                                      "and void");
    throw syntax_error{};
}

} // namespace

// type = basic_type | name ;
type_ref parse_type(parser &in)
{
    if (in.is_identifier() && is_basic_word(in.peek().text))
        return parse_basic_type(in);
    return {in.expect_identifier("a type"), false, {}};
}

// declarator = { "*" } name { "[" expression "]" } ;
declarator parse_declarator(parser &in)
{
    declarator d;
    while (in.accept("*"))
        ++d.pointers;
    d.id = in.expect_identifier("a name");
    while (in.accept("[")) {
        d.arrays.push_back(parse_expression(in));
        in.expect("]", "the array size");
    }
    return d;
}

namespace {

/// The name in `counted(name)`.
name parse_target(parser &in)
{
    in.expect("(", "the attribute");
    name target = in.expect_identifier("a member");
    in.expect(")", "the member");
    return target;
}

expression parse_argument(parser &in)
{
    in.expect("(", "the attribute");
    expression value = parse_expression(in);
    in.expect(")", "the value");
    return value;
}

void parse_peek(parser &in, attribute &a)
{
    in.expect("(", "the attribute");
    a.value = parse_expression(in);
    in.expect(",", "the offset");
    a.second = parse_expression(in);
    in.expect(")", "the width");
}

/// What stands behind an attribute's word.
enum class argument : std::uint8_t { none, target, target_or_none, value, value_or_none, two_values };

struct attribute_word {
    std::string_view word;
    argument         takes;
};

constexpr std::array<attribute_word, no_attributes> attribute_words = {{ // ORDER attributes
    {"counted", argument::target},
    {"uncounted", argument::none},
    {"optional", argument::target_or_none},
    {"selected", argument::target},
    {"case", argument::value},
    {"hidden", argument::none},
    {"rt_selector", argument::value},
    {"bits", argument::value},
    {"minus", argument::value},
    {"peek", argument::two_values},
    {"lh", argument::none},
    {"off_wire", argument::none},
    {"length", argument::value},
    {"to_end", argument::none},
    {"chained", argument::none},
    {"bcd", argument::value_or_none},
    {"linked", argument::none},
}};

std::size_t attribute_at(const parser &in)
{
    const auto found = std::find_if(attribute_words.begin(), attribute_words.end(),
                                    [&](const attribute_word &w) { return in.is_word(w.word); });
    return static_cast<std::size_t>(found - attribute_words.begin());
}

} // namespace

std::string_view spelled(attribute::what kind)
{
    return attribute_words[static_cast<std::size_t>(kind)].word;
}

// attribute = word [ "(" ( name | expression [ "," expression ] ) ")" ] ;
attribute parse_attribute(parser &in)
{
    const std::size_t n = attribute_at(in);
    if (n == no_attributes)
        in.fail("an attribute or ';'");
    attribute a;
    a.kind = static_cast<attribute::what>(n);
    a.where = in.next().where;
    switch (attribute_words[n].takes) {
    case argument::none: break;
    case argument::target: a.target = parse_target(in); break;
    case argument::value: a.value = parse_argument(in); break;
    case argument::two_values: parse_peek(in, a); break;
    case argument::target_or_none:
        if (in.is("("))
            a.target = parse_target(in);
        break;
    case argument::value_or_none:
        if (in.is("("))
            a.value = parse_argument(in);
        break;
    }
    return a;
}

/// On a further line only a known attribute continues a member; anything else is the next one, a `;` forgotten.
bool begins_attribute(const parser &in)
{
    if (!in.is_identifier())
        return false;
    return in.peek().where.line == in.tokens[in.at - 1].end.line || attribute_at(in) != no_attributes;
}

// member_rest = [ ":" expression ] { attribute } ";" ;
member_def parse_member_rest(parser &in, member_def m)
{
    if (in.accept(":"))
        m.width = parse_expression(in);
    while (begins_attribute(in))
        m.attributes.push_back(parse_attribute(in));
    in.expect_semicolon("the member");
    return m;
}

// member = type declarator member_rest ;
member_def parse_member(parser &in)
{
    member_def m;
    m.type = parse_type(in);
    m.decl = parse_declarator(in);
    return parse_member_rest(in, std::move(m));
}

// end = "}" [ ";" ] ;
void close_block(parser &in, const std::string &of)
{
    if (!in.accept("}")) {
        const place &where = in.done() ? in.tokens[in.at - 1].end : in.peek().where;
        in.diag.error(where, "expected '}' at the end of '" + of + "'");
    }
    in.accept(";");
}

} // namespace solvane::gen::def
