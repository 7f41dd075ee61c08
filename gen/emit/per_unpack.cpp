// The unpack functions of the PER codecs, and the entries that decode a whole message.
//
//     void X_unpack(X *value, unpack_info_struct *stream)
//
// Fields of known width are read in place, those that follow each other by one read; presence bits stay in the word
// that was read.  Every call that can fail goes through the error chain (asn/per_codec.h).
#include <fmt/format.h>

#include "emit/per.h"
#include "emit/per_code.h"

namespace solvane::gen::per {

namespace {

/// One function in the making.
struct unpacker {
    code_text    &out;
    const plan   &p;
    const codec  &c;
    std::uint32_t no_words = 0;
};

std::string tag_of(const unpacker &u)
{
    return fmt::format("1, {}, $line$", u.p.schemas[u.c.schema].codec_file_code);
}

// --------------------------------------------------------------------------------------------- fields in place

/// `raw` as it stands in the record.
std::string stored(const usage &type, std::string_view raw)
{
    const whole_number &n = type.number;
    if (type.shape != shape::integer || n.lower == 0)
        return fmt::format("{}({})", type.cpp_type, raw);
    if (n.is_unsigned || n.lower < -0x40000000 || n.lower > 0x40000000 || n.width >= 31)
        return fmt::format("{}({} + {})", type.cpp_type, raw, unsigned_literal(static_cast<std::uint32_t>(n.lower)));
    return fmt::format("{}({}) {} {}", type.cpp_type, raw, n.lower < 0 ? '-' : '+', n.lower < 0 ? -n.lower : n.lower);
}

/// The condition that a stored value lies outside its range; empty where it cannot.
std::string range_test(const usage &type, const std::string &at)
{
    if (type.shape == shape::enumerated)
        return type.index.exact ? "" : fmt::format("{} > {}", at, type.index.root_count - 1);
    const whole_number &n = type.number;
    if (type.shape != shape::integer || n.exact || n.width > 32)
        return "";
    if (n.width < 31)
        return fmt::format("{} > {}", at, n.upper);
    // The sum may have wrapped: what was read is the distance from the lower bound.
    return fmt::format("std::uint32_t({}) - {} > {}", at, unsigned_literal(static_cast<std::uint32_t>(n.lower)),
                       unsigned_literal(static_cast<std::uint64_t>(n.upper - n.lower)));
}

/// `soft` is the statement that records the error.
void put_store(unpacker &u, const bit_field &f, std::string_view raw, std::string_view soft, std::string_view note)
{
    if (f.type->shape == shape::null)
        return;
    const std::string comment = note.empty() ? "" : fmt::format(" // {}", note);
    u.out.put("$at$ = $stored$;$comment$\n",
              {{"at", f.at.value}, {"stored", stored(*f.type, raw)}, {"comment", comment}});
    const std::string test = range_test(*f.type, f.at.value);
    if (!test.empty())
        u.out.put("if ($test$)\n    $soft$;\n", {{"test", test}, {"soft", soft}});
}

constexpr std::string_view soft_error = "per_out_of_range(stream)";
constexpr std::string_view soft_error_always = "per_set_error(stream, PER_SOFT_ERROR)";

std::string read_of(std::uint32_t width)
{
    return fmt::format("per_get_{}(stream, {})", band(width), width);
}

/// Reads one word of fields.  Presence bits get `presence` texts, by their place among the fields of that kind.
void put_word(unpacker &u, const std::vector<bit_field> &word, std::vector<std::string> &presence)
{
    const std::uint32_t width = width_of(word);
    if (word.size() == 1 && word[0].type != nullptr) {
        put_store(u, word[0], width == 0 ? "0" : read_of(width), soft_error, word[0].note);
        return;
    }
    std::string name;
    if (width > 0) {
        name = fmt::format("word{}", u.no_words++);
        u.out.put("const std::uint32_t $name$ = $read$; // $notes$\n",
                  {{"name", name}, {"read", read_of(width)}, {"notes", notes_of(word)}});
    }
    std::uint32_t left = width;
    for (const bit_field &f : word) {
        left -= f.width;
        const std::string shifted = left == 0 ? name : fmt::format("{} >> {}", name, left);
        const std::string raw = f.width == 0                ? "0"
                                : left + f.width == width   ? shifted
                                : f.width == 1              ? fmt::format("{} & 1", shifted)
                                                            : fmt::format("{} & {}", shifted, (1ull << f.width) - 1);
        if (f.type == nullptr)
            presence.push_back(raw);
        else
            put_store(u, f, raw, soft_error, "");
    }
}

void put_words(unpacker &u, std::vector<bit_field> &fields, std::vector<std::string> &presence)
{
    for (const std::vector<bit_field> &word : words_of(fields))
        put_word(u, word, presence);
    fields.clear();
}

// ------------------------------------------------------------------------------------- what is no field of its own

std::string string_call(const unpacker &u, const usage &type, const spot &at)
{
    return fmt::format("{}_unpack({}, stream, {}, {}, {}, {});", type.shape == shape::octets ? "AsnOcts" : "AsnBits",
                       at.address, type.string.mode == 2 ? type.string.upper : 0,
                       type.string.mode == 0 ? 0 : type.string.lower, type.string.mode, tag_of(u));
}

/// The statements of a chained number without an upper bound.
std::string number_call(const usage &type, const spot &at)
{
    const std::string address =
        type.number.is_unsigned ? fmt::format("reinterpret_cast<AsnInt *>({})", at.address) : at.address;
    return type.number.has_lower ? fmt::format("{} = 0;\nAsnIntSemiConstrained_unpack({}, stream, {});\n", at.value,
                                               address, int_literal(type.number.lower))
                                 : fmt::format("AsnIntUnconstrained_unpack({}, stream);\n", address);
}

/// Decodes a value whose presence is settled, without the chain around it.
void put_plain(unpacker &u, const usage &type, const spot &at, std::string_view soft = soft_error)
{
    switch (type.shape) {
    case shape::boolean:
    case shape::null:
        if (type.shape == shape::boolean)
            put_store(u, {1, {}, &type, at, {}}, read_of(1), soft, "");
        return;
    case shape::integer:
        if (!is_field(type, false) && type.number.has_upper && type.number.has_lower)
            u.out.put("$at$ = $stored$; // $note$\n",
                      {{"at", at.value},
                       {"stored", stored(type, fmt::format("per_get_wide(stream, {})", type.number.width))},
                       {"note", describe(type)}});
        else if (!is_field(type, false))
            u.out.put(number_call(type, at));
        else
            put_store(u, {0, {}, &type, at, {}}, type.number.width == 0 ? "0" : read_of(type.number.width), soft,
                      describe(type));
        return;
    case shape::enumerated:
        if (type.index.extensible)
            u.out.put("$at$ = $type$(per_get_extensible_enum(stream, $root$, $width$));\n",
                      {{"at", at.value},
                       {"type", type.cpp_type},
                       {"root", std::to_string(type.index.root_count)},
                       {"width", std::to_string(type.index.width)}});
        else
            put_store(u, {0, {}, &type, at, {}}, type.index.width == 0 ? "0" : read_of(type.index.width), soft,
                      describe(type));
        return;
    case shape::octets:
    case shape::bits:
        u.out.put(string_call(u, type, at) + "\n");
        return;
    case shape::sequence:
    case shape::choice:
    case shape::list:
    case shape::array:
        u.out.put("$name$_unpack($at$, stream);\n", {{"name", u.p.codecs[type.codec].name}, {"at", at.address}});
        return;
    case shape::unsupported:
        return;
    }
}

/// With the chain where it is wanted.  `leave` is the call that ends it.
void put_chained(unpacker &u, const usage &type, const spot &at, std::string_view leave)
{
    if (!is_chained(type)) {
        put_plain(u, type, at);
        return;
    }
    u.out.put("per_enter(stream, &local);\n");
    put_plain(u, type, at);
    u.out.put("if ($leave$)\n    return;\n", {{"leave", leave}});
}

constexpr std::string_view leave_mandatory = "per_leave(stream, &local, outer)";

void put_chain_locals(unpacker &u)
{
    u.out.put("void *const outer = stream->err_hndl;\nPerError    local;\n");
}

// -------------------------------------------------------------------------------------------------------- SEQUENCE

bool is_string(const usage &type)
{
    return type.shape == shape::octets || type.shape == shape::bits;
}

std::string leave_of(const member &m)
{
    if (m.flag.empty())
        return std::string(leave_mandatory);
    const bool by_flag = m.presence == presence::with_default && is_string(m.type);
    return fmt::format("per_leave_{}(stream, &local, outer, &value->{})", by_flag ? "flag" : "opt", m.flag);
}

/// Stores the DEFAULT where it applies.
void put_fallback(unpacker &u, const member &m)
{
    const spot at = member_spot(m.name);
    u.out.open("if (value->$flag$ == 1) { // DEFAULT $text$\n", {{"flag", m.flag}, {"text", m.fallback.text}});
    if (is_string(m.type)) {
        std::string octets;
        for (const std::uint8_t octet : m.fallback.octets)
            octets += fmt::format("{}0x{:02X}", octets.empty() ? "" : ", ", octet);
        const bool is_bits = m.type.shape == shape::bits;
        if (!octets.empty())
            u.out.put("static std::uint8_t octets[] = {$octets$};\n", {{"octets", octets}});
        u.out.put("const $type$ fallback = {$length$, $octets$};\n",
                  {{"type", is_bits ? "AsnBits" : "AsnOcts"},
                   {"length", std::to_string(m.fallback.length)},
                   {"octets", octets.empty() ? "nullptr" : "octets"}});
        u.out.put("Asn" + std::string(is_bits ? "Bits" : "Octs") + "_copy(" + at.address + ", &fallback, " + tag_of(u) +
                  ");\n");
    } else {
        u.out.put("$at$ = $type$($number$);\n",
                  {{"at", at.value}, {"type", m.type.cpp_type}, {"number", int_literal(m.fallback.number)}});
    }
    u.out.close();
}

/// A member whose presence bit is `present`, a text of one bit.
void put_optional(unpacker &u, const member &m, const std::string &present)
{
    const bool with_default = m.presence == presence::with_default;
    u.out.gap();
    u.out.put("value->$flag$ = $bit$; // $name$: $note$\n",
              {{"flag", m.flag},
               {"bit", with_default ? fmt::format("({}) == 0", present) : fmt::format("opt_present({})", present)},
               {"name", m.name},
               {"note", describe(m.type)}});
    if (m.type.shape != shape::null) {
        u.out.open("if (value->$flag$ == $written$) {\n", {{"flag", m.flag}, {"written", with_default ? "0" : "1"}});
        put_chained(u, m.type, member_spot(m.name), leave_of(m));
        u.out.close();
    }
    if (with_default)
        put_fallback(u, m);
}

void put_addition(unpacker &u, const member &m)
{
    u.out.gap();
    const std::string has = fmt::format("per_has_addition(&additions, {})", m.addition);
    if (m.flag.empty())
        u.out.open("if ($has$) { // $name$\n", {{"has", has}, {"name", m.name}});
    else {
        const bool with_default = m.presence == presence::with_default;
        u.out.put("value->$flag$ = $not$$has$; // $name$: $note$\n", {{"flag", m.flag},
                                                                     {"not", with_default ? "!" : ""},
                                                                     {"has", has},
                                                                     {"name", m.name},
                                                                     {"note", describe(m.type)}});
        u.out.open("if (value->$flag$ == $written$) {\n", {{"flag", m.flag}, {"written", with_default ? "0" : "1"}});
    }
    u.out.put("if (!per_open_unpack(stream, &end))\n    return;\n");
    put_chained(u, m.type, member_spot(m.name), leave_of(m));
    u.out.put("per_close_unpack(stream, end);\n");
    u.out.close();
    if (m.presence == presence::with_default)
        put_fallback(u, m);
}

void put_additions(unpacker &u)
{
    u.out.gap();
    u.out.open("if (extended != 0) {\n");
    u.out.put("per_additions additions;\n");
    if (!additions_of(u.c).empty())
        u.out.put("std::uint32_t end;\n");
    u.out.put("if (!per_get_additions(stream, &additions))\n    return;\n");
    for (const member *const m : additions_of(u.c))
        put_addition(u, *m);
    u.out.gap();
    u.out.put("if (!per_skip_additions(stream, &additions, $known$))\n    return;\n",
              {{"known", std::to_string(u.c.no_additions)}});
    u.out.close();
}

void put_sequence(unpacker &u)
{
    bool chained = false;
    for (const member &m : u.c.members)
        chained = chained || is_chained(m.type);
    if (chained)
        put_chain_locals(u);

    std::vector<bit_field>   fields;
    std::vector<std::string> presence;
    if (u.c.is_extensible)
        fields.push_back({1, "extension", nullptr, {}, {}});
    const std::vector<const member *> root = root_of(u.c);
    for (const member *const m : root)
        if (!m->flag.empty())
            fields.push_back({1, m->name, nullptr, {}, {}});
    std::size_t next = u.c.is_extensible ? 1 : 0;
    bool        named = !u.c.is_extensible;
    const auto  flush = [&] {
        put_words(u, fields, presence);
        if (!named)
            u.out.put("const std::uint32_t extended = $bit$;\n", {{"bit", presence[0]}});
        named = true;
    };
    for (const member *const m : root) {
        if (m->flag.empty() && is_field(m->type, false)) {
            fields.push_back({field_width(m->type, false), fmt::format("{}: {}", m->name, describe(m->type)), &m->type,
                              member_spot(m->name), {}});
            continue;
        }
        flush();
        if (!m->flag.empty())
            put_optional(u, *m, presence[next++]);
        else {
            u.out.gap();
            put_chained(u, m->type, member_spot(m->name), leave_mandatory);
        }
    }
    flush();
    if (u.c.is_extensible)
        put_additions(u);
}

// ---------------------------------------------------------------------------------------------------------- CHOICE

bool any_chained(const codec &c)
{
    for (const alternative &a : c.alternatives)
        if (is_chained(a.type))
            return true;
    return false;
}

/// The selected alternative.  A selector beyond the last one leaves the value as it is, or is a hard error.
void put_switch(unpacker &u)
{
    const bool chained = any_chained(u.c);
    const bool checked = u.p.schemas[u.c.schema].choice_is_checked && !u.c.type.index.exact;
    if (chained)
        u.out.put("per_enter(stream, &local);\n");
    u.out.put("switch (value->ChoiceId) {\n");
    for (std::size_t n = 0; n < u.c.alternatives.size(); ++n) {
        const alternative &a = u.c.alternatives[n];
        u.out.open("case $n$: // $name$\n", {{"n", std::to_string(n)}, {"name", a.asn_name}});
        put_plain(u, a.type, alternative_spot(a.name));
        u.out.put("break;\n");
        u.out.close("");
    }
    u.out.open("default:\n");
    if (checked)
        u.out.put("per_set_error(stream, PER_HARD_ERROR);\n");
    u.out.put("break;\n");
    u.out.close();
}

void put_root_choice(unpacker &u)
{
    const selection &s = u.c.type.index;
    u.out.put("value->ChoiceId = $read$; // $note$\n",
              {{"read", s.width == 0 ? "0" : read_of(s.width)}, {"note", describe(s)}});
    put_switch(u);
    if (any_chained(u.c))
        u.out.put("per_leave(stream, &local, outer);\n");
}

void put_extensible_choice(unpacker &u)
{
    const selection  &s = u.c.type.index;
    const std::string root = std::to_string(s.root_count);
    const bool        additions = s.count > s.root_count;
    u.out.put("if (!per_get_extensible_choice(stream, $root$, $width$, &value->ChoiceId))\n    return;\n",
              {{"root", root}, {"width", std::to_string(s.width)}});
    u.out.put("if (value->ChoiceId > $last$) { // of a later release\n    per_skip_open(stream);\n    return;\n}\n",
              {{"last", std::to_string(s.count - 1)}});
    if (additions) {
        u.out.put("std::uint32_t end  = 0;\nconst bool    open = value->ChoiceId >= $root$;\n", {{"root", root}});
        u.out.put("if (open && !per_open_unpack(stream, &end))\n    return;\n");
    }
    put_switch(u);
    const std::string leave(leave_mandatory);
    if (any_chained(u.c))
        u.out.put(additions ? "if (" + leave + ")\n    return;\n" : leave + ";\n");
    if (additions)
        u.out.put("if (open)\n    per_close_unpack(stream, end);\n");
}

void put_choice(unpacker &u)
{
    if (any_chained(u.c))
        put_chain_locals(u);
    if (u.c.type.index.extensible)
        put_extensible_choice(u);
    else
        put_root_choice(u);
}

// ----------------------------------------------------------------------------------------------------- SEQUENCE OF

void put_count(unpacker &u)
{
    const whole_number &n = u.c.type.number;
    if (n.has_upper && n.width == 0)
        u.out.put("std::uint32_t count = $lower$;\n", {{"lower", std::to_string(n.lower)}});
    else if (n.has_upper)
        u.out.put("std::uint32_t count = $read$$lower$; // $note$\n",
                  {{"read", read_of(n.width)},
                   {"lower", n.lower == 0 ? "" : " + " + unsigned_literal(static_cast<std::uint64_t>(n.lower))},
                   {"note", describe(n)}});
    else
        u.out.put("AsnLen count = 0;\nAsnLenSemiConstrained_unpack(&count, stream, $lower$, \"$label$\");\n",
                  {{"lower", std::to_string(n.lower)}, {"label", u.c.type.label}});
}

/// The chain of a loop: the local record stays in force from element to element.
void put_merge(unpacker &u, const usage &element)
{
    if (is_chained(element))
        u.out.put("if (per_merge_error(&local, outer) != 0)\n    break;\n");
}

void put_leave_loop(unpacker &u, const usage &element)
{
    if (is_chained(element))
        u.out.put("stream->err_hndl = outer;\n");
}

void put_list(unpacker &u)
{
    const usage &element = u.c.element.front();
    if (is_chained(element))
        put_chain_locals(u);
    u.out.put("AsnListInit(value, sizeof($type$));\n", {{"type", element.cpp_type}});
    put_count(u);
    if (is_chained(element))
        u.out.put("per_enter(stream, &local);\n");
    u.out.open("for (; count > 0; --count) {\n");
    const std::string append = fmt::format("AsnListAppend(value, {})", tag_of(u));
    if (element.shape == shape::null)
        u.out.put(append + ";\n");
    else {
        u.out.put("const AsnListNode *const node = " + append + ";\n");
        u.out.put("auto *const element = static_cast<$pointer$ *>(node->data);\n", {{"pointer", element.cpp_type}});
        put_plain(u, element, element_spot());
        put_merge(u, element);
    }
    u.out.close();
    put_leave_loop(u, element);
}

void put_array(unpacker &u)
{
    const usage &element = u.c.element.front();
    if (is_chained(element)) {
        put_chain_locals(u);
        u.out.put("per_enter(stream, &local);\n");
    }
    u.out.open("for (std::uint32_t n = 0; n < $count$; ++n) {\n",
               {{"count", std::to_string(u.c.type.number.upper)}});
    put_plain(u, element, array_spot());
    put_merge(u, element);
    u.out.close();
    put_leave_loop(u, element);
}

void put_body(unpacker &u)
{
    if (u.c.is_alias || !has_parts(u.c.type.shape)) {
        put_plain(u, u.c.type, own_spot(), u.c.type.shape == shape::integer ? soft_error_always : soft_error);
        return;
    }
    switch (u.c.type.shape) {
    case shape::sequence: put_sequence(u); break;
    case shape::choice: put_choice(u); break;
    case shape::list: put_list(u); break;
    case shape::array: put_array(u); break;
    default: break;
    }
}

} // namespace

void put_unpack(code_text &out, const plan &p, const codec &c)
{
    unpacker u{out, p, c};
    out.open_function("void", c.name + "_unpack", {{c.name + " *", "value"}, {"unpack_info_struct *", "stream"}});
    put_body(u);
    out.close_function();
    if (!c.has_entry)
        return;
    out.gap();
    out.put(R"(
std::uint32_t $name$_decode($name$ *value, unpack_info_struct *stream)
{
    void *const outer = stream->err_hndl;
    PerError    local;
    per_enter(stream, &local);
    $name$_unpack(value, stream);
    return per_leave(stream, &local, outer);
}
)", {{"name", c.name}});
}

} // namespace solvane::gen::per
