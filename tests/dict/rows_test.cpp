// The rows of the dictionary against the rules that bind them to each other: every index is the next free one of
// the documented walk, every name and kind leads to the row that it says, every role has the partner that it needs.
#include <map>
#include <set>

#include "dictionary.h"

using namespace dictionary;

namespace {

using rows = each_domain;
FOR_EACH_DOMAIN(rows);

/// Checks the array levels of a row against the running index.
void walk_dims(std::span<const rw_dim_row> levels, std::uint32_t &next, const std::string &where)
{
    for (const rw_dim_row &level : levels) {
        if (level.dim_class == RW_PC_POINTERTO) {
            EXPECT_EQ(level.array_size_index, RW_NO_INDEX) << where;
            continue;
        }
        EXPECT_EQ(level.dim_class, RW_PC_ARRAYOF) << where;
        EXPECT_EQ(level.array_size_index, next++) << where;
    }
}

std::string place_of(const rw_struct_row &s, const rw_member_row &m)
{
    return std::string(s.name) + "." + m.name;
}

TEST_P(rows, every_index_is_the_next_free_one)
{
    std::uint32_t next = 0;
    std::uint32_t next_bit_field = 0;
    for (const rw_enum_row &e : enums(tool()))
        EXPECT_EQ(e.ordinal, next++) << e.name;
    for (const rw_struct_row &s : structs(tool())) {
        EXPECT_EQ(s.size_index, next++) << s.name;
        for (const rw_member_row &m : members(s)) {
            const std::string where = place_of(s, m);
            if (m.kind == RW_KIND_BIT_FIELD)
                EXPECT_EQ(m.offsize_index, next_bit_field++) << where;
            else if (s.kind == RW_KIND_UNION)
                EXPECT_EQ(m.offsize_index, RW_NO_INDEX) << where;
            else
                EXPECT_EQ(m.offsize_index, next++) << where;
            walk_dims(dims(m), next, where);
        }
    }
    for (const rw_type_row &t : types(tool()))
        walk_dims(dims(t), next, t.name);
    EXPECT_EQ(next, tool().no_offsize);
    EXPECT_EQ(next, target().no_offsize);
    EXPECT_EQ(next, sup().no_offsize);
    EXPECT_EQ(next_bit_field, sup().no_bit_sizes);
}

TEST_P(rows, names_stand_once)
{
    std::set<std::string_view> type_names, struct_names, enum_names, literal_names;
    for (const rw_type_row &t : types(tool()))
        EXPECT_TRUE(type_names.insert(t.name).second) << t.name;
    for (const rw_struct_row &s : structs(tool())) {
        EXPECT_TRUE(struct_names.insert(s.name).second) << s.name;
        std::set<std::string_view> member_names;
        for (const rw_member_row &m : members(s))
            EXPECT_TRUE(member_names.insert(m.name).second) << place_of(s, m);
    }
    for (const rw_enum_row &e : enums(tool())) {
        EXPECT_TRUE(enum_names.insert(e.name).second) << e.name;
        for (const rw_literal_row &l : literals(e))
            EXPECT_TRUE(literal_names.insert(l.name).second) << l.name;
    }
}

TEST_P(rows, structures_and_enumerations_are_known_as_types)
{
    for (std::uint32_t n = 0; n < tool().no_structs; ++n) {
        const rw_struct_row     &s = tool().structs[n];
        const rw_type_row *const t = find(types(tool()), s.name);
        EXPECT_TRUE(s.kind == RW_KIND_STRUCT || s.kind == RW_KIND_UNION) << s.name;
        EXPECT_EQ(s.reserved, 0U) << s.name;
        ASSERT_NE(t, nullptr) << s.name;
        EXPECT_EQ(t->kind, s.kind) << s.name;
        EXPECT_STREQ(t->base_name, s.name);
        EXPECT_EQ(t->type_index, n) << s.name;
    }
    for (std::uint32_t n = 0; n < tool().no_enums; ++n) {
        const rw_enum_row &e = tool().enums[n];
        const auto         knows = [&](const rw_type_row &t) {
            return t.kind == RW_KIND_ENUM && t.type_index == n && t.no_dims == 0;
        };
        EXPECT_TRUE(std::ranges::any_of(types(tool()), knows)) << e.name;
    }
}

/// Numbers of the anonymous enumerations count up from 15000.
TEST_P(rows, anonymous_enumerations_are_numbered)
{
    std::uint32_t next = 15000;
    for (const rw_enum_row &e : enums(tool()))
        if (e.name[0] >= '0' && e.name[0] <= '9') {
            EXPECT_EQ(e.name, std::to_string(next++));
        }
}

TEST_P(rows, literals_have_a_value_or_say_that_they_have_none)
{
    for (const rw_enum_row &e : enums(tool()))
        for (const rw_literal_row &l : literals(e)) {
            EXPECT_TRUE(l.value.valstat == RW_VS_VALID_VAL || l.value.valstat == RW_VS_INVAL_ASSIGNED) << l.name;
            EXPECT_TRUE(l.value.valstat == RW_VS_VALID_VAL || l.value.num == 0) << l.name;
        }
}

// --------------------------------------------------------------------------------- where a type name leads to

/// Kind, name and row of a type as a member row or a type row gives them.
struct type_reference {
    std::string   where;
    std::uint32_t kind;
    const char   *name;
    std::uint32_t type_index;
};

const char *basic_name(std::uint32_t kind)
{
    switch (kind) {
    case RW_KIND_UNSIGNED_LONG: return "unsigned long";
    case RW_KIND_LONG: return "long";
    case RW_KIND_UNSIGNED_INT: return "unsigned int";
    case RW_KIND_INT: return "int";
    case RW_KIND_UNSIGNED_SHORT: return "unsigned short";
    case RW_KIND_SHORT: return "short";
    case RW_KIND_UNSIGNED_CHAR: return "unsigned char";
    case RW_KIND_CHAR: return "char";
    case RW_KIND_SIGNED_CHAR: return "signed char";
    case RW_KIND_VOID: return "void";
    default: return nullptr;
    }
}

void check_reference(const rw_debug_info_struct &d, const type_reference &r)
{
    switch (r.kind) {
    case RW_KIND_STRUCT:
    case RW_KIND_UNION:
        ASSERT_LT(r.type_index, d.no_structs) << r.where;
        EXPECT_STREQ(d.structs[r.type_index].name, r.name) << r.where;
        EXPECT_EQ(d.structs[r.type_index].kind, r.kind) << r.where;
        break;
    case RW_KIND_ENUM:
        ASSERT_LT(r.type_index, d.no_enums) << r.where;
        EXPECT_STREQ(d.enums[r.type_index].name, r.name) << r.where;
        break;
    case RW_KIND_TYPEDEF:
        ASSERT_LT(r.type_index, d.no_types) << r.where;
        EXPECT_STREQ(d.types[r.type_index].name, r.name) << r.where;
        break;
    case RW_KIND_BIT_FIELD:
        EXPECT_EQ(r.name, nullptr) << r.where;
        EXPECT_EQ(r.type_index, 0U) << r.where;
        break;
    default:
        EXPECT_EQ(r.type_index, RW_NO_INDEX) << r.where;
        EXPECT_STREQ(r.name, basic_name(r.kind)) << r.where;
    }
}

TEST_P(rows, types_lead_to_the_row_that_they_name)
{
    for (const rw_type_row &t : types(tool())) {
        check_reference(tool(), {t.name, t.kind, t.base_name, t.type_index});
        EXPECT_NE(t.kind, static_cast<std::uint32_t>(RW_KIND_BIT_FIELD)) << t.name;
        EXPECT_EQ(t.dims == nullptr, t.no_dims == 0) << t.name;
    }
    for (const rw_struct_row &s : structs(tool()))
        for (const rw_member_row &m : members(s)) {
            check_reference(tool(), {place_of(s, m), m.kind, m.type_name, m.type_index});
            EXPECT_EQ(m.dims == nullptr, m.no_dims == 0) << place_of(s, m);
        }
}

/// But for a pointer a typedef stands behind its base, so that no walk over typedefs is endless.
TEST_P(rows, typedefs_stand_behind_their_base)
{
    for (std::uint32_t n = 0; n < tool().no_types; ++n) {
        const rw_type_row &t = tool().types[n];
        EXPECT_TRUE(t.kind != RW_KIND_TYPEDEF || t.type_index < n || t.no_dims != 0)
            << t.name;
    }
}

TEST_P(rows, nothing_is_seen_behind_a_pointer_only)
{
    const auto points = [](std::span<const rw_dim_row> levels) {
        return std::ranges::any_of(levels, [](const rw_dim_row &l) { return l.dim_class == RW_PC_POINTERTO; });
    };
    for (const rw_type_row &t : types(tool()))
        EXPECT_TRUE(t.kind != RW_KIND_VOID || points(dims(t))) << t.name;
    for (const rw_struct_row &s : structs(tool()))
        for (const rw_member_row &m : members(s))
            EXPECT_TRUE(m.kind != RW_KIND_VOID || points(dims(m))) << place_of(s, m);
}

// ---------------------------------------------------------------------------------------------------- the roles

/// Members of a structure by their roles: who refers to whom.
class role_check {
public:
    role_check(const rw_debug_info_struct &d, const rw_struct_row &s) : d_(d), s_(s) {}

