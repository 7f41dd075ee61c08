// What the emitters of codecs share: indented lines, places as expressions, widths of members.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "model/model.h"

namespace solvane::gen {

/// Lines of a function's body.
struct code_block {
    std::string  &out;
    std::uint32_t level = 1;

    void line(std::string_view text);
    void open(std::string_view head);    ///< `head {`
    void close(std::string_view tail = "}");
    /// The terms of an expression behind `head`, one a line where they do not fit one.
    void terms(std::string_view head, const std::vector<std::string> &terms, std::string_view tail);
};

/// `value->plmn.mcc[1]`
std::string place_text(const model &m, const wire_place &p);
/// The name of the last member of a place.
std::string place_name(const model &m, const wire_place &p);
const member &place_member(const model &m, const wire_place &p);

/// Bits that a member itself can hold.
std::uint32_t member_bits(const model &m, const member &field);
/// The name of an enumeration type that a member has; empty for an integer.
std::string member_enum(const model &m, const member &field);

/// `0x0F`: that many bits.
std::string mask_text(std::uint32_t bits);

/// An expression that is true where all conditions hold.
std::string conditions_text(const model &m, const std::vector<wire_condition> &conditions);

/// An array of octets as `std::uint8_t *`, const to be read from.
std::string octets_text(const model &m, const wire_place &array, bool is_const);

/// A function of the codec of a record.
std::string codec_function(const model &m, std::uint32_t record_id, const char *operation);

/// The function for the items of a part inside the codec of a record.
std::string content_name(const model &m, std::uint32_t record_id, const wire_item &part);

/// Elements that are written of an array.
std::string written_count(const model &m, const wire_item &array);

void put_pack(std::string &out, const model &m, std::uint32_t record_id, std::string_view file);
void put_unpack(std::string &out, const model &m, std::uint32_t record_id);
/// Releases what the member of a union that its selector tells holds.
void put_choice_release(code_block &code, const model &m, const wire_item &choice);

void put_release(std::string &out, const model &m, std::uint32_t record_id);

} // namespace solvane::gen
