// The one type model: what every front end lowers to and every emitter prints.
//
// Behind this header nothing is looked up by name.  All decisions are made here (order of rows, indices, roles,
// tags); an emitter only spells them out.  Indices into the vectors of `model` are called `..._id`; row numbers
// of a domain's tables are called `..._row`.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/diagnostics.h"
#include "model/ids.h"
#include "model/per.h"
#include "model/wire.h"

namespace solvane::gen {

/// Kind codes of the dictionary, as the host sees them.
enum class kind : std::uint8_t {
    unsigned_long, signed_long, unsigned_int, signed_int, unsigned_short, signed_short, unsigned_char, plain_char,
    signed_char, structure, union_, enumeration, type_name, nothing, bit_field
};

/// Roles of a member, as the host sees them.
enum class role : std::uint8_t {
    plain = 0, pointer = 1, count = 2, array = 3, structure = 4, union_ = 5, selector = 6, optional = 8, presence = 9
};

/// One declarator level, outermost first.
struct dimension {
    bool          pointer = false;
    std::uint32_t count = 0;  ///< elements of an array level
};

/// The use of a type: a basic kind, or a definition of the model by its id.
struct type_use {
    kind          base = kind::nothing;
    std::uint32_t id = no_index;  ///< model::records for structure and union_, model::enums, model::aliases
};

struct literal {
    std::string  name;
    std::int32_t value = 0;
    bool         evaluated = true;  ///< false: the stack's initialiser could not be evaluated, value is 0
    place        where;
};

struct enumeration {
    std::string          name;  ///< empty for an anonymous one, which `alias_id` then names
    std::uint32_t        alias_id = no_index;
    std::uint32_t        unit_id = 0;
    std::vector<literal> literals;
    place                where;
};

struct member {
    std::string            name;
    type_use               type;              ///< for a bit-field its storage type
    std::vector<dimension> dims;
    std::uint32_t          bit_width = 0;     ///< 0: not a bit-field
    gen::role              role = role::plain;
    std::uint32_t          ref = no_ref;      ///< by role: member index, or in a union the case value
    std::uint32_t          rt_selector = 0;   ///< 0: the run-time type rules do not apply
    bool                   hidden = false;    ///< in the record, not in the dictionary
    place                  where;
};
// Member indices of the dictionary (`ref` of a structure's member) count the members that are not hidden.

struct record {
    std::string         name;
    bool                is_union = false;
    std::uint32_t       unit_id = 0;
    std::vector<member> members;
    place               where;
    std::optional<wire_codec> wire;  ///< of an element or a message
};

/// A typedef.  Those of a list family carry run-time tags.
struct alias {
    std::string            name;
    type_use               base;
    std::vector<dimension> dims;
    std::uint32_t          unit_id = 0;
    std::uint32_t          list_id = no_index;  ///< the family that made it
    place                  where;
};

/// `list X of E`: ids of its five aliases.
struct list_family {
    std::string   name;
    std::uint32_t list_alias = 0;     ///< X
    std::uint32_t node_alias = 0;     ///< ASN_LST_X
    std::uint32_t pointer_alias = 0;  ///< ASN_LST_P_X
    std::uint32_t element_alias = 0;  ///< ASN_LST_D_X
    std::uint32_t rt_node_alias = 0;  ///< TT_RTYPE_ASN_LST_X
};

/// A named number of a definition file.
struct constant {
    std::string  name;
    std::int64_t value = 0;
    std::uint32_t unit_id = 0;
};

/// A definition in the order of its file.
struct definition {
    enum class what : std::uint8_t { enumeration, record, alias, constant } kind;
    std::uint32_t id = 0;
};

/// One definition file.
struct unit {
    std::string                stem;
    std::string                path;         ///< from the root of the definitions, '/' between the parts
    std::string                declared_in;  ///< header that holds the records by hand; empty: they are generated
    std::vector<std::uint32_t> imports;      ///< unit ids, all smaller than this unit's own
    std::vector<definition>    definitions;
    std::vector<std::uint32_t> forward_records; ///< records that are pointed to before their definition
};

// ---------------------------------------------------------------------------------------- the domains' tables

/// A row of a domain's type table.
struct type_row {
    std::string            name;
    std::uint32_t          rt_tag = 0;
    kind                   base = kind::nothing;
    std::string            base_name;
    std::vector<dimension> dims;
    std::vector<std::uint32_t> dim_index;    ///< a level's index into `offsize`, no_index at a pointer
    std::uint32_t          type_index = no_index;
    std::string            cpp_name;         ///< spelling of the base for sizeof
    std::uint32_t          alias_id = no_index;  ///< no_index: the row of a tag
};

struct member_row {
    std::uint32_t              member = 0;        ///< index into record::members
    std::uint32_t              offsize_index = no_index;
    gen::role                  role = role::plain;
    std::uint32_t              ref = no_ref;
    std::uint32_t              rt_selector = 0;   ///< has_rt_rule is rt_selector != 0
    std::uint32_t              rt_tag = 0;
    gen::kind                  kind = kind::nothing;
    std::string                type_name;         ///< empty for a bit-field (null in the row)
    std::vector<std::uint32_t> dim_index;         ///< parallel to member::dims
    std::uint32_t              type_index = no_index;
};

struct struct_row {
    std::uint32_t           record_id = 0;
    std::uint32_t           size_index = 0;
    std::vector<member_row> members;
};

struct enum_row {
    std::uint32_t enum_id = 0;
    std::string   name;  ///< the tag, or the number of an anonymous one
};

/// One entry of the offsize table, as an expression over the generated records.
struct offsize_entry {
    enum class what : std::uint8_t { enum_size, record_size, member_offset, array_size, alias_array_size } kind;
    std::uint32_t id = 0;      ///< enum, record or alias id
    std::uint32_t member = 0;  ///< member_offset, array_size: index into record::members
    std::uint32_t level = 0;   ///< array sizes: dimension level
};

struct bit_field_row {
    std::uint32_t record_id = 0;
    std::uint32_t member = 0;
    std::uint32_t width = 0;
};

struct rt_rule_row {
    std::uint16_t selector = 0;
    std::uint16_t tag = 0;
    bool          has_length_func = false;
    std::uint32_t rt_type = 0;
};

struct rt_type_row {
    std::uint32_t id = 0;
    std::string   name;  ///< with its prefix
};

struct message_row {
    std::uint32_t code = 0;
    std::string   name;
    std::uint32_t sap_code = 0;
    std::string   sap_name;
    std::string   struct_name;  ///< empty: no body
};

/// A run of message codes: first and last row of the dense index.
struct message_range {
    std::uint32_t first_index = 0, first_code = 0, last_index = 0, last_code = 0;
};

struct value_row {
    std::string   text;
    std::uint32_t value = 0;
};

struct value_case {
    std::uint32_t          selector = 0;  ///< no_index: the default case
    std::vector<value_row> values;
};

struct value_field {
    std::string                name;
    std::optional<std::string> comment;  ///< as stored, double quotes included
    std::vector<value_row>     values;
    std::vector<value_case>    cases;
};

struct value_record {
    std::string                name;
    std::optional<std::string> comment;
    std::vector<value_row>     values;
    std::vector<value_field>   fields;
};

struct module_enum_row {
    std::uint32_t index = 0;  ///< module number; for states module number x 256 + machine number
    std::string   name;
};

/// The six per-module tables in the order of the registry row.
enum class module_table : std::uint8_t { file_codes, peer_msgs, proto_errors, timers, fsms, states };
inline constexpr std::size_t no_module_tables = 6;

struct domain {
    std::string  name;    ///< its folder
    std::string  entity;  ///< literal of the entities enumeration
    std::uint32_t entity_value = 0;
    // Registry row; an empty text stands for "none".
    std::string  file_codes, saps, messages_enum, modules, channels, error_actions, peer_params, context;
    std::array<std::vector<module_enum_row>, no_module_tables> module_tables;

