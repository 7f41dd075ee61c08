// What the emitters of the PER codecs share: lines of code that know their number, and how a usage is named, tested
// and laid into a word of bits.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "emit/text.h"
#include "model/per.h"

namespace solvane::gen::per {

/// C++ in the making.  Blocks are indented to the depth they stand at.  `$line$` in a block is the line of the file
/// that it ends up on.
class code_text {
public:
    explicit code_text(std::string head = {});

    void               put(std::string_view block, std::initializer_list<named> values = {});
    void               open(std::string_view block, std::initializer_list<named> values = {}); ///< put, then deeper
    void               close(std::string_view block = "}\n");                                  ///< back, then put
    void               gap(); ///< an empty line, unless there is one or a block has just begun

    /// A parameter: its type, up to the name, and the name.
    struct parameter {
        std::string type;
        std::string name;
    };
    /// Parameters that the body does not name lose their names.
    void               open_function(std::string_view result, std::string_view name,
                                     const std::vector<parameter> &parameters);
    void               close_function();
    std::string        take() { return std::move(text_); }

private:
    std::string   text_;
    std::uint32_t line_ = 1;
    std::size_t   depth_ = 0;

    std::vector<std::string> names_;        ///< parameters of the function that is open
    std::size_t              signature_ = 0; ///< where it begins in the text
    std::size_t              body_ = 0;
};

/// A value where it stands: "value->a", "*value".
struct spot {
    std::string value;    ///< the field
    std::string address;  ///< a pointer to it
};

spot own_spot();                                ///< the value of the function itself
spot member_spot(std::string_view name);        ///< a member of a SEQUENCE
spot alternative_spot(std::string_view name);   ///< an alternative of a CHOICE
spot element_spot();                            ///< what `element` points to
spot array_spot();                              ///< element `n` of the value, an array

/// Whether the usage is a field of so many bits, up to 32, whatever its value; `in_pack` as pack writes it, which is
/// more often.
bool is_field(const usage &u, bool in_pack);
std::uint32_t field_width(const usage &u, bool in_pack);

/// Whether an unpack of it goes through the error chain.
bool is_chained(const usage &u);

/// Presence in the record: the flag says "absent" for an optional member, "the default applies" for one with a DEFAULT.
std::string presence_test(const member &m, std::string_view record = "value"); ///< condition that it is written
std::string presence_bit(const member &m);                                     ///< 0 or 1, unsigned

/// Whether functions of such a type go through its parts.
bool has_parts(shape s);

/// "1..60 in 6 bits", for a comment.
std::string describe(const usage &u);
std::string describe(const whole_number &n);
std::string describe(const selection &s);

/// `n` as an unsigned literal; as a literal of a signed 32-bit word.
std::string unsigned_literal(std::uint64_t n);
std::string int_literal(std::int64_t n);

/// "8", "16", "24" or "32": the band of a read or write of `width` bits, 1 to 32.
std::string band(std::uint32_t width);

/// Fields of known width that follow each other in the stream are read and written as one word of up to 32 bits.
struct bit_field {
    std::uint32_t width = 0;
    std::string   note;              ///< for a comment
    const usage  *type = nullptr;    ///< null for a presence bit and the like
    spot          at;                ///< of a usage
    std::string   bit;               ///< else the value to be written
};

/// Cuts fields into words; fields of no bits stay with those around them.
std::vector<std::vector<bit_field>> words_of(const std::vector<bit_field> &fields);
std::uint32_t                       width_of(const std::vector<bit_field> &word);
std::string                         notes_of(const std::vector<bit_field> &word);

/// The walk of a list by its cursor, up to a node without an element; `node` is where it stands.
inline constexpr std::string_view list_walk =
    "for (AsnListNode *node = value->curr = value->first; node && node->data; node = value->curr = node->next) {\n";

/// Members of the root or the additions, in their order.
std::vector<const member *> root_of(const codec &c);
std::vector<const member *> additions_of(const codec &c);

/// Ahead of the functions of a type in a source: its name and where it is defined.
void put_heading(code_text &out, const codec &c);

} // namespace solvane::gen::per
