// The codecs of a stack build: every type that is coded in unaligned PER (ITU-T X.691), with all that the emitters
// of its pack, unpack, size, print, free and clear functions print.
//
// The records themselves are definitions of the model (model.h) like any other; this header says how a value is
// written on the wire and what follows from it.  All names are final, every constraint is a number, aliases are looked
// through: an emitter looks nothing up but a codec by its index, and decides nothing.
//
//     schema  a family of modules with one name prefix and one set of rules         UMTS, LTE or NR
//     codec   a type with functions of its own: named, or nested and worth a name   Lte_UL_AM_RLC, Lte_UL_AM_RLCEnum
//     usage   a type where it stands: member, alternative, element, alias           carries its constraint in full
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/diagnostics.h"
#include "model/ids.h"

namespace solvane::gen::per {

/// What a schema's code has in common, and where the three differ.
struct schema {
    std::string   name;                 ///< "umts", "lte", "nr"
    std::string   prefix;               ///< of its C++ names: "", "Lte_", "Nr_"
    std::uint32_t codec_file_code = 0;  ///< second number of an allocation tag in pack and unpack functions
    std::uint32_t free_file_code = 0;   ///< the same in free functions
    bool          choice_is_checked = false;  ///< a selector beyond the last alternative is a hard error on unpack
};

/// The ASN.1 type behind all references.
enum class shape : std::uint8_t {
    boolean,      ///< AsnBool
    integer,      ///< AsnInt or UAsnInt
    enumerated,   ///< enumeration of 32 bits that holds the index of the enumerator
    null,         ///< AsnNull: a member with an address and no content
    octets,       ///< AsnOcts
    bits,         ///< AsnBits
    sequence,     ///< record of its members
    choice,       ///< record of `ChoiceId` and the union `a`
    list,         ///< AsnList; the elements are allocated
    array,        ///< elements in place, as many as the upper bound says
    unsupported,  ///< depends on an information object class: its functions report and code nothing
};

/// INTEGER, and the count of a list or array.
///
///   constrained       has_lower and has_upper: value - lower in `width` bits
///   semi-constrained  has_lower only: AsnIntSemiConstrained_..., for a count AsnLenSemiConstrained_...
///   unconstrained     neither: AsnIntUnconstrained_...
/// A count whose upper bound is 65536 or more is semi-constrained (X.691 11.9.4.1): has_upper is false then.
struct whole_number {
    bool          has_lower = false;
    bool          has_upper = false;
    std::int64_t  lower = 0;
    std::int64_t  upper = 0;
    std::uint32_t width = 0;        ///< bits of `upper - lower`; above 32 the record keeps the low 32 bits
    bool          exact = false;    ///< the range fills its bits: no test in either direction
    bool          is_unsigned = false;  ///< kept in a UAsnInt
};

/// Length of a string, as AsnOcts_pack and AsnBits_pack take it.
struct string_limits {
    std::uint32_t upper = 0;
    std::uint32_t lower = 0;
    std::uint32_t mode = 0;   ///< 0 no bound, 1 lower bound only, 2 both
};

/// Index of an ENUMERATED or of a CHOICE.
struct selection {
    std::uint32_t root_count = 0;
    std::uint32_t count = 0;           ///< with the additions that the schema knows
    std::uint32_t width = 0;           ///< bits of a root index
    bool          exact = false;       ///< without extension marker: the root fills its bits
    bool          extensible = false;
};

/// What is known of the coding of a type, to a fixed point where types refer to each other.
struct facts {
    bool can_fail = false;          ///< its unpack can record an error: calls want the error chain
    bool owns_memory = false;       ///< its free has something to do
    std::optional<std::uint32_t> constant_bits;  ///< every value takes as many bits
};

/// A type where it stands.
struct usage {
    gen::per::shape shape = shape::null;
    std::uint32_t   codec = no_index;  ///< the type's own functions; no_index: it has none
    bool            in_place = true;   ///< coded where it stands; false: by a call of `codec`
    std::string     cpp_type;          ///< "AsnInt", "Lte_UL_AM_RLCEnum", "Lte_MCC"
    std::string     label;             ///< type that an out-of-bounds report names

