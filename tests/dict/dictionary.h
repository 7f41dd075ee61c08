// The generated tables of a domain as a host sees them, for tests that go through all domains.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "solvane/solvane.h"
#include "tt_stack_build.h"

namespace dictionary {

inline constexpr std::array<const char *, TT_NO_DOMAINS> domain_names = {
    "infrastructure", "stack", "gsm", "umts", "signal", "lte", "ims", "nr"};

inline std::span<const rw_struct_row> structs(const rw_debug_info_struct &d) { return {d.structs, d.no_structs}; }
inline std::span<const rw_type_row> types(const rw_debug_info_struct &d) { return {d.types, d.no_types}; }
inline std::span<const rw_enum_row> enums(const rw_debug_info_struct &d) { return {d.enums, d.no_enums}; }
inline std::span<const rw_rt_rule_row> rt_rules(const rw_debug_info_struct &d) { return {d.rt_rules, d.no_rt_rules}; }
inline std::span<const rw_rt_type_row> rt_types(const rw_debug_info_struct &d) { return {d.rt_types, d.no_rt_types}; }
inline std::span<const rw_member_row> members(const rw_struct_row &s) { return {s.members, s.no_members}; }
inline std::span<const rw_literal_row> literals(const rw_enum_row &e) { return {e.literals, e.no_literals}; }
template <typename row> std::span<const rw_dim_row> dims(const row &r) { return {r.dims, r.no_dims}; }

/// The first row of that name, or null.
template <typename rows> auto find(rows table, std::string_view name) -> decltype(&table[0])
{
    for (auto &row : table)
        if (row.name == name)
            return &row;
    return nullptr;
}

/// Kind of what a type holds in place, with all typedefs looked through; RW_KIND_TYPEDEF where one of them is a
/// pointer or an array, and where they go round in a circle.
inline std::uint32_t base_kind(const rw_debug_info_struct &d, std::uint32_t kind, std::uint32_t type_index)
{
    for (std::uint32_t steps = 0; kind == RW_KIND_TYPEDEF && steps < d.no_types; ++steps) {
        const rw_type_row &t = d.types[type_index];
        if (t.no_dims != 0)
            break;
        kind = t.kind;
        type_index = t.type_index;
    }
    return kind;
}

/// The structure or union that a type name stands for, found as a host finds it; null where it stands for none.
inline const rw_struct_row *find_struct(const rw_debug_info_struct &d, std::string_view name)
{
    const rw_type_row *t = find(types(d), name);
    while (t != nullptr && t->kind == RW_KIND_TYPEDEF && t->no_dims == 0)
        t = &d.types[t->type_index];
    const bool found = t != nullptr && t->no_dims == 0 && (t->kind == RW_KIND_STRUCT || t->kind == RW_KIND_UNION);
    return found ? &d.structs[t->type_index] : nullptr;
}

/// The enumeration that a type name stands for, or null.
inline const rw_enum_row *find_enum(const rw_debug_info_struct &d, std::string_view name)
{
    const rw_type_row *t = find(types(d), name);
    while (t != nullptr && t->kind == RW_KIND_TYPEDEF && t->no_dims == 0)
        t = &d.types[t->type_index];
    return t != nullptr && t->no_dims == 0 && t->kind == RW_KIND_ENUM ? &d.enums[t->type_index] : nullptr;
}

/// A test that runs once a domain.
class each_domain : public testing::TestWithParam<std::uint32_t> {
protected:
    const rw_debug_info_struct  &tool() const { return tt_tool_records[GetParam()]; }
    const rw_debug_info_struct  &target() const { return tt_target_records[GetParam()]; }
    const rw_offsize_sup_struct &sup() const { return *tt_offsize_sups[GetParam()]; }
    const tt_domain_desc        &desc() const { return tt_domain_descs[GetParam()]; }
};

inline std::string domain_name(const testing::TestParamInfo<std::uint32_t> &info) { return domain_names[info.param]; }

} // namespace dictionary

/// Has the tests of a suite of `each_domain` run for all domains.
#define FOR_EACH_DOMAIN(suite)                                                                                        \
    INSTANTIATE_TEST_SUITE_P(domains, suite, testing::Range<std::uint32_t>(0, TT_NO_DOMAINS), dictionary::domain_name)
