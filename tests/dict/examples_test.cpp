// Rows that hosts know by heart: they must stand in our build as they stand in every build.  Row numbers are ours.
#include "dictionary.h"
#include "tt_dll.h"

using namespace dictionary;

namespace {

class examples : public testing::Test {
protected:
    examples()
    {
        for (std::uint32_t n = 0; n < TT_NO_DOMAINS; ++n)
            tt_layout_domain(&tt_tool_records[n], tt_offsize_sups[n]);
    }

    const rw_debug_info_struct &stack = tt_tool_records[ENTITY_STACK];
    const rw_debug_info_struct &lte = tt_tool_records[ENTITY_TD_LTE_STACK];
};

void expect_type(const rw_debug_info_struct &d, const char *name, std::uint32_t kind, const char *base)
{
    const rw_type_row *const t = find(types(d), name);
    ASSERT_NE(t, nullptr) << name;
    EXPECT_EQ(t->kind, kind) << name;
    EXPECT_STREQ(t->base_name, base) << name;
    EXPECT_EQ(t->rt_tag, 0U) << name;
}

TEST_F(examples, basic_types)
{
    expect_type(stack, "uint32", RW_KIND_UNSIGNED_LONG, "unsigned long");
    expect_type(stack, "uint8", RW_KIND_UNSIGNED_CHAR, "unsigned char");
    EXPECT_EQ(find(types(stack), "uint32")->type_index, RW_NO_INDEX);
    EXPECT_EQ(find(types(stack), "uint32")->no_dims, 0U);
}

TEST_F(examples, a_typedef_of_a_structure)
{
    expect_type(stack, "uint64", RW_KIND_TYPEDEF, "X_UN_64_T");
    const rw_type_row &word = stack.types[find(types(stack), "uint64")->type_index];
    EXPECT_STREQ(word.name, "X_UN_64_T");
    ASSERT_EQ(word.kind, std::uint32_t{RW_KIND_STRUCT});
    const rw_struct_row &row = stack.structs[word.type_index];
    ASSERT_EQ(row.no_members, 2U);
    EXPECT_STREQ(row.members[0].name, "hiDWORD");
    EXPECT_STREQ(row.members[1].name, "loDWORD");
    EXPECT_EQ(stack.offsize[row.size_index], 8);
}

TEST_F(examples, a_pointer_type)
{
    expect_type(stack, "SCI_THREAD_PTR", RW_KIND_VOID, "void");
    const rw_type_row *const t = find(types(stack), "SCI_THREAD_PTR");
    ASSERT_EQ(t->no_dims, 1U);
    EXPECT_EQ(t->dims[0].dim_class, std::uint32_t{RW_PC_POINTERTO});
}

TEST_F(examples, an_anonymous_enumeration)
{
    expect_type(stack, "SRV_ID_E", RW_KIND_ENUM, "15000");
    const rw_enum_row &e = stack.enums[find(types(stack), "SRV_ID_E")->type_index];
    EXPECT_STREQ(e.name, "15000");
    const rw_literal_row *const usb = find(literals(e), "USB_SERVICE");
    const rw_literal_row *const upm = find(literals(e), "UPM_SERVICE");
    ASSERT_TRUE(usb && upm);
    EXPECT_EQ(usb->value.num, 4);
    EXPECT_EQ(upm->value.num, 4);
}

TEST_F(examples, an_enumeration)
{
    const rw_enum_row *const e = find(enums(stack), "RW_OFSZ_SEG_ENUM");
    ASSERT_NE(e, nullptr);
    ASSERT_EQ(e->no_literals, 4);
    const std::array<const char *, 4> names = {"RW_OFSZ_SEG_INTER", "RW_OFSZ_SEG_FIRST", "RW_OFSZ_SEG_LAST",
                                               "RW_OFSZ_NO_SEG"};
    for (std::size_t n = 0; n < names.size(); ++n) {
        EXPECT_STREQ(e->literals[n].name, names[n]);
        EXPECT_EQ(e->literals[n].value.num, static_cast<std::int32_t>(n));
    }
    EXPECT_EQ(stack.offsize[e->ordinal], 4);
    expect_type(stack, "RW_OFSZ_SEG_ENUM", RW_KIND_ENUM, "RW_OFSZ_SEG_ENUM");
}

TEST_F(examples, a_literal_that_could_not_be_evaluated)
{
    for (const rw_enum_row &e : enums(stack))
        if (const rw_literal_row *const l = find(literals(e), "CHIPDRV_HISR_PRIO_0")) {
            EXPECT_EQ(l->value.valstat, std::uint32_t{RW_VS_INVAL_ASSIGNED});
            EXPECT_EQ(l->value.num, 0);
            return;
        }
    ADD_FAILURE() << "no such literal";
}

TEST_F(examples, a_structure)
{
    const rw_struct_row *const s = find(structs(stack), "mta_bit_touple_struct");
    ASSERT_NE(s, nullptr);
    EXPECT_EQ(stack.offsize[s->size_index], 2);
    ASSERT_EQ(s->no_members, 2U);
    for (std::uint32_t n = 0; n < 2; ++n) {
        const rw_member_row &m = s->members[n];
        EXPECT_STREQ(m.name, n == 0 ? "bit_num" : "position");
        EXPECT_EQ(m.offsize_index, s->size_index + 1 + n);
        EXPECT_EQ(stack.offsize[m.offsize_index], n);
        EXPECT_EQ(m.role, std::uint32_t{RW_ROLE_PLAIN});
        EXPECT_EQ(m.ref, RW_NO_REF);
        EXPECT_EQ(m.kind, std::uint32_t{RW_KIND_TYPEDEF});
        EXPECT_STREQ(m.type_name, "uint8");
        EXPECT_STREQ(stack.types[m.type_index].name, "uint8");
    }
}

TEST_F(examples, an_array)
{
    const rw_struct_row *const s = find(structs(stack), "mta_bit_map_struct");
    ASSERT_NE(s, nullptr);
    const rw_member_row *const m = find(members(*s), "touple");
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(m->role, std::uint32_t{RW_ROLE_ARRAY});
    ASSERT_EQ(m->no_dims, 1U);
    EXPECT_EQ(stack.offsize[m->dims[0].array_size_index], 10);
}

TEST_F(examples, a_matrix_of_pointers)
{
    const rw_struct_row *const s = find(structs(lte), "IComplex16PMatrix");
    ASSERT_NE(s, nullptr);
    const rw_member_row *const c = find(members(*s), "c");
    ASSERT_NE(c, nullptr);
    ASSERT_EQ(c->no_dims, 3U);
    EXPECT_EQ(c->dims[0].dim_class, std::uint32_t{RW_PC_ARRAYOF});
    EXPECT_EQ(c->dims[1].dim_class, std::uint32_t{RW_PC_ARRAYOF});
    EXPECT_EQ(c->dims[2].dim_class, std::uint32_t{RW_PC_POINTERTO});
    EXPECT_EQ(lte.offsize[c->dims[0].array_size_index], 16 * sizeof(void *));
    EXPECT_EQ(lte.offsize[c->dims[1].array_size_index], 4 * sizeof(void *));
}

TEST_F(examples, members_that_the_run_time_rules_tell)
{
    struct ruled {
        const char   *record;
        const char   *member;
        std::uint32_t selector;
    };
    for (const ruled &r : {ruled{"AsnBits", "bits", 2}, {"AsnList", "first", 4}, {"AsnListNode", "next", 6},
                           {"AsnListNode", "data", 7}}) {
        const rw_struct_row *const s = find(structs(stack), r.record);
        ASSERT_NE(s, nullptr) << r.record;
        const rw_member_row *const m = find(members(*s), r.member);
        ASSERT_NE(m, nullptr) << r.member;
        EXPECT_EQ(m->has_rt_rule, 1U) << r.member;
        EXPECT_EQ(m->rt_selector, r.selector) << r.member;
    }
    std::uint32_t no_ruled = 0;
    for (const rw_struct_row &s : structs(stack))
        for (const rw_member_row &m : members(s))
            no_ruled += m.has_rt_rule;
    EXPECT_EQ(no_ruled, 4U);
}

TEST_F(examples, domains_without_rules_and_without_bit_fields)
{
    for (const std::uint32_t domain : {ENTITY_GSM_STACK, ENTITY_SIGNAL, ENTITY_IMS_STACK})
        EXPECT_EQ(tt_tool_records[domain].no_rt_rules, 0U) << domain_names[domain];
    for (const std::uint32_t domain : {ENTITY_DEFAULT, ENTITY_IMS_STACK})
        EXPECT_EQ(tt_offsize_sups[domain]->no_bit_sizes, 0U) << domain_names[domain];
    EXPECT_EQ(tt_tool_records[ENTITY_DEFAULT].no_rt_rules, 1U);
    EXPECT_EQ(tt_tool_records[ENTITY_DEFAULT].no_rt_types, 1U);
}

TEST_F(examples, the_root_of_the_variables)
{
    EXPECT_STREQ(tt_variables_root, "var_access_start_struct");
    const rw_struct_row *const root = find(structs(tt_tool_records[ENTITY_DEFAULT]), tt_variables_root);
    ASSERT_NE(root, nullptr);
    ASSERT_EQ(root->no_members, 2U);
    EXPECT_STREQ(root->members[0].name, "entity_ctx_ptr");
    EXPECT_EQ(root->members[0].no_dims, 2U);
    EXPECT_EQ(root->members[0].ref, 1U);
    EXPECT_STREQ(root->members[1].name, "no_entity_ctx_ptr");
    EXPECT_STREQ(root->members[1].type_name, "uint32");
}

} // namespace
