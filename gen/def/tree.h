// The syntax tree of the definition language.
//
// The parser fills it and judges nothing; what the checker finds out is added in place, in the members marked
// `checked`.  Behind the checker nothing is looked up by name.  Ids are those of the model that the tree becomes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "base/diagnostics.h"
#include "model/model.h"

namespace solvane::gen::def {

/// An identifier, or a path or text, where it is written.
struct name {
    std::string text;
    place       where;
};

/// A value: numbers, literals and constants, joined by operators.
struct expression {
    enum class what : std::uint8_t { number, name, negate, add, subtract, multiply, divide, shift_left, bit_or };
    what                    kind = what::number;
    std::uint64_t           number = 0;
    std::string             id;        ///< of a literal or constant
    std::vector<expression> operands;  ///< one of `negate`, else two
    place                   where;
};

/// A type where it is used: a basic type of C, or the name of a definition.
struct type_ref {
    name     written;
    bool     basic = false;
    type_use use;  ///< the parser fills in a basic type; checked
};

/// `*name[4]`
struct declarator {
    std::uint32_t           pointers = 0;
    name                    id;
    std::vector<expression> arrays;  ///< outermost first
    std::vector<dimension>  dims;    ///< checked
};

/// `counted(no_x)`, `hidden`, …; those from `bits` on belong to a wire format.
struct attribute {
    enum class what : std::uint8_t {
        counted, uncounted, optional, selected, case_, hidden, rt_selector,
        bits, minus, peek, lh, off_wire, length, to_end, chained, bcd, linked
    };
    what                      kind = what::hidden;
    place                     where;
    std::optional<name>       target;  ///< another member
    std::optional<expression> value;
    std::optional<expression> second;  ///< the width of `peek`
};
inline constexpr std::size_t no_attributes = 17;

struct member_def {
    type_ref                  type;
    declarator                decl;
    std::optional<expression> width;
    std::vector<attribute>    attributes;

    // checked: indices into record_def::members, no_index for none
    std::uint32_t bit_width = 0;
    std::uint32_t counted_by = no_index;
    std::uint32_t present_if = no_index;
    std::uint32_t selected_by = no_index;
    std::uint32_t case_value = no_ref;
    std::uint32_t rt_selector = 0;
    bool          hidden = false;
};

/// `digits[0]`, `plmn.mcc[2]`
struct part_ref {
    struct step {
        name                      member;
        std::optional<expression> index;
    };
    std::vector<step> steps;  ///< at least one
};

/// `recommendation_present`, `!ext`, `type == 4`, `flags & 3`, `left(2)`
struct condition_def {
    enum class what : std::uint8_t {
        set, clear, equal, unequal, less, less_equal, greater, greater_equal, mask, left
    };
    what                      kind = what::set;
    name                      member;  ///< of `left` the word itself
    std::optional<expression> value;
};

/// An item of an element or message, in the order of the wire.
struct wire_item_def {
    enum class what : std::uint8_t { member, spare, parts, flag, group, block, within, align, line };
    enum class presence : std::uint8_t { mandatory, optional, conditional };

    struct part {
        part_ref                  ref;
        std::optional<expression> width;
    };

    what  kind = what::member;
    place where;

    std::optional<member_def>  member;  ///< member; line, where it has a type
    name                       id;      ///< flag: the presence member or array; within: the size; block, line: the name
    name                       title;   ///< within: what tells it from another with this size; empty: none
    std::optional<expression>  width;   ///< spare; block: width of its length field
    std::optional<expression>  value;   ///< spare
    std::vector<part>          parts;
    std::optional<name>        trim;               ///< block: member that keeps the octets of the content
    bool                       inverse = false;    ///< flag
    bool                       any = false;        ///< flag: of an array
    std::vector<condition_def> conditions;         ///< group; flag that no bit tells
    std::vector<wire_item_def> items;              ///< group, block, within
    std::vector<wire_item_def> otherwise;          ///< group

    // line
    presence                      need = presence::mandatory;
    std::optional<std::uint64_t>  identifier;
    place                         identifier_where;
    wire_format                   format = wire_format::value;
    bool                          is_spare = false;  ///< a spare half octet
    std::optional<expression>     shortest, longest;  ///< octets; `n` at the end leaves `longest` empty
    bool                          half_length = false; ///< `1/2`
    bool                          exact = false;       ///< one number
    std::string                   clause;

    std::uint32_t member_id = no_index;  ///< checked: index into record_def::members
};

/// What an element or a message has beside its record.
struct wire_def {
    bool                       is_message = false;
    wire_direction             direction = wire_direction::none;
    std::optional<expression>  length;  ///< width of the length field of its own
    std::optional<name>        length_name; ///< in the message of an overflow
    std::optional<name>        trim;        ///< member that keeps the octets of the content
    std::vector<wire_item_def> items;

