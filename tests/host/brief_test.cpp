// The short form of a value tree: what serves other members is left out, what has content stays.
#include <gtest/gtest.h>

#include "asn1_text.h"
#include "print.h"

namespace solvane::tools {
namespace {

value_node number(const char *name, std::int64_t value)
{
    value_node node;
    node.name = name;
    node.number = value;
    return node;
}

value_node with_form(const char *name, shape form)
{
    value_node node;
    node.name = name;
    node.form = form;
    return node;
}

std::string names(const value_node &node)
{
    std::string out;
    for (const auto &each : node.children) {
        out += each.name + " ";
    }
    return out;
}

TEST(brief, leaves_out_what_serves_another_member)
{
    value_node record = with_form("", shape::record);
    value_node digits = with_form("digits", shape::octets);
    digits.bytes = {1, 2, 3, 4};
    value_node empty = with_form("rest", shape::octets);
    empty.bytes = {0, 0};
    value_node pointer = with_form("apn", shape::pointer);
    pointer.number = 0x1000;
    pointer.children = {with_form("", shape::octets)};
    pointer.children[0].bytes = {7};
    record.children = {number("lai_present", 0), with_form("lai", shape::absent), number("follow_on_present", 0),
                       number("cts_present", 1), number("no_digits", 3), digits, number("no_rest", 0), empty,
                       number("no_apn", 1), number("apn_size", 1), pointer, with_form("tft", shape::pointer),
                       number("causeOpt", 1), number("cause", 5), number("frame_size", 9), number("no_one", 1)};
    const value_node out = brief(record);
    EXPECT_EQ(names(out), "cts_present digits apn cause frame_size no_one ");
    EXPECT_EQ(out.children[1].bytes, (octets{1, 2, 3}));
    EXPECT_EQ(out.children[2].form, shape::octets) << "a pointer stands for what it leads to";
    EXPECT_EQ(out.children[2].bytes, (octets{7}));
}

value_node typed(value_node node, const char *type)
{
    node.type = type;
    return node;
}

TEST(asn1_text, writes_the_value_notation)
{
    value_node octets_value = typed(with_form("nas_Message", shape::record), "AsnOcts");
    octets_value.children = {number("octetLen", 2), with_form("octs", shape::octets)};
    octets_value.children[1].bytes = {0x07, 0x45};
    value_node bits = typed(with_form("cell_Id", shape::record), "AsnBits");
    bits.children = {number("bitLen", 3), with_form("bits", shape::octets)};
    bits.children[1].bytes = {0xA0};
    value_node digit = typed(bits, "AsnBits");
    digit.name = "mask";
    digit.children[0].number = 8;
    value_node cause = typed(number("cause", 1), "Lte_Cause");
    cause.literal = "Lte_Cause_high_Priority";
    value_node list = with_form("bands", shape::list);
    list.children = {number("", 3), typed(number("", 0), "AsnBool")};
    value_node choice = with_form("c1", shape::record);
    value_node chosen = with_form("a", shape::record);
    chosen.children = {typed(with_form("release", shape::record), "AsnNull")};
    choice.children = {number("ChoiceId", 0), chosen};
    value_node unknown = with_form("c2", shape::record);
    unknown.children = {number("ChoiceId", 7), with_form("a", shape::absent)};
    value_node message = with_form("", shape::record);
    message.children = {octets_value, bits, digit, cause, list, choice, unknown, with_form("e", shape::record)};
    EXPECT_EQ(asn1_text(message), R"({
    nas-Message '0745'H,
    cell-Id '101'B,
    mask 'a0'H,
    cause high-Priority,
    bands {
        3,
        FALSE
    },
    c1 release : NULL,
    c2 -- alternative 7, of a later release --,
    e { }
})");
}

} // namespace
} // namespace solvane::tools
