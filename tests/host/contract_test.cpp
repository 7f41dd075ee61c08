// The built plug-in as a host meets it: loaded by dlopen, seen through the public header only.
#include <cstdlib>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "run_tool.h"
#include "solvane/solvane.h"

namespace solvane::tools {
namespace {

using test::run_tool;

/// Memory of the host's own, which the library is given in place of the heap; nothing of it is handed back.
struct arena {
    alignas(16) unsigned char room[1 << 16];
    std::size_t used = 0;

    bool holds(const void *block) const
    {
        return std::less_equal<>()(static_cast<const void *>(room), block) && std::less<>()(block, room + sizeof room);
    }
    void *take(std::size_t size)
    {
        void *block = room + used;
        used += (size + 15) / 16 * 16;
        return used <= sizeof room ? block : nullptr;
    }
} ours;

void *our_alloc(std::size_t size, std::uint8_t, std::uint16_t, std::uint32_t)
{
    return ours.take(size);
}

void *our_realloc(void *block, std::size_t size, std::size_t old_size, std::uint8_t, std::uint16_t, std::uint32_t)
{
    void *fresh = ours.take(size);
    if (block != nullptr && fresh != nullptr) {
        std::memcpy(fresh, block, old_size < size ? old_size : size);
    }
    return fresh;
}

void our_free(void *, std::uint8_t, std::uint16_t, std::uint32_t)
{
}

bool all_zero(const void *record, std::size_t size)
{
    const auto *octets = static_cast<const unsigned char *>(record);
    for (std::size_t i = 0; i < size; ++i) {
        if (octets[i] != 0) {
            return false;
        }
    }
    return true;
}

/// Loaded once, and started once with our allocator in its slots: what it looked like before is kept.
struct library {
    dll_info_struct         *info = nullptr;
    dll_info_version_struct *version = nullptr;
    tt_peer_table_struct    *peers = nullptr;
    void                   (*deinit)() = nullptr;
    bool                     info_was_zero = false;
    bool                     peers_were_zero = false;
    bool                     version_was_complete = false;
    dll_info_version_struct  first_version = {};
    dll_info_version_struct  version_after = {};