    void run()
    {
        for (std::uint32_t n = 0; n < s_.no_members; ++n)
            check(n);
        for (std::uint32_t n = 0; n < s_.no_members; ++n)
            if (const std::uint32_t role = s_.members[n].role;
                role == RW_ROLE_COUNT || role == RW_ROLE_SELECTOR || role == RW_ROLE_PRESENCE) {
                EXPECT_TRUE(referred_.contains(n)) << place_of(s_, s_.members[n]) << " has a part for nobody";
            }
    }

private:
    void expect_partner(std::uint32_t n, std::uint32_t role)
    {
        const rw_member_row &m = s_.members[n];
        ASSERT_LT(m.ref, s_.no_members) << place_of(s_, m);
        EXPECT_NE(m.ref, n) << place_of(s_, m);
        EXPECT_EQ(s_.members[m.ref].role, role) << place_of(s_, m);
        EXPECT_TRUE(role != RW_ROLE_PRESENCE || m.ref < n) << place_of(s_, m) << ": the flag stands ahead";
        referred_.insert(m.ref);
    }

    void check(std::uint32_t n)
    {
        const rw_member_row &m = s_.members[n];
        const std::string    where = place_of(s_, m);
        const bool           refers = m.ref != RW_NO_REF;
        const std::uint32_t  held = m.no_dims == 0 ? base_kind(d_, m.kind, m.type_index) : std::uint32_t{RW_KIND_VOID};
        const bool           is_array = m.no_dims != 0 && m.dims[0].dim_class == RW_PC_ARRAYOF;
        const bool           is_pointer = m.no_dims != 0 && !is_array;
        switch (m.role) {
        case RW_ROLE_PLAIN:
            EXPECT_FALSE(refers) << where;
            EXPECT_EQ(m.no_dims, 0U) << where;
            EXPECT_TRUE(held != RW_KIND_STRUCT && held != RW_KIND_UNION) << where;
            break;
        case RW_ROLE_POINTER:
            EXPECT_TRUE(is_pointer) << where;
            if (refers)
                expect_partner(n, RW_ROLE_COUNT);
            break;
        case RW_ROLE_ARRAY:
            EXPECT_TRUE(is_array) << where;
            if (refers)
                expect_partner(n, RW_ROLE_PRESENCE);
            break;
        case RW_ROLE_STRUCT:
            EXPECT_EQ(held, static_cast<std::uint32_t>(RW_KIND_STRUCT)) << where;
            EXPECT_FALSE(refers) << where;
            break;
        case RW_ROLE_UNION:
            EXPECT_EQ(held, static_cast<std::uint32_t>(RW_KIND_UNION)) << where;
            if (refers)
                expect_partner(n, RW_ROLE_SELECTOR);
            break;
        case RW_ROLE_OPTIONAL:
            expect_partner(n, RW_ROLE_PRESENCE);
            break;
        case RW_ROLE_PRESENCE:
            EXPECT_STREQ(m.type_name, "opt_present") << where;
            [[fallthrough]];
        case RW_ROLE_COUNT:
        case RW_ROLE_SELECTOR:
            EXPECT_FALSE(refers) << where;
            EXPECT_EQ(m.no_dims, 0U) << where;
            break;
        default:
            ADD_FAILURE() << where << " has role " << m.role;
        }
    }

