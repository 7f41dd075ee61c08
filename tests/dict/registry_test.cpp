// Registry rows, messages, value texts and peer rows against the dictionary that their names lead into.
#include <algorithm>
#include <optional>
#include <set>
#include <span>
#include <string_view>

#include "dictionary.h"

using namespace dictionary;

namespace {

using registry = each_domain;
FOR_EACH_DOMAIN(registry);

TEST_P(registry, rows_stand_at_their_entity)
{
    EXPECT_EQ(desc().entity, GetParam());
}

TEST_P(registry, names_are_enumerations_of_the_dictionary)
{
    for (const char *name : {desc().file_code_enum, desc().sap_enum, desc().msg_enum, desc().module_enum,
                             desc().channels_enum, desc().error_actions_enum, desc().peer_msg_param_enum})
        EXPECT_TRUE(*name == 0 || find_enum(tool(), name) != nullptr) << name;
    EXPECT_NE(find_struct(tool(), desc().context_struct), nullptr) << desc().context_struct;
    EXPECT_STRNE(desc().file_code_enum, "");
    EXPECT_STRNE(desc().module_enum, "");
}

TEST_P(registry, only_the_stack_has_module_tables)
{
    for (const tt_module_enum_list *list : {&desc().file_codes, &desc().peer_msgs, &desc().proto_errors,
                                            &desc().timers, &desc().fsms, &desc().states}) {
        EXPECT_EQ(list->count != 0, GetParam() == ENTITY_STACK);
        const std::uint32_t rows = list == &desc().states ? TT_NO_MODULE_STATES : TT_NO_MODULES;
        for (std::uint32_t n = 0; n < list->count; ++n) {
            EXPECT_LT(list->rows[n].index, rows) << list->rows[n].name;
            EXPECT_LT(std::strlen(list->rows[n].name), std::size_t{TT_ENUM_NAME_SIZE}) << list->rows[n].name;
            EXPECT_NE(find_enum(tool(), list->rows[n].name), nullptr) << list->rows[n].name;
        }
    }
}

/// Two enumerations claim module 1; the one written last is to stay.
TEST(stack_registry, the_last_file_codes_of_module_1_stay)
{
    const tt_module_enum_list &list = tt_domain_descs[ENTITY_STACK].file_codes;
    std::vector<std::string>   of_module_1;
    for (std::uint32_t n = 0; n < list.count; ++n)
        if (list.rows[n].index == 1)
            of_module_1.push_back(list.rows[n].name);
    EXPECT_EQ(of_module_1, (std::vector<std::string>{"cc_filecodes_enum", "nvm_filecodes_enum"}));
}

// ----------------------------------------------------------------------------------------------------- messages

TEST_P(registry, messages_lead_into_the_dictionary)
{
    const tt_msg_table *const table = desc().msg_table;
    EXPECT_EQ(table == nullptr, GetParam() == ENTITY_DEFAULT);
    if (table == nullptr)
        return;
    const rw_enum_row *const codes = find_enum(tool(), desc().msg_enum);
    const rw_enum_row *const saps = find_enum(tool(), desc().sap_enum);
    ASSERT_TRUE(codes && saps);
    EXPECT_EQ(codes->no_literals, table->count);
    std::set<std::uint32_t> seen;
    for (std::uint32_t n = 0; n < table->count; ++n) {
        const tt_msg_row           &row = table->rows[n];
        const rw_literal_row *const code = find(literals(*codes), row.msg_name);
        const rw_literal_row *const sap = find(literals(*saps), row.sap_name);
        ASSERT_TRUE(code && sap) << row.msg_name;
        EXPECT_EQ(static_cast<std::uint32_t>(code->value.num), row.msg_code) << row.msg_name;
        EXPECT_EQ(static_cast<std::uint32_t>(sap->value.num), row.sap_code) << row.msg_name;
        EXPECT_TRUE(*row.struct_name == 0 || find_struct(tool(), row.struct_name) != nullptr) << row.struct_name;
        EXPECT_TRUE(seen.insert(row.msg_code).second) << row.msg_name;
    }
}

/// The range that a look-up of `code` ends in, or null.
const tt_msg_index_range *range_of(const tt_msg_index &index, std::uint32_t code)
{
    for (std::uint32_t n = 0; n < index.no_ranges; ++n)
        if (index.ranges[n].first.msg_code <= code && code <= index.ranges[n].last.msg_code)
            return &index.ranges[n];
    return nullptr;
}

void check_index(const tt_msg_table &table, const tt_msg_index &index)
{
    ASSERT_EQ(table.index_count, table.count + 2);
    EXPECT_EQ(index.index_count, table.index_count);
    EXPECT_EQ(index.index_rows, table.index_rows);
    for (std::uint32_t n = 0; n < table.index_count; ++n) {
        const bool sentinel = n == 0 || n == table.count + 1;
        EXPECT_EQ(table.index_rows[n].index, n);
        EXPECT_EQ(table.index_rows[n].msg_code, sentinel ? 0 : table.rows[n - 1].msg_code) << n;
        if (sentinel)
            continue;
        const tt_msg_index_range *const range = range_of(index, table.index_rows[n].msg_code);
        ASSERT_NE(range, nullptr) << n;
        EXPECT_TRUE(range->first.index <= n && n <= range->last.index) << n;
    }
    const tt_msg_index_range &closing = index.ranges[index.no_ranges - 1];
    EXPECT_EQ(closing.first.index, 0U);
    EXPECT_EQ(closing.first.msg_code, 0U);
    EXPECT_EQ(closing.last.index, table.count + 1);
    EXPECT_EQ(closing.last.msg_code, 0U);
    for (std::uint32_t n = 0; n < index.no_ranges; ++n)
        for (const tt_msg_index_row *end : {&index.ranges[n].first, &index.ranges[n].last})
            EXPECT_EQ(end->msg_code, table.index_rows[end->index].msg_code) << n;
}

TEST(message_index, is_dense_and_its_ranges_hold_every_code)
{
    check_index(*tt_domain_descs[ENTITY_SIGNAL].msg_table, tt_signal_msg_index);
    check_index(*tt_domain_descs[ENTITY_TD_LTE_STACK].msg_table, tt_lte_msg_index);
    for (const std::uint32_t domain : {ENTITY_STACK, ENTITY_GSM_STACK, ENTITY_W_STACK, ENTITY_IMS_STACK,
                                       ENTITY_NR_STACK})
        EXPECT_EQ(tt_domain_descs[domain].msg_table->index_count, 0U) << domain_names[domain];
}

TEST(message_index, signal_has_the_documented_runs)
{
    const std::array<std::array<std::uint32_t, 4>, 4> runs = {{{1, 0xB101, 0x174, 0xB295},
                                                               {0x175, 0x1801, 0x1A4, 0x1837},
                                                               {0x1A5, 0x2B02, 0x1AD, 0x2B0A},
                                                               {0, 0, 0x1AE, 0}}};
    ASSERT_EQ(tt_signal_msg_index.no_ranges, runs.size());
    for (std::size_t n = 0; n < runs.size(); ++n) {
        const tt_msg_index_range &range = tt_signal_msg_index.ranges[n];
        EXPECT_EQ((std::array{range.first.index, range.first.msg_code, range.last.index, range.last.msg_code}),
                  runs[n])
            << n;
    }
}

// -------------------------------------------------------------------------------------------------- value texts

void expect_texts(const tt_value_row *rows, std::uint32_t count, const std::string &where)
{
    EXPECT_EQ(rows == nullptr, count == 0) << where;
    for (std::uint32_t n = 0; n < count; ++n)
        EXPECT_TRUE(rows[n].text != nullptr && *rows[n].text != 0) << where << " " << n;
}

void check_field(const tt_value_field &field, const std::string &where)
{
    expect_texts(field.values, field.no_values, where);
    EXPECT_EQ(field.cases == nullptr, field.no_cases == 0) << where;
    std::set<std::uint32_t> selectors;
    for (std::uint32_t n = 0; n < field.no_cases; ++n) {
        expect_texts(field.cases[n].values, field.cases[n].no_values, where);
        EXPECT_TRUE(selectors.insert(field.cases[n].selector).second) << where;
    }
    if (field.comment != nullptr) {
        const std::string_view comment = field.comment;
        EXPECT_TRUE(comment.size() > 1 && comment.starts_with('"') && comment.ends_with('"')) << where;
    }
}

TEST_P(registry, value_texts_are_about_members_of_the_dictionary)
{
    const tt_value_desc_table &table = *tt_value_tables[GetParam()];
    ASSERT_NE(table.count, 0U);
    EXPECT_STREQ(table.rows[table.count - 1].name, "");
    EXPECT_EQ(table.rows[table.count - 1].record, nullptr);
    for (std::uint32_t n = 0; n + 1 < table.count; ++n) {
        const tt_value_desc_row   &row = table.rows[n];
        const rw_struct_row *const s = find_struct(tool(), row.name);
        ASSERT_TRUE(s && row.record) << row.name;
        expect_texts(row.record->values, row.record->no_values, row.name);
        for (std::uint32_t k = 0; k < row.record->no_fields; ++k) {
            const tt_value_field &field = row.record->fields[k];
            const std::string     where = std::string(row.name) + "." + field.name;
            EXPECT_NE(find(members(*s), field.name), nullptr) << where;
            check_field(field, where);
        }
    }
}

// ---------------------------------------------------------------------------------------------------- peer rows

/// The size that a domain tells of the type of a name: of a structure, an enumeration, or a typedef of one or of a
/// basic kind; nothing where it does not know the name.
std::optional<std::uint32_t> told_size(std::uint32_t d, const char *name)
{
    const rw_debug_info_struct &tool = tt_tool_records[d];
    const std::span             types(tool.types, tool.no_types);
    const auto                  found = std::ranges::find(types, std::string_view(name), &rw_type_row::name);
    if (found == types.end())
        return std::nullopt;
    const rw_type_row *row = &*found;
    while (row->kind == 12 && row->no_dims == 0) // a typedef
        row = &tool.types[row->type_index];
    const rw_offsize_type *const offsize = tt_offsize_sups[d]->offsize;
    switch (row->no_dims != 0 ? 13 : row->kind) {
    case 9:
    case 10: return offsize[tool.structs[row->type_index].size_index];
    case 11: return offsize[row->type_index];
    case 0:
    case 1:
    case 2:
    case 3: return 4;
    case 4:
    case 5: return 2;
    case 6:
    case 7:
    case 8: return 1;
    default: return std::nullopt;
    }
}

TEST(peer_rows, have_the_size_that_the_dictionary_tells)
{
    for (const tt_peer_family &family : tt_peer_families) {
        EXPECT_EQ(family.rows == nullptr, family.count == 0) << family.name;
        for (std::uint32_t n = 0; n < family.count; ++n) {
            const tt_peer_row &row = family.rows[n];
            EXPECT_TRUE(row.pack != nullptr && row.unpack != nullptr) << row.name;
            EXPECT_EQ(row.reserved, 0U) << row.name;
            bool described = false;
            for (std::uint32_t d = 0; d < TT_NO_DOMAINS; ++d)
                if (const std::optional<std::uint32_t> size = told_size(d, row.name)) {
                    described = true;
                    EXPECT_EQ(*size, row.size) << row.name;
                }
            EXPECT_TRUE(described) << row.name;
        }
    }
}

TEST(peer_rows, families_stand_in_the_order_of_registration)
{
    const std::array<const char *, TT_NO_PEER_FAMILIES> names = {
        "target_agent",  "sm",           "sms",    "gmm_mm", "cc",       "ciss", "cbmc", "ss_operations",
        "stored_items",  "gsm_rr",       "qos",    "umts_rrc", "emm",    "esm",  "ngmm", "ue_policy",
        "lte_rrc",       "nr_rrc"};
    for (std::size_t n = 0; n < names.size(); ++n)
        EXPECT_STREQ(tt_peer_families[n].name, names[n]);
}

} // namespace
