// The short form of a value tree: what serves other members is left out, what has content stays.
#include <gtest/gtest.h>

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

} // namespace
} // namespace solvane::tools
