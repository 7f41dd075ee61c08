// Look-ups in the dictionaries of the plug-in: domains, types, enumerations, messages.
//
// A dictionary is data from outside: every index is tested before it is followed, and a broken one ends the
// command with exit_mismatch and the place of the fault.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "plugin.h"
#include "solvane/solvane.h"
#include "text.h"

namespace solvane::tools {

/// A stack domain with the tool side's layout of its types.
struct domain {
    std::int32_t                number = 0; ///< sdi_entity_enum
    std::string_view            name;       ///< the short name that this tool uses: stack, gsm, umts, ...
    const tt_entity_info       *row = nullptr;
    const rw_debug_info_struct *types = nullptr;

    std::span<const rw_struct_row> structs() const { return {types->structs, types->no_structs}; }
    std::span<const rw_type_row>   type_rows() const { return {types->types, types->no_types}; }
    std::span<const rw_enum_row>   enums() const { return {types->enums, types->no_enums}; }
    std::span<const tt_msg_row>    messages() const;
};

/// What a member or a type row says of its type, before typedefs are followed.
struct type_use {
    std::uint32_t               kind = RW_KIND_VOID; ///< rw_kind
    std::string_view            name;
    std::uint32_t               index = RW_NO_INDEX;
    std::uint32_t               rt_tag = 0;
    std::span<const rw_dim_row> dims;
};

/// A type with all its typedefs followed.
struct resolved_type {
    std::uint32_t           kind = RW_KIND_VOID; ///< never RW_KIND_TYPEDEF
    std::string_view        name;                ///< of the last row on the way
    std::uint32_t           index = RW_NO_INDEX;
    std::uint32_t           rt_tag = 0;          ///< the first tag met on the way, 0 for none
    std::vector<rw_dim_row> dims;                ///< all declarator levels, outermost first

    bool is_record() const { return kind == RW_KIND_STRUCT || kind == RW_KIND_UNION; }
};

/// One declarator level with its extent worked out.
struct level {
    bool          pointer = false;
    std::uint64_t count = 0; ///< elements of an array level
};

/// A message of a domain, with its row.
struct found_message {
    const domain     *where = nullptr;
    const tt_msg_row *row = nullptr;
};

/// The valid domains of a started plug-in, in the order of their numbers.
std::vector<domain> domains_of(const plugin &loaded);

/// Short name of a domain number, or the number as text where there is no domain.
std::string domain_name(std::uint32_t number);

/// Keeps the domain that `wanted` names: short name, number, or a literal of the entities' enumeration such as
/// ENTITY_STACK; all when empty.  Throws `failure` with exit_usage.
std::vector<domain> chosen_domains(const plugin &loaded, const std::string &wanted);

type_use use_of(const rw_member_row &member);
type_use use_of(const rw_type_row &row);
type_use use_of(const domain &in, const rw_struct_row &row);

/// The row by which a type is known: a name of `types`, else of `structs` or `enums`.
std::optional<type_use> find_type(const domain &in, std::string_view name);

resolved_type resolve(const domain &in, const type_use &use);
const rw_struct_row &struct_row(const domain &in, const resolved_type &type);
const rw_enum_row   &enum_row(const domain &in, const resolved_type &type);

/// Octets of the type at declarator level `from`, 0 the outermost: an array's whole extent, a pointer's width, or
/// behind the last level the type itself.
std::uint64_t size_of(const domain &in, const resolved_type &type, std::size_t from = 0);

/// The extents of all levels.
std::vector<level> levels_of(const domain &in, const resolved_type &type);

/// An entry of the layout table.
std::uint32_t offsize_at(const domain &in, std::uint32_t index);

/// Octets of a basic kind, as the basic-type block tells; a pointer is RW_KIND_VOID.
std::uint32_t basic_size(const domain &in, std::uint32_t kind);

/// Whether numbers are stored with their least significant octet first, read from the block's test value.
bool little_endian(const domain &in);

/// The word that people use for a kind: struct, union, enum, unsigned long, ...
const char *kind_word(std::uint32_t kind);
/// plain, pointer, count, ...
const char *role_word(std::uint32_t role);

const rw_literal_row *find_literal(const rw_enum_row &row, std::int64_t value);
const rw_enum_row    *find_enum(const domain &in, std::string_view name);

/// What the run-time rules say of the member with `selector` in a value whose tag is `tag`: a rule row, or null.
const rw_rt_rule_row *find_rule(const domain &in, std::uint32_t selector, std::uint32_t tag);
/// The row of `types` that a rule leads to, or null.
const rw_type_row *rule_type(const domain &in, const rw_rt_rule_row &rule);

/// The element type of a list type, found through the rules of its list and node types; nothing when the type is
/// no list.
std::optional<type_use> list_element(const domain &in, const resolved_type &type);

/// Rows with that name, or with that number as code.
std::vector<found_message> find_messages(std::span<const domain> in, std::string_view name_or_code);

/// Names of all types of a domain: those of `types`, then those of `structs` and `enums` that are not among them.
std::vector<std::string_view> type_names(const domain &in);

} // namespace solvane::tools