    std::vector<std::uint32_t> units;  ///< in dependency order, imports included

    std::vector<struct_row>    structs;
    std::vector<type_row>      types;
    std::vector<enum_row>      enums;
    std::vector<offsize_entry> offsize;
    std::vector<bit_field_row> bit_fields;
    std::vector<rt_rule_row>   rt_rules;
    std::vector<rt_type_row>   rt_types;

    bool                       has_messages = false;
    std::vector<message_row>   messages;
    bool                       indexed = false;
    std::vector<std::uint32_t> index_codes;  ///< code at each index, the two sentinels included
    std::vector<message_range> ranges;       ///< the closing run for code 0 included

    std::vector<value_record>  values;       ///< without the end row
};

struct trace_item {
    std::uint32_t id = 0;  ///< before the rows are laid the first id of its module
    std::string   format;
    std::uint32_t status = 0;
    std::string   file;
    std::int32_t  line = 0;
};

/// A type that has a codec: a row of the peer table.
struct peer_row {
    std::string struct_name;
    type_use    type;              ///< a structure, or any type of an ASN.1 schema
    bool        of_schema = false; ///< its functions are the entries of an ASN.1 codec
    std::string pack;              ///< names of the two functions
    std::string unpack;
};

/// Rows that are registered together, in their order.
struct peer_family {
    std::string           name;
    std::vector<peer_row> rows;
};

/// A whole stack build.
struct model {
    std::string baseline;        ///< baseline text
    std::string version_text;
    std::string variables_root;  ///< structure name
    std::string entities_enum;   ///< enumeration name

    std::vector<unit>        units;
    std::vector<enumeration> enums;
    std::vector<record>      records;
    std::vector<alias>       aliases;
    std::vector<list_family> lists;
    std::vector<constant>    constants;

    std::vector<domain>      domains;  ///< in the order of their entity values

    std::vector<peer_family> peer_families;  ///< in the order of registration

    per::plan                codecs;   ///< of the ASN.1 types

    std::vector<std::string> trace_modules;
    std::vector<trace_item>  traces;   ///< head and last items included, ascending
};

/// The name of a basic kind in a row ("unsigned long", "void"); empty for the other kinds.
std::string_view basic_name(kind base);

/// The C++ spelling of a type use without its declarators ("uint8", "mm_lai_struct", "uint32_t").
std::string cpp_type(const model &m, const type_use &use);

} // namespace solvane::gen