    const rw_debug_info_struct &d_;
    const rw_struct_row        &s_;
    std::set<std::uint32_t>     referred_;
};

TEST_P(rows, members_of_structures_have_the_partner_of_their_role)
{
    for (const rw_struct_row &s : structs(tool()))
        if (s.kind == RW_KIND_STRUCT)
            role_check(tool(), s).run();
}

TEST_P(rows, members_of_unions_hold_for_different_cases)
{
    for (const rw_struct_row &s : structs(tool())) {
        if (s.kind != RW_KIND_UNION)
            continue;
        std::set<std::uint32_t> cases;
        for (const rw_member_row &m : members(s)) {
            EXPECT_TRUE(m.ref == RW_NO_REF || cases.insert(m.ref).second) << place_of(s, m);
            EXPECT_TRUE(m.role == RW_ROLE_PLAIN || m.role == RW_ROLE_POINTER || m.role == RW_ROLE_ARRAY ||
                        m.role == RW_ROLE_STRUCT || m.role == RW_ROLE_UNION)
                << place_of(s, m);
        }
    }
}

// -------------------------------------------------------------------------------------- run-time type rules

TEST_P(rows, tags_of_members_are_those_of_their_types)
{
    for (const rw_struct_row &s : structs(tool()))
        for (const rw_member_row &m : members(s)) {
            EXPECT_EQ(m.has_rt_rule, m.rt_selector != 0 ? 1U : 0U) << place_of(s, m);
            const rw_type_row *const t = m.type_name == nullptr ? nullptr : find(types(tool()), m.type_name);
            EXPECT_EQ(m.rt_tag, t == nullptr ? 0U : t->rt_tag) << place_of(s, m);
        }
}

/// The rules of one domain, read as a host reads them.
class rule_check {
public:
    explicit rule_check(const rw_debug_info_struct &d) : d_(d)
    {
        for (const rw_rt_type_row &t : rt_types(d))
            names_[t.rt_type] = t.name;
        for (const rw_rt_rule_row &r : rt_rules(d))
            rules_[{r.key[0], r.key[1]}] = &r;
    }