    std::optional<wire_codec> codec;  ///< checked
};

struct record_def {
    name                    id;
    bool                    is_union = false;
    bool                    of_schema = false;     ///< of an ASN.1 type, which may have no members
    std::vector<member_def> members;
    std::optional<wire_def> wire;                  ///< of an element or a message
    std::uint32_t           record_id = no_index;  ///< checked
};

struct literal_def {
    name                      id;
    bool                      evaluated = true;
    std::optional<expression> value;
    std::int32_t              number = 0;  ///< checked
};

struct enum_def {
    enum class source : std::uint8_t { here, messages, trace_modules };
    name                     id;  ///< of an anonymous one the typedef's
    bool                     anonymous = false;
    source                   from = source::here;
    std::vector<literal_def> literals;  ///< the checker adds those that come from a table
    std::uint32_t            enum_id = no_index;   ///< checked
    std::uint32_t            alias_id = no_index;  ///< checked: the typedef of an anonymous one
};

struct typedef_def {
    type_ref      type;
    declarator    decl;
    std::uint32_t alias_id = no_index;  ///< checked
};

struct list_def {
    name          id;
    type_ref      element;
    std::uint32_t list_id = no_index;   ///< checked
    std::uint32_t alias_id = no_index;  ///< checked: the first of its five names, which follow each other
    std::uint32_t list_record = no_index, node_record = no_index;  ///< checked: AsnList and AsnListNode
};

struct constant_def {
    name          id;
    expression    value;
    std::int64_t  number = 0;              ///< checked
    std::uint32_t constant_id = no_index;  ///< checked
};

using definition_def = std::variant<typedef_def, enum_def, record_def, list_def, constant_def>;

/// The five names of a list family, in the order of their rows.
inline constexpr const char *list_prefixes[] = {"", "ASN_LST_", "ASN_LST_P_", "ASN_LST_D_", "TT_RTYPE_ASN_LST_"};

/// A `.def` file of a domain or of `common`.
struct unit_def {
    std::uint32_t               file = 0;
    std::string                 path;
    std::string                 folder;  ///< its domain, or "common"
    std::string                 stem;
    std::vector<name>           imports;
    std::optional<name>         declared_in;
    std::vector<definition_def> definitions;
    bool                        of_schema = false;  ///< made of ASN.1 modules

    // checked
    std::uint32_t              unit_id = no_index;
    std::vector<std::uint32_t> import_ids;       ///< in the order of `imports`
    std::vector<std::uint32_t> forward_records;  ///< record ids, in the order of their first use
};

// ------------------------------------------------------------------------------------------ value texts (.val)

struct text_def {
    name          text;
    expression    value;
    std::uint32_t number = 0;  ///< checked
};

struct value_case_def {
    place                     where;
    std::optional<expression> selector;  ///< none: the default case
    std::vector<text_def>     values;
    std::uint32_t             number = no_index;  ///< checked
};

struct value_field_def {
    name                        id;
    std::optional<name>         comment;
    std::vector<text_def>       values;
    std::vector<value_case_def> cases;
};

struct value_record_def {
    name                         id;
    std::optional<name>          comment;
    std::vector<text_def>        values;
    std::vector<value_field_def> fields;
};

/// A `.val` file.
struct values_def {
    std::uint32_t                 file = 0;
    std::string                   path;
    std::string                   folder;
    std::vector<value_record_def> records;
};

// ---------------------------------------------------------------------------------- baseline.def and peers.def

/// `saps stack_sap_enum;`
struct domain_row_def {
    name key;
    name value;
};

/// `3.0: ciss_state_enum;`
struct module_row_def {
    place                        where;
    std::uint64_t                module = 0;
    std::optional<std::uint64_t> machine;
    name                         enumeration;
};

struct module_table_def {
    name                        key;
    std::vector<module_row_def> rows;
};

struct domain_def {
    name                          id;
    std::vector<domain_row_def>   rows;
    std::vector<module_table_def> tables;
    std::vector<name>             indexed;  ///< every `indexed` of the block
};

struct baseline_def {
    std::uint32_t           file = 0;
    std::vector<name>       baseline, version, variables, entities;  ///< every such row of the file
    std::vector<domain_def> domains;
};

struct peer_row_def {
    name          structure;
    name          pack;
    name          unpack;
    type_use      type;               ///< checked
    bool          of_schema = false;  ///< checked: the row of an ASN.1 type
};

struct peer_family_def {
    name                      id;
    std::vector<peer_row_def> rows;
};

struct peers_def {
    std::uint32_t                file = 0;
    std::vector<peer_family_def> families;
};

} // namespace solvane::gen::def
