// The wire form of a service message, worked out of its structure's description in the dictionary.
//
// The members go in the order of their declaration, numbers most significant octet first; a counted array stands where
// its pointer does, an optional member only when its flag is set, and the capacity `x_size` beside a counted pointer
// is left out.  The statistics of the tasks depart from that: the entries are counted in octets, and in an entry the
// name stands right behind its length.  An inter-layer message inside another message has a form of its own
// (agent_packet.h).  For the four structures that the plug-in codes itself ask its peer table instead.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "dictionary.h"

namespace solvane::tools {

struct wire_form;

/// A member on the wire.
struct wire_field {
    static constexpr std::size_t none = ~std::size_t{0};

    const rw_member_row   *row = nullptr;
    resolved_type          type;
    unsigned               size = 0;         ///< octets of the number, or of an element; 0 with `inside`
    bool                   is_array = false;
    std::size_t            fixed = 0;        ///< elements of an array that is not counted
    std::size_t            counted_by = none; ///< field that holds the number of elements
    bool                   count_is_octets = false;
    std::size_t            present_by = none; ///< field that is not 0 when this one is there
    bool                   is_message = false; ///< an inter-layer message
    std::vector<wire_form> inside;           ///< one: the form of the structure, or of the elements
};

struct wire_form {
    const domain           *in = nullptr;
    std::string_view        name;
    std::vector<wire_field> fields;
};

/// The form of a structure; nothing when the dictionary does not know it or it holds what has no wire form.
std::optional<wire_form> wire_form_of(const domain &in, std::string_view structure);

struct wire_value;
using wire_record = std::map<std::string, wire_value, std::less<>>;

/// What goes into a field: a number, an array of numbers, or structures.
struct wire_value {
    std::variant<std::uint64_t, std::vector<std::uint64_t>, std::vector<wire_record>> is;

    wire_value(std::uint64_t number) : is(number) {}
    wire_value(std::vector<std::uint64_t> numbers) : is(std::move(numbers)) {}
    wire_value(std::vector<wire_record> records) : is(std::move(records)) {}
};

/// The body that holds these values; fields without one are 0, counts and presence flags follow from what there is.
/// Inter-layer messages inside are left out.
octets write_wire(const wire_form &form, const wire_record &values);

} // namespace solvane::tools