    library()
    {
        void *handle = ::dlopen(SOLVANE_PLUGIN, RTLD_NOW | RTLD_LOCAL);
        if (handle == nullptr) {
            ADD_FAILURE() << ::dlerror();
            std::abort();
        }
        info = static_cast<dll_info_struct *>(::dlsym(handle, "dll_info"));
        version = static_cast<dll_info_version_struct *>(::dlsym(handle, "dll_info_version"));
        peers = static_cast<tt_peer_table_struct *>(::dlsym(handle, "tt_peer_table"));
        deinit = reinterpret_cast<void (*)()>(::dlsym(handle, "deinit_dll"));
        info_was_zero = all_zero(info, sizeof *info);
        peers_were_zero = all_zero(peers, sizeof *peers);
        first_version = *version;
        deinit(); /* harmless before the start */
        version->alloc = version->alloc_clear = our_alloc;
        version->realloc = version->realloc_clear = our_realloc;
        version->free = version->free_tagged = our_free;
        version_after = *version;
        reinterpret_cast<void (*)()>(::dlsym(handle, "init_dll"))();
    }
};

library &plug_in()
{
    static library loaded;
    return loaded;
}

TEST(exports, are_exactly_five)
{
    std::set<std::string> names;
    FILE                 *nm = ::popen("nm -D --defined-only " SOLVANE_PLUGIN, "r");
    ASSERT_NE(nm, nullptr);
    char line[512];
    while (std::fgets(line, sizeof line, nm) != nullptr) {
        std::string text = line;
        text.erase(text.find_last_not_of('\n') + 1);
        names.insert(text.substr(text.rfind(' ') + 1));
    }
    ASSERT_EQ(::pclose(nm), 0);
    EXPECT_EQ(names, (std::set<std::string>{"deinit_dll", "dll_info", "dll_info_version", "init_dll", "tt_peer_table"}));
}

TEST(exports, are_empty_before_the_start_but_for_the_service_record)
{
    EXPECT_TRUE(plug_in().info_was_zero);
    EXPECT_TRUE(plug_in().peers_were_zero);
    const auto &v = plug_in().first_version;
    EXPECT_STREQ(v.version_text, "1.0");
    EXPECT_EQ(v.version_number, 1U);
    EXPECT_TRUE(v.alloc && v.alloc_clear && v.realloc && v.realloc_clear && v.free && v.free_tagged);
    EXPECT_TRUE(v.memset && v.memset_clear && v.memcpy && v.memcmp && v.exit && v.sprintf);
}

TEST(service_record, is_the_hosts_to_change_and_never_written)
{
    EXPECT_EQ(std::memcmp(plug_in().version, &plug_in().version_after, sizeof(dll_info_version_struct)), 0);
}

/* A text of three octets into a structure that holds none yet: its array has to grow, and does so in our memory. */
TEST(service_record, serves_the_codecs)
{
    const tt_peer_row *row = nullptr;
    for (std::uint32_t i = 0; i < plug_in().peers->count && row == nullptr; ++i) {
        row = std::strcmp(plug_in().peers->rows[i].name, "mta_string_struct") == 0 ? &plug_in().peers->rows[i] : nullptr;
    }
    ASSERT_NE(row, nullptr);
    const std::uint8_t         frame[] = {3, 'a', 'b', 'c'};
    PerError                   error = {};
    unpack_info_struct         cursor = {frame, 0, sizeof frame, &error};
    std::vector<std::uint64_t> value(row->size / 8 + 1);
    const std::size_t          before = ours.used;
    row->unpack(value.data(), &cursor);
    EXPECT_EQ(error.code, 0U);
    EXPECT_EQ(cursor.bits, 32U);
    EXPECT_GT(ours.used, before);

    std::uint8_t     written[8] = {};
    pack_info_struct out = {written, 0};
    row->pack(&out, value.data());
    EXPECT_EQ(out.bits, 32U);
    EXPECT_EQ(std::memcmp(written, frame, sizeof frame), 0);

    bool found = false; /* the array's address, somewhere in the structure */
    for (std::size_t at = 0; at + sizeof(void *) <= row->size; at += sizeof(void *)) {
        const void *word = nullptr;
        std::memcpy(&word, reinterpret_cast<const char *>(value.data()) + at, sizeof word);
        found = found || ours.holds(word);
    }
    EXPECT_TRUE(found);
}

TEST(peer_table, stands_directly_behind_the_interface_record)
{
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(plug_in().peers),
              reinterpret_cast<std::uintptr_t>(plug_in().info) + sizeof(dll_info_struct));
}

TEST(slots, are_filled_but_for_the_reserved_ones)
{
    const auto *words = reinterpret_cast<const std::uintptr_t *>(plug_in().info);
    const std::set<int> reserved = {6, 9, 44, 45};
    for (int slot = 1; slot <= 61; ++slot) {
        EXPECT_EQ(words[slot - 1] == 0, reserved.count(slot) == 1) << "slot " << slot;
    }
    EXPECT_EQ(words[0], 10U) << "the count takes a whole word";
    EXPECT_EQ(plug_in().info->stack_open_hook(42), 42U);
    EXPECT_EQ(plug_in().info->tt_comm_info_hook(43), 43U);
    EXPECT_STREQ(plug_in().info->entity_enum_name, "sdi_entity_enum");
    EXPECT_STREQ(plug_in().info->var_access_root, "var_access_start_struct");
}

TEST(registry, has_eight_domains_in_ten_rows)
{
    const auto *rows = plug_in().info->entity_info;
    for (int i = 0; i < ENTITY_LAST; ++i) {
        const bool domain = i < TT_NO_DOMAINS;
        EXPECT_EQ(rows[i].valid, domain ? 1 : 0) << i;
        if (!domain) {
            continue;
        }
        for (const char *text : {rows[i].version_text, static_cast<const char *>(rows[i].uuid), rows[i].file_code_enum,
                                 rows[i].sap_enum, rows[i].msg_enum, rows[i].module_enum, rows[i].channels_enum,
                                 rows[i].error_actions_enum, rows[i].peer_msg_param_enum, rows[i].context_struct}) {
            EXPECT_NE(text, nullptr) << i;
        }
        EXPECT_EQ(rows[i].msg_table == nullptr, i == ENTITY_DEFAULT) << i;
        EXPECT_EQ(rows[i].module_states == nullptr, i != ENTITY_STACK) << i;
        EXPECT_EQ(rows[i].reserved, 0U) << i;
    }
}

TEST(dictionaries, share_their_types_and_leave_the_target_side_to_the_host)
{
    const auto *tool = plug_in().info->tool_offsize;
    const auto *target = plug_in().info->target_offsize;
    ASSERT_EQ(tool->count, 8U);
    ASSERT_EQ(target->count, 8U);
    for (int i = 0; i < TT_NO_DOMAINS; ++i) {
        EXPECT_EQ(tool->records[i].structs, target->records[i].structs) << i;
        EXPECT_EQ(tool->records[i].types, target->records[i].types) << i;
        EXPECT_NE(tool->records[i].uuid, target->records[i].uuid) << i << ": a copy each";
        EXPECT_STREQ(tool->records[i].uuid, target->records[i].uuid) << i;
        EXPECT_EQ(tool->records[i].no_offsize, target->records[i].no_offsize) << i;
        EXPECT_TRUE(all_zero(target->records[i].bt_info, sizeof(rw_bt_info))) << i;
        EXPECT_TRUE(all_zero(target->records[i].offsize, sizeof(rw_offsize_type) * target->records[i].no_offsize)) << i;
        EXPECT_EQ(std::memcmp(tool->records[i].bt_info, tool->records[0].bt_info, sizeof(rw_bt_info)), 0) << i;
    }
}

TEST(peer_table, names_each_structure_once)
{
    std::set<std::string> names;
    ASSERT_GT(plug_in().peers->count, 0U);
    for (std::uint32_t i = 0; i < plug_in().peers->count; ++i) {
        const auto &row = plug_in().peers->rows[i];
        EXPECT_TRUE(names.insert(row.name).second) << row.name;
        EXPECT_GT(row.size, 0U) << row.name;
        EXPECT_TRUE(row.pack != nullptr && row.unpack != nullptr) << row.name;
        EXPECT_EQ(row.reserved, 0U) << row.name;
    }
}

TEST(features, answer_without_regard_to_case)
{
    const auto asks = plug_in().info->dll_feature_supported;
    EXPECT_EQ(asks("CTC Gen"), 1);
    EXPECT_EQ(asks("trace id integer"), 1);
    EXPECT_EQ(asks("TRACE ID Integers"), 0);
    EXPECT_EQ(asks(nullptr), 0);
}

/* Every structure laid out, every reference, message, index, text, trace id and peer size followed. */
TEST(tool, finds_no_fault_in_the_tables)
{
    const auto result = run_tool({"--lib", SOLVANE_PLUGIN, "check"});
    EXPECT_EQ(result.code, 0) << result.out << result.err;
    EXPECT_NE(result.out.find(": no fault\n"), std::string::npos) << result.out;
}

TEST(tool, walks_the_whole_dictionary)
{
    for (const char *command : {"types", "messages", "domains", "statements", "info", "peers"}) {
        const auto result = run_tool({"--lib", SOLVANE_PLUGIN, command, "--json"});
        EXPECT_LE(result.code, 1) << command << ": " << result.err;
        EXPECT_EQ(result.err.find("broken"), std::string::npos) << result.err;
        EXPECT_NE(result.out.find("{\"schema\":\"solvane."), std::string::npos) << command;
    }
}

} // namespace
} // namespace solvane::tools
