// The syntax tree of ASN.1 modules (ITU-T X.680, X.681, X.682, X.683).
//
// The parser fills it and judges nothing; what the checker finds out is added in place, in the members marked
// `checked`.  Behind the checker nothing is looked up by name.  Nodes stay where they are once they are checked:
// pointers to them hold.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/diagnostics.h"

namespace solvane::gen::asn1 {

/// A word where it is written.
struct name {
    std::string text;
    place       where;
};

/// A value, or a reference to one.
struct value {
    enum class what : std::uint8_t { number, reference, boolean, null, bits, hex, text, braces };
    what              kind = what::null;
    std::int64_t      number = 0;  ///< number; boolean: 0 or 1
    std::string       text;        ///< digits, characters, or the name of a value or enumerator
    std::string       module;      ///< of a reference that names one
    std::vector<name> names;       ///< braces: the words inside, as of named bits
    place             where;
};

struct type;
struct constraint_set;

/// One element of a constraint.
struct constraint {
    enum class what : std::uint8_t {
        range,       ///< low..high; a single value has both the same
        size,        ///< SIZE
        alphabet,    ///< FROM
        containing,  ///< CONTAINING a type
        components,  ///< WITH COMPONENTS: no effect on layout or encoding
        table,       ///< {Set} or {Set}{@field}, of an information object class
        described,   ///< CONSTRAINED BY, PATTERN
        subtype      ///< a type whose values are meant
    };
    what                        kind = what::range;
    std::optional<value>        low, high;  ///< range; none: MIN, MAX
    std::vector<constraint_set> inner;      ///< size and alphabet: one
    std::vector<type>           types;      ///< containing and subtype: one
    place                       where;
};

/// What stands in one pair of parentheses: elements of which one must hold.
struct constraint_set {
    std::vector<constraint> any_of;
    bool                    extensible = false;
    place                   where;
};

enum class tag_class : std::uint8_t { universal, application, context, private_ };
enum class tag_mode : std::uint8_t { by_module, explicit_, implicit };

struct tag {
    tag_class where_from = tag_class::context;
    tag_mode  mode = tag_mode::by_module;
    value     number;
    std::uint32_t resolved = 0;  ///< checked
};

/// `name(number)` of an ENUMERATED, INTEGER or BIT STRING.
struct named_number {
    name                 id;
    std::optional<value> number;
    bool                 is_addition = false;  ///< behind the extension marker
    std::int64_t         resolved = 0;         ///< checked
};

enum class type_kind : std::uint8_t {
    boolean, integer, enumerated, null, octets, bits, real, object_identifier, characters, any, sequence, set,
    sequence_of, set_of, choice,
    reference,   ///< to a type by its name
    class_field  ///< `CLASS.&field`
};

struct member;
struct assignment;

/// Bounds of a number or a length; none: not bounded there.
struct bounds {
    std::optional<std::int64_t> low, high;
    bool                        extensible = false;
};

struct type {
    type_kind                   kind = type_kind::null;
    place                       where;
    std::vector<tag>            tags;         ///< outermost first
    std::vector<constraint_set> constraints;  ///< all of them hold
    std::string                 text;         ///< reference, class_field, characters: its name
    std::string                 module;       ///< reference that names one
    std::string                 field;        ///< class_field: behind the '&'
    std::vector<type>           arguments;    ///< reference to a parameterised type
    bool                        other_arguments = false;  ///< arguments that are no types
    std::vector<member>         members;      ///< sequence, set, choice
    std::vector<named_number>   numbers;      ///< enumerated, integer, bits
    std::vector<type>           element;      ///< sequence_of, set_of: one
    bool                        extensible = false;

    // checked
    assignment *target = nullptr;  ///< reference: the type assignment
    bounds      range;             ///< integer: of all constraints on the way
    bounds      size;              ///< strings and lists likewise
};

enum class presence : std::uint8_t { mandatory, optional, with_default };

/// Component of a SEQUENCE or SET, alternative of a CHOICE.  A [[ ]] group is a component of type SEQUENCE.
struct member {
    name                 id;
    std::vector<type>    of;  ///< its one type
    asn1::presence       presence = asn1::presence::mandatory;
    std::optional<value> fallback;
    bool                 is_addition = false;
    bool                 is_group = false;
    bool                 is_components_of = false;
    std::int64_t         fallback_number = 0;  ///< checked: of an integer or boolean, or the enumerator's index
};

enum class assignment_kind : std::uint8_t { type, value, value_set, object_class, object, object_set };

struct assignment {
    assignment_kind      kind = assignment_kind::type;
    name                 id;
    std::vector<name>    parameters;   ///< dummy references
    bool                 odd_parameters = false;  ///< some of them stand for something else than a type
    std::vector<type>    of;           ///< type, or governor of a value, object or set; none for a class
    std::optional<value> content;      ///< of a value
    std::string          source;       ///< the definition without comments

    // checked
    std::uint32_t        module = 0;   ///< index into schema::modules
    std::uint8_t         state = 0;    ///< of walks that look for circles
    bool                 is_instance = false;  ///< of a parameterised type; `id.text` is "SetupRelease{X}"
    std::optional<std::int64_t> number;        ///< of an INTEGER value
};

struct import_list {
    std::vector<name> symbols;
    name              from;
};

struct module {
    name                      id;
    tag_mode                  tags = tag_mode::explicit_;
    bool                      automatic_tags = false;
    bool                      extensibility_implied = false;
    std::vector<import_list>  imports;
    std::list<assignment>     assignments;
    std::list<assignment>     instances;  ///< checked: of parameterised types, as far as types ask for them
    std::uint32_t             file = 0;
    bool                      is_generated = true;  ///< false: it is read for what others import
};

/// The modules of a schema, that import from each other.
struct schema {
    std::vector<module> modules;
};

} // namespace solvane::gen::asn1
