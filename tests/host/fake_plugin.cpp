// A plug-in made by hand for the tests of solvane-host: small tables with odd shapes, and ways to misbehave.
//
// It prints on standard output when it starts, as a real one may.  FAKE_VERSION in the environment replaces its
// interface number; built with FAKE_INCOMPLETE it lacks an export.  The layouts are those of the compiler at hand,
// the bit-field rows those of a little-endian machine.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "solvane/solvane.h"

namespace {

struct pair_struct {
    std::uint8_t one, two;
};

union choice_union {
    pair_struct   pair;
    std::uint32_t word;
};

struct AsnBits {
    std::uint32_t bitLen;
    std::uint8_t *bits;
};

struct AsnListNode {
    void        *data;
    AsnListNode *next;
};

struct AsnList {
    AsnListNode *first;
    std::int32_t count;
};

struct odd_struct {
    std::uint8_t  kind;
    std::uint32_t number;
    std::uint8_t  pd : 4;
    std::uint8_t  ti : 4;
    std::uint16_t wide : 10;
    std::int32_t  colour;
    choice_union  choice;
    std::uint8_t  extraP;
    std::uint16_t extra;
    std::uint8_t  no_data;
    std::uint8_t *data;
    std::int16_t  grid[2][3];
    pair_struct  *links[2];
    AsnBits       bits;
    AsnList       pairs;
    choice_union  loose;
    char          name[8];
    std::uint8_t  last;
};

enum { S_PAIR, S_CHOICE, S_BITS, S_NODE, S_LIST, S_ODD, NO_STRUCTS };
enum { E_COLOUR, E_ANONYMOUS, E_ENTITIES, E_SAPS, E_MESSAGES, E_COMMON, NO_ENUMS };
enum { T_UINT8, T_UINT16, T_UINT32, T_SRV, T_TABLE, T_LINK, T_ELEMENT, T_LIST, T_BITS, T_LOOP };

constexpr std::uint16_t list_tag = 5, node_tag = 6;

// ---- the dictionary, its layout table filled in the order of the contract

std::vector<rw_offsize_type>            offsize;
std::vector<std::vector<rw_dim_row>>    dim_store;
std::vector<std::vector<rw_member_row>> member_store;
std::vector<rw_struct_row>              structs;

std::uint32_t entry(std::size_t value)
{
    offsize.push_back(static_cast<rw_offsize_type>(value));
    return static_cast<std::uint32_t>(offsize.size() - 1);
}

/* `sizes` are the octets of each array level, 0 a pointer. */
const rw_dim_row *dims(std::vector<std::size_t> sizes)
{
    std::vector<rw_dim_row> rows;
    for (const std::size_t size : sizes) {
        rows.push_back(size == 0 ? rw_dim_row{RW_PC_POINTERTO, RW_NO_INDEX} : rw_dim_row{RW_PC_ARRAYOF, entry(size)});
    }
    dim_store.push_back(rows);
    return rows.empty() ? nullptr : dim_store.back().data();
}

struct type_ref {
    std::uint32_t kind;
    const char   *name;
    std::uint32_t index;
};

constexpr type_ref u8 = {RW_KIND_TYPEDEF, "uint8", T_UINT8};
constexpr type_ref u16 = {RW_KIND_TYPEDEF, "uint16", T_UINT16};
constexpr type_ref u32 = {RW_KIND_TYPEDEF, "uint32", T_UINT32};

rw_member_row member(const char *name, std::size_t offset, std::uint32_t role, std::uint32_t ref, const type_ref &type,
                     std::vector<std::size_t> sizes = {}, std::uint32_t rt_selector = 0, std::uint32_t rt_tag = 0)
{
    const std::uint32_t at = entry(offset);
    const auto          levels = static_cast<std::uint32_t>(sizes.size());
    return {name,      at,        role,   ref,           rt_selector != 0 ? 1U : 0U, rt_selector, rt_tag, type.kind,
            type.name, levels, dims(std::move(sizes)), type.index};
}

rw_member_row bits(const char *name, std::uint32_t row)
{
    return {name, row, RW_ROLE_PLAIN, RW_NO_REF, 0, 0, 0, RW_KIND_BIT_FIELD, nullptr, 0, nullptr, 0};
}

rw_member_row of_case(const char *name, std::uint32_t value, std::uint32_t role, const type_ref &type)
{
    return {name, RW_NO_INDEX, role, value, 0, 0, 0, type.kind, type.name, 0, nullptr, type.index};
}

std::uint32_t open_struct(const char *name, std::uint32_t kind, std::size_t size)
{
    structs.push_back({name, kind, entry(size), 0, 0, nullptr});
    return static_cast<std::uint32_t>(structs.size() - 1);
}

void close_struct(std::uint32_t row, std::vector<rw_member_row> members)
{
    member_store.push_back(std::move(members));
    structs[row].no_members = static_cast<std::uint32_t>(member_store.back().size());
    structs[row].members = member_store.back().data();
}

/* Braces are evaluated in order, so the layout table comes out in the order of the members. */
void make_structs()
{
    const std::uint32_t none = RW_NO_REF;
    auto row = open_struct("pair_struct", RW_KIND_STRUCT, sizeof(pair_struct));
    close_struct(row, {member("one", 0, RW_ROLE_PLAIN, none, u8), member("two", 1, RW_ROLE_PLAIN, none, u8)});
    row = open_struct("choice_union", RW_KIND_UNION, sizeof(choice_union));
    close_struct(row, {of_case("pair", 1, RW_ROLE_STRUCT, {RW_KIND_STRUCT, "pair_struct", S_PAIR}),
                       of_case("word", 2, RW_ROLE_PLAIN, u32)});
    row = open_struct("AsnBits", RW_KIND_STRUCT, sizeof(AsnBits));
    close_struct(row, {member("bitLen", offsetof(AsnBits, bitLen), RW_ROLE_PLAIN, none, u32),
                       member("bits", offsetof(AsnBits, bits), RW_ROLE_POINTER, none, u8, {0}, 2)});
    const type_ref node = {RW_KIND_STRUCT, "AsnListNode", S_NODE};
    row = open_struct("AsnListNode", RW_KIND_STRUCT, sizeof(AsnListNode));
    close_struct(row, {member("data", offsetof(AsnListNode, data), RW_ROLE_POINTER, none,
                              {RW_KIND_VOID, "void", RW_NO_INDEX}, {0}, 7),
                       member("next", offsetof(AsnListNode, next), RW_ROLE_POINTER, none, node, {0}, 6)});
    row = open_struct("AsnList", RW_KIND_STRUCT, sizeof(AsnList));
    close_struct(row, {member("first", offsetof(AsnList, first), RW_ROLE_POINTER, none, node, {0}, 4),
                       member("count", offsetof(AsnList, count), RW_ROLE_PLAIN, none, {RW_KIND_INT, "int", RW_NO_INDEX})});
    const type_ref choice = {RW_KIND_UNION, "choice_union", S_CHOICE};
    const type_ref pair = {RW_KIND_STRUCT, "pair_struct", S_PAIR};
    row = open_struct("odd_struct", RW_KIND_STRUCT, sizeof(odd_struct));
    close_struct(
        row,
        {member("kind", offsetof(odd_struct, kind), RW_ROLE_SELECTOR, none, u8),
         member("number", offsetof(odd_struct, number), RW_ROLE_PLAIN, none, u32),
         bits("pd", 0), bits("ti", 1), bits("wide", 2),
         member("colour", offsetof(odd_struct, colour), RW_ROLE_PLAIN, none, {RW_KIND_ENUM, "colour_enum", E_COLOUR}),
         member("choice", offsetof(odd_struct, choice), RW_ROLE_UNION, 0, choice),
         member("extraP", offsetof(odd_struct, extraP), RW_ROLE_PRESENCE, none, u8),
         member("extra", offsetof(odd_struct, extra), RW_ROLE_OPTIONAL, 7, u16),
         member("no_data", offsetof(odd_struct, no_data), RW_ROLE_COUNT, none, u8),
         member("data", offsetof(odd_struct, data), RW_ROLE_POINTER, 9, u8, {0}),
         member("grid", offsetof(odd_struct, grid), RW_ROLE_ARRAY, none, {RW_KIND_SHORT, "short", RW_NO_INDEX}, {12, 6}),
         member("links", offsetof(odd_struct, links), RW_ROLE_ARRAY, none, pair, {sizeof(void *) * 2, 0}),
         member("bits", offsetof(odd_struct, bits), RW_ROLE_STRUCT, none, {RW_KIND_TYPEDEF, "AsnBits", T_BITS}, {}, 0, 1),
         member("pairs", offsetof(odd_struct, pairs), RW_ROLE_STRUCT, none, {RW_KIND_TYPEDEF, "pair_list", T_LIST}, {}, 0,
                list_tag),
         member("loose", offsetof(odd_struct, loose), RW_ROLE_UNION, none, choice),
         member("name", offsetof(odd_struct, name), RW_ROLE_ARRAY, none, {RW_KIND_CHAR, "char", RW_NO_INDEX}, {8}),
         member("last", offsetof(odd_struct, last), RW_ROLE_PLAIN, none, u8)});
}

constexpr rw_num_type valid(std::int32_t value)
{
    return {RW_VS_VALID_VAL, value};
}

const rw_literal_row colours[] = {
    {"RED", valid(0)}, {"GREEN", valid(1)}, {"LIME", valid(1)}, {"MINUS", valid(-1)}, {"UNSET", {RW_VS_INVAL_ASSIGNED, 0}}};
const rw_literal_row services[] = {{"SRV_A", valid(0)}, {"SRV_B", valid(4)}};
const rw_literal_row entities[] = {{"ENTITY_DEFAULT", valid(0)}, {"ENTITY_STACK", valid(1)}, {"ENTITY_GSM_STACK", valid(2)}};
const rw_literal_row saps[] = {{"MM_CC_SAP", valid(49)}, {"RLC_RRC_SAP", valid(126)}};
const rw_literal_row messages[] = {{"MSG_ID_HELLO", valid(2)}, {"MSG_ID_MMCC_DATA_REQ", valid(27)}};

const rw_enum_row enums[NO_ENUMS] = {
    {"colour_enum", E_COLOUR, 5, colours}, {"15000", E_ANONYMOUS, 2, services},
    {"sdi_entity_enum", E_ENTITIES, 3, entities}, {"stack_sap_enum", E_SAPS, 2, saps},
    {"stack_msg_enum", E_MESSAGES, 2, messages}, {"stack_module_enum", E_COMMON, 0, nullptr},
};

std::vector<rw_type_row> types;

void make_types()
{
    types = {
        {"uint8", 0, RW_KIND_UNSIGNED_CHAR, "unsigned char", 0, nullptr, RW_NO_INDEX},
        {"uint16", 0, RW_KIND_UNSIGNED_SHORT, "unsigned short", 0, nullptr, RW_NO_INDEX},
        {"uint32", 0, RW_KIND_UNSIGNED_LONG, "unsigned long", 0, nullptr, RW_NO_INDEX},
        {"SRV_ID_E", 0, RW_KIND_ENUM, "15000", 0, nullptr, E_ANONYMOUS},
        {"table_t", 0, RW_KIND_TYPEDEF, "uint16", 2, dims({24, 6}), T_UINT16},
        {"ASN_LST_P_pair_list", node_tag, RW_KIND_STRUCT, "AsnListNode", 1, dims({0}), S_NODE},
        {"ASN_LST_D_pair_list", 0, RW_KIND_STRUCT, "pair_struct", 0, nullptr, S_PAIR},
        {"pair_list", list_tag, RW_KIND_STRUCT, "AsnList", 0, nullptr, S_LIST},
        {"AsnBits", 1, RW_KIND_STRUCT, "AsnBits", 0, nullptr, S_BITS},
        {"loop_t", 0, RW_KIND_TYPEDEF, "loop_t", 0, nullptr, T_LOOP},
    };
}

rw_rt_length bits_length(const void *value)
{
    return {{0, 16, (static_cast<const AsnBits *>(value)->bitLen + 7) / 8, 0}};
}

const std::uint16_t  keys[][2] = {{2, 1}, {4, list_tag}, {6, node_tag}, {7, node_tag}};
const rw_rt_rule_row rules[] = {{2, keys[0], bits_length, 0}, {2, keys[1], nullptr, 1}, {2, keys[2], nullptr, 1},
                                {2, keys[3], nullptr, 2}};
const rw_rt_type_row rule_types[] = {{1, RW_KIND_TYPEDEF, "TT_RTYPE_ASN_LST_P_pair_list"},
                                     {2, RW_KIND_TYPEDEF, "TT_RTYPE_ASN_LST_D_pair_list"}};

rw_bt_info basic = {{0, 0, 8, 8, 5, 5, 13, 13, 13, 0, 0, 0, 0, 14, 0},
                    {4, 4, 3, 2, 1, 2, 2, 1, 4, 4, 3, 2, 1, 1, sizeof(void *)}};

mta_bit_map_struct bit_map[] = {
    {1, 8, 4, {{4, 4}}}, {1, 8, 4, {{4, 0}}}, {2, 10, 10, {{10, 14}, {8, 0}}}};

char baseline[] = "FAKE_V1", baseline_gsm[] = "FAKE_V1";

// ---- registry, messages, value texts

const tt_msg_row stack_rows[] = {{2, "MSG_ID_HELLO", 0, "INVALID_SAP", "odd_struct"},
                                 {27, "MSG_ID_MMCC_DATA_REQ", 49, "MM_CC_SAP", ""},
                                 {28, "MSG_ID_LOST", 49, "MM_CC_SAP", "lost_struct"}};
const tt_msg_row   gsm_rows[] = {{2, "GSM_MSG_ID_HELLO", 0, "INVALID_SAP", "pair_struct"}};
const tt_msg_table stack_messages = {3, stack_rows, 0, nullptr};
const tt_msg_table gsm_messages = {1, gsm_rows, 0, nullptr};

const tt_value_row   one_words[] = {{"first", 1}, {"second", 2}, {"also first", 1}};
const tt_value_row   two_case_1[] = {{"No route to destination", 131}};
const tt_value_row   two_default[] = {{"something", 9}};
const tt_value_case  two_cases[] = {{1, 1, two_case_1}, {TT_DEFAULT_SELECTOR, 1, two_default}};
const tt_value_field pair_fields[] = {{"one", nullptr, 3, one_words, 0, nullptr},
                                      {"two", "\"in ms\"", 0, nullptr, 2, two_cases}};
const tt_value_desc        pair_described = {nullptr, 0, nullptr, 2, pair_fields};
const tt_value_desc_row    described_rows[] = {{"pair_struct", &pair_described}, {"", nullptr}};
const tt_value_desc_row    end_row[] = {{"", nullptr}};
const tt_value_desc_table  described = {2, described_rows}, undescribed = {1, end_row};
const tt_value_desc_table *value_tables[TT_NO_DOMAINS] = {&undescribed, &described,   &undescribed, &undescribed,
                                                          &undescribed, &undescribed, &undescribed, &undescribed};
const tt_value_desc_tables all_values = {value_tables, TT_NO_DOMAINS};

tt_entity_info       registry[ENTITY_LAST];
rw_debug_info_struct tool[TT_NO_DOMAINS], target[TT_NO_DOMAINS];
tt_offsize_table     tool_table = {tool, TT_NO_DOMAINS}, target_table = {target, TT_NO_DOMAINS};

rw_debug_info_struct record(char *uuid)
{
    rw_debug_info_struct out = {};
    out.uuid = uuid;
    out.no_structs = static_cast<std::uint32_t>(structs.size());
    out.structs = structs.data();
    out.no_types = static_cast<std::uint32_t>(types.size());
    out.types = types.data();
    out.no_enums = NO_ENUMS;
    out.enums = enums;
    out.bt_info = &basic;
    out.no_offsize = static_cast<std::uint32_t>(offsize.size());
    out.offsize = offsize.data();
    out.no_bit_map = 3;
    out.bit_map = bit_map;
    out.no_rt_rules = 4;
    out.rt_rules = rules;
    out.no_rt_types = 2;
    out.rt_types = rule_types;
    return out;
}

tt_entity_info registry_row(char *uuid, const tt_msg_table *table)
{
    tt_entity_info row = {};
    row.valid = 1;
    row.version_text = "Test Version - ..";
    row.uuid = uuid;
    row.file_code_enum = "";
    row.sap_enum = "stack_sap_enum";
    row.msg_enum = "stack_msg_enum";
    row.module_enum = "stack_module_enum";
    row.channels_enum = row.error_actions_enum = row.peer_msg_param_enum = "";
    row.msg_table = table;
    row.context_struct = "odd_struct";
    return row;
}

// ---- traces

const tsc_db_item_struct items[] = {
    {0x00000, "", TSC_DIS_HEAD, "", 0},
    {0x80000, "SDI", TSC_DIS_HEAD, "", 0},
    {0x80001, "waiting connect, connected_num(%d),support client_num(%d)", TSC_DIS_ARGS, "com_tcp.c", 153},
    {0x80002, "connected\n", TSC_DIS_SINGLE, "com_tcp.c", 160},
    {0x100000, "MM", TSC_DIS_HEAD, "", 0},
    {0x100001, "cqi=0x%x@TAG<cqi>", TSC_DIS_ARGS, "mm_cs.c", 7},
    {0x100002, "text %s", TSC_DIS_ARGS, "mm_cs.c", 9},
    {0xFFFFFFFF, "", TSC_DIS_LAST, "", 0},
};
const tsc_db_mod_struct  modules[] = {{0, "::SYSTEM", 1}, {0x80000, "SDI", 1}, {0x100000, "MM", 1}};
const tsc_db_info_struct trace_db = {"tsc_db", items, 8, modules, 3};
char                     line[1024];

const tsc_db_item_struct *item_of(std::uint32_t id)
{
    for (const auto &item : items) {
        if (item.trace_id == id) {
            return &item;
        }
    }
    return nullptr;
}

tt_bool lookup_full(std::uint32_t id, tsc_trace_full_info *full)
{
    const auto *item = item_of(id);
    *full = {nullptr, 0, 0xFFFFFFFF, nullptr, nullptr, 0};
    if (item == nullptr) {
        return 0;
    }
    const std::uint32_t row = id >= 0x100000 ? 2 : id >= 0x80000 ? 1 : 0;
    *full = {item->trace_format, item->status, row, modules[row].mod_name, item->file, item->line};
    return 1;
}

tt_bool lookup(std::uint32_t id, tsc_trace_info *info)
{
    tsc_trace_full_info full;
    const tt_bool       found = lookup_full(id, &full);
    *info = {full.mod_row, full.mod_name, full.file, full.line};
    return found;
}

const char *text_of(std::uint32_t id, const std::vector<std::string> &arguments)
{
    const auto *item = item_of(id);
    if (item == nullptr) {
        return "ERROR: can not find in tsc_db!!!";
    }
    std::string out;
    std::size_t next = 0;
    for (const char *c = item->trace_format; *c != '\0'; ++c) {
        if (*c != '%') {
            out += *c;
        } else {
            out += next < arguments.size() ? arguments[next] : "?";
            ++next;
            ++c;
        }
    }
    if (out.size() >= sizeof line) {
        std::abort(); /* a line too long ends the process */
    }
    out += next > arguments.size() ? " -- ERROR: arg_num is not match!!! -- " : "";
    std::strncpy(line, out.c_str(), sizeof line - 1);
    return line;
}

std::uint32_t big_endian(const std::uint8_t *at)
{
    return static_cast<std::uint32_t>(at[0] << 24 | at[1] << 16 | at[2] << 8 | at[3]);
}

const char *trace_text(const std::uint8_t *data, tsc_trace_info *)
{
    std::vector<std::string> arguments;
    const std::uint32_t      count = big_endian(data + 4);
    std::string              now;
    for (std::uint32_t i = 0; i < count; ++i) {
        if (data[8 + i] == 1) {
            arguments.push_back(now);
            now.clear();
        } else {
            now += static_cast<char>(data[8 + i]);
        }
    }
    if (!now.empty()) {
        arguments.push_back(now);
    }
    return text_of(big_endian(data), arguments);
}

const char *trace_text_int(const std::uint8_t *data, std::uint32_t length, tsc_trace_info *)
{
    std::vector<std::string> arguments;
    std::vector<std::uint32_t> words(length / 4);
    std::memcpy(words.data(), data, words.size() * 4);
    for (std::size_t i = 1; i < words.size(); ++i) {
        arguments.push_back(std::to_string(static_cast<std::int32_t>(words[i])));
    }
    return text_of(words[0], arguments);
}

// ---- queries

const tt_value_desc *described_as(std::int32_t domain, const char *name)
{
    return domain == 1 && std::strcmp(name, "pair_struct") == 0 ? &pair_described : nullptr;
}

const char *word(const tt_value_row *rows, std::uint32_t count, std::uint32_t value)
{
    for (std::uint32_t i = 0; i < count; ++i) {
        if (rows[i].value == value) {
            return rows[i].text;
        }
    }
    return nullptr;
}

const tt_value_field *field_as(std::int32_t domain, const char *name, const char *field)
{
    for (const auto &row : pair_fields) {
        if (described_as(domain, name) != nullptr && std::strcmp(row.name, field) == 0) {
            return &row;
        }
    }
    return nullptr;
}

const char *value_text(std::int32_t domain, const char *name, const char *field, std::uint32_t value)
{
    const auto *row = field_as(domain, name, field);
    return row != nullptr ? word(row->values, row->no_values, value) : nullptr;
}

const char *case_text(std::int32_t domain, const char *name, const char *field, std::uint32_t selector, std::uint32_t value)
{
    const auto *row = field_as(domain, name, field);
    for (std::uint32_t i = 0; row != nullptr && i < row->no_cases; ++i) {
        if (row->cases[i].selector == selector) {
            return word(row->cases[i].values, row->cases[i].no_values, value);
        }
    }
    return nullptr;
}

/* Message 0 dies as a message to the infrastructure does; local parameters that begin with 0xFF do not fit. */
const char *struct_name(const tt_msg_struct *message)
{
    const auto &local = message->local_params;
    if (message->dest_entity_id == 0 || (local.no_local_params_ptr != 0 && local.local_params_ptr[0] == 0xFF)) {
        std::abort();
    }
    if (message->sap_id == 49 && message->peer_buff.no_peer_buff_ptr != 0) {
        return message->peer_buff.peer_buff_ptr[1] == 5 ? "pair_struct" : message->peer_buff.peer_buff_ptr[1] == 6 ? "no_codec_struct" : nullptr;
    }
    return nullptr;
}

// ---- codecs

void *take(std::size_t size)
{
    return std::memset(dll_info_version.alloc(size, 0, 0, 0), 0, size);
}

/* Two octets; 0xEE is not survived, and a message that ends too soon is told. */
void unpack_pair(void *value, unpack_info_struct *cursor)
{
    if (cursor->fr_size < 2) {
        static_cast<PerError *>(cursor->err_hndl)->code = 2;
        return;
    }
    if (cursor->frame[0] == 0xEE) {
        std::abort();
    }
    std::memcpy(value, cursor->frame, 2);
    cursor->bits += 16;
}

void pack_pair(pack_info_struct *cursor, const void *value)
{
    std::memcpy(cursor->frame, value, 2);
    cursor->frame += 2;
    cursor->bits += 16;
}

/* Two octets of the counted data and the numbers of the list, so that a value's pointers are seen to have arrived. */
void pack_odd(pack_info_struct *cursor, const void *value)
{
    const auto &odd = *static_cast<const odd_struct *>(value);
    const auto  put = [cursor](unsigned octet) {
        *cursor->frame++ = static_cast<std::uint8_t>(octet);
        cursor->bits += 8;
    };
    put(odd.no_data);
    for (unsigned i = 0; i < odd.no_data; ++i) {
        put(odd.data[i]);
    }
    put(odd.kind);
    put(odd.choice.word);
    put(odd.pd);
    put(odd.wide);
    put(static_cast<unsigned>(odd.colour));
    put(odd.extraP);
    put(odd.extra);
    put(odd.links[1] != nullptr ? odd.links[1]->two : 0U);
    put(odd.bits.bitLen);
    for (const AsnListNode *node = odd.pairs.first; node != nullptr; node = node->next) {
        put(static_cast<const pair_struct *>(node->data)->two);
    }
}

/* Whatever the octets: a value with pointers of every kind. */
void unpack_odd(void *value, unpack_info_struct *cursor)
{
    auto &odd = *static_cast<odd_struct *>(value);
    odd.kind = 2;
    odd.choice.word = 7;
    odd.extraP = 1;
    odd.extra = 9;
    odd.no_data = 2;
    odd.data = static_cast<std::uint8_t *>(dll_info_version.realloc(take(1), 2, 1, 0, 0, 0));
    std::memcpy(odd.data, cursor->frame, 2);
    odd.links[1] = static_cast<pair_struct *>(take(sizeof(pair_struct)));
    odd.bits = {9, static_cast<std::uint8_t *>(take(2))};
    odd.bits.bits[1] = 0x80;
    for (int i = 2; i-- > 0;) {
        auto *pair = static_cast<pair_struct *>(take(sizeof(pair_struct)));
        auto *node = static_cast<AsnListNode *>(take(sizeof(AsnListNode)));
        *pair = {static_cast<std::uint8_t>(i + 1), static_cast<std::uint8_t>(i + 11)};
        *node = {pair, odd.pairs.first};
        odd.pairs.first = node;
        ++odd.pairs.count;
    }
    cursor->bits += 16;
}

tt_peer_row peer_rows[] = {{"pair_struct", sizeof(pair_struct), pack_pair, unpack_pair, 0},
                           {"odd_struct", sizeof(odd_struct), pack_odd, unpack_odd, 0},
                           {"choice_union", 3, nullptr, nullptr, 0},
                           {"unknown_struct", 4, nullptr, nullptr, 0}};

void fill_slots()
{
    dll_info.no_entities = ENTITY_LAST;
    dll_info.tool_offsize = &tool_table;
    dll_info.target_offsize = &target_table;
    dll_info.entity_info = registry;
    dll_info.var_access_root = "var_access_start_struct";
    dll_info.entity_enum_name = "sdi_entity_enum";
    dll_info.tt_peer_struct_name = struct_name;
    dll_info.value_desc_tables = &all_values;
    dll_info.db_struct_known = [](std::int32_t d, const char *n) { return described_as(d, n) != nullptr ? 1U : 0U; };
    dll_info.db_field_value_text = value_text;
    dll_info.db_field_case_value_text = case_text;
    dll_info.db_struct_comment = [](std::int32_t, const char *) -> const char * { return nullptr; };
    dll_info.db_field_comment = [](std::int32_t d, const char *n, const char *f) -> const char * {
        const auto *row = field_as(d, n, f);
        return row != nullptr ? row->comment : nullptr;
    };
    dll_info.dll_feature_supported = [](const char *tag) -> tt_bool { return std::strcmp(tag, "TRACE ID") == 0; };
    dll_info.tsc_trace_text_info = trace_text;
    dll_info.tsc_trace_text_int_info = trace_text_int;
    dll_info.tsc_trace_lookup = lookup;
    dll_info.tsc_trace_lookup_full = lookup_full;
    dll_info.tsc_db_get = [] { return &trace_db; };
    dll_info.tsc_db_total = [] { return trace_db.total; };
    dll_info.tsc_db_mod_num = [] { return trace_db.mod_num; };
}

std::uint32_t version_number()
{
    const char *wanted = std::getenv("FAKE_VERSION");
    return wanted != nullptr ? static_cast<std::uint32_t>(std::atoi(wanted)) : 1U;
}

} // namespace

dll_info_struct         dll_info = {};
dll_info_version_struct dll_info_version = {"1.0", version_number(), nullptr, nullptr, nullptr, nullptr, nullptr,
                                            nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
#ifndef FAKE_INCOMPLETE
tt_peer_table_struct tt_peer_table = {};
#endif

void init_dll(void)
{
    std::puts("the library speaks on standard output");
    std::fflush(stdout);
    for (int i = 0; i < NO_ENUMS; ++i) {
        entry(4);
    }
    make_structs();
    make_types();
    tool[1] = record(baseline);
    tool[2] = record(baseline_gsm);
    registry[1] = registry_row(baseline, &stack_messages);
    registry[2] = registry_row(baseline_gsm, &gsm_messages);
#ifndef FAKE_INCOMPLETE
    tt_peer_table = {4, peer_rows};
#else
    (void)peer_rows;
#endif
    fill_slots();
}

void deinit_dll(void)
{
}