    whole_number  number;   ///< integer; list and array: the count
    string_limits string;   ///< octets and bits
    selection     index;    ///< enumerated; choice
    gen::per::facts facts;
};

enum class presence : std::uint8_t { mandatory, optional, with_default };

/// DEFAULT value.
struct default_value {
    std::int64_t              number = 0;  ///< of an integer, boolean (0 or 1) or enumerated (index)
    std::vector<std::uint8_t> octets;      ///< of a string, the last octet filled up with zero bits
    std::uint32_t             length = 0;  ///< of a string: bits or octets
    std::string               text;        ///< as the schema has it
};

/// Member of a SEQUENCE, in the order of the record.
struct member {
    std::string        asn_name;     ///< "t-PollRetransmit"; of a group "bracket_1"
    std::string        name;         ///< field of the record: "t_PollRetransmit"
    std::string        flag;         ///< presence field ahead of it: "t_PollRetransmitOpt"; empty where it has none
    gen::per::presence presence = presence::mandatory;
    usage              type;
    default_value      fallback;     ///< with_default
    std::uint32_t      addition = no_index;  ///< which of the additions, from 0; no_index: of the root
    bool               is_group = false;     ///< the members of a [[ ]] group, in a record of their own
    place              where;
};

/// Alternative of a CHOICE, in the order of its index.
struct alternative {
    std::string   asn_name;
    std::string   name;        ///< member of the union `a`
    usage         type;
    bool          is_addition = false;  ///< stands behind the extension marker: coded in an open type
    place         where;
};

/// A type with functions of its own: <name>_pack, _unpack, _size, _print, _free, _clear.
struct codec {
    std::string   name;          ///< of the C++ type, and how its functions' names begin
    std::string   asn_name;      ///< "UL-AM-RLC"; of a nested type that of the named one around it
    std::string   asn_text;      ///< its definition as the schema has it, without comments, lines as they were
    std::string   source;        ///< "lte-rrc.asn:123"
    std::string   module;        ///< "EUTRA-RRC-Definitions"
    bool          is_nested = false;
    std::uint32_t schema = 0;    ///< index into plan::schemas
    std::uint32_t unit = 0;      ///< model::units: the header with its record, and its output files
    bool          has_entry = false;  ///< a row of the peer table codes it: <name>_encode and <name>_decode as well

    usage         type;          ///< shape and constraint; its `codec` is this one or, for an alias, that of the base
    bool          is_alias = false;  ///< another name of `type.codec`; where `type.in_place` it may be narrower
    bool          is_extensible = false;      ///< sequence: has an extension marker
    std::uint32_t no_additions = 0;           ///< sequence: groups and single additions that the schema knows
    std::vector<member>      members;         ///< sequence
    std::vector<alternative> alternatives;    ///< choice
    std::vector<std::string> enumerators;     ///< enumerated: ASN.1 names, by index
    std::vector<usage>       element;         ///< list and array: exactly one
    std::uint32_t ilp32_size = 0, lp64_size = 0;  ///< octets of the record that a table tells; 0: none does
    place         where;
};

/// The types of a unit, in the order of their definition.
struct unit_codecs {
    std::uint32_t              unit = 0;    ///< model::units; its stem names the output files
    std::uint32_t              schema = 0;
    std::vector<std::uint32_t> codecs;
    std::vector<std::uint32_t> called;      ///< other units whose codecs are called, ascending
};

struct plan {
    std::vector<schema>      schemas;
    std::vector<codec>       codecs;   ///< a type stands behind those that it calls, as in the headers
    std::vector<unit_codecs> units;
};

/// Finds `facts` and `in_place` of every codec and usage, to a fixed point.
void find_facts(plan &p);

} // namespace solvane::gen::per