    /// Name of the type that a member with `selector` has in a value with `tag`.
    std::string type_behind(std::uint32_t selector, std::uint32_t tag) const
    {
        const auto rule = rules_.find({selector, tag});
        if (rule == rules_.end() || !names_.contains(rule->second->rt_type))
            return "no rule";
        return names_.at(rule->second->rt_type);
    }

    /// The three node types and the element of the list type `x`.
    void check_list(const rw_type_row &x) const
    {
        const std::string name = x.name;
        const rw_type_row *const node = find(types(d_), "ASN_LST_" + name);
        const rw_type_row *const pointer = find(types(d_), "ASN_LST_P_" + name);
        const rw_type_row *const element = find(types(d_), "ASN_LST_D_" + name);
        const rw_type_row *const rt_node = find(types(d_), "TT_RTYPE_ASN_LST_" + name);
        ASSERT_TRUE(node && pointer && element && rt_node) << name;
        EXPECT_STREQ(node->base_name, "AsnListNode") << name;
        EXPECT_NE(x.rt_tag, 0U) << name;
        EXPECT_NE(node->rt_tag, x.rt_tag) << name;
        EXPECT_EQ(pointer->rt_tag, node->rt_tag) << name;
        EXPECT_EQ(rt_node->rt_tag, node->rt_tag) << name;
        EXPECT_EQ(type_behind(4, x.rt_tag), "TT_RTYPE_ASN_LST_P_" + name);
        EXPECT_EQ(type_behind(6, node->rt_tag), "TT_RTYPE_ASN_LST_P_" + name);
        EXPECT_EQ(type_behind(7, node->rt_tag), "TT_RTYPE_ASN_LST_D_" + name);
    }

private:
    const rw_debug_info_struct                                              &d_;
    std::map<std::uint32_t, std::string>                                     names_;
    std::map<std::pair<std::uint32_t, std::uint32_t>, const rw_rt_rule_row *> rules_;
};

TEST_P(rows, lists_lead_to_their_nodes_and_elements)
{
    const rule_check check(tool());
    std::uint32_t    lists = 0;
    for (const rw_type_row &t : types(tool()))
        if (t.kind == RW_KIND_TYPEDEF && std::string_view(t.base_name) == "AsnList") {
            check.check_list(t);
            ++lists;
        }
    const bool has_rules = tool().no_rt_rules != 0;
    EXPECT_EQ(tool().no_rt_rules, has_rules ? 1 + 3 * lists : 0U);
    EXPECT_EQ(tool().no_rt_types, has_rules ? 1 + 5 * lists : 0U);
}

TEST_P(rows, run_time_types_name_types)
{
    constexpr std::string_view prefix = "TT_RTYPE_";
    std::set<std::uint32_t>    ids;
    for (const rw_rt_type_row &t : rt_types(tool())) {
        EXPECT_TRUE(ids.insert(t.rt_type).second) << t.name;
        EXPECT_EQ(t.kind, static_cast<std::uint32_t>(RW_KIND_TYPEDEF)) << t.name;
        ASSERT_TRUE(std::string_view(t.name).starts_with(prefix)) << t.name;
        EXPECT_NE(find(types(tool()), t.name + prefix.size()), nullptr) << t.name;
    }
    if (tool().no_rt_types != 0) {
        EXPECT_STREQ(tool().rt_types[tool().no_rt_types - 1].name, "TT_RTYPE_asn_uint8");
    }
}

TEST_P(rows, rules_have_whole_keys)
{
    for (std::uint32_t n = 0; n < tool().no_rt_rules; ++n) {
        const rw_rt_rule_row &r = tool().rt_rules[n];
        EXPECT_EQ(r.key_len, 2U) << n;
        EXPECT_EQ(r.length_func != nullptr, n == 0) << n;
        EXPECT_EQ(r.rt_type == 0, n == 0) << n;
    }
    EXPECT_EQ(tool().rt_rules == nullptr, tool().no_rt_rules == 0);
    EXPECT_EQ(tool().rt_types == nullptr, tool().no_rt_types == 0);
}

TEST(bit_string_rule, counts_octets)
{
    struct bit_string {
        std::uint32_t       bits;
        const std::uint8_t *octets;
    };
    const rw_rt_rule_row &rule = tt_tool_records[ENTITY_STACK].rt_rules[0];
    EXPECT_EQ(rule.key[0], 2);
    EXPECT_EQ(rule.key[1], 1);
    for (const auto &[bits, octets] : {std::pair{0U, 0U}, {1U, 1U}, {8U, 1U}, {9U, 2U}, {160U, 20U}, {161U, 21U}}) {
        const bit_string   value{bits, nullptr};
        const rw_rt_length length = rule.length_func(&value);
        EXPECT_EQ(length.word[0], 0U);
        EXPECT_EQ(length.word[1], 16U);
        EXPECT_EQ(length.word[2], octets) << bits << " bits";
        EXPECT_EQ(length.word[3], 0U);
    }
}

} // namespace
