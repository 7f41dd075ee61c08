// The pack functions of the PER codecs, and the entries that encode a whole message.
//
//     void X_pack(pack_info_struct *stream, X *value)
//
// A value outside its constraint is reported, replaced in the caller's record by the lower bound, and goes out so.
// Fields of known width that follow each other are written as one.
#include <limits>

#include <fmt/format.h>

#include "emit/per.h"
#include "emit/per_code.h"

namespace solvane::gen::per {

namespace {

struct packer {
    code_text   &out;
    const plan  &p;
    const codec &c;
};

// -------------------------------------------------------------------------------------------------- bounds of a value

std::string number_test(const whole_number &n, const std::string &at)
{
    using limits = std::numeric_limits<std::int32_t>;
    if (n.is_unsigned) {
        const std::string below = n.lower == 0 ? "" : fmt::format("{} < {}", at, unsigned_literal(
                                                                        static_cast<std::uint64_t>(n.lower)));
        const std::string above = n.upper > std::numeric_limits<std::uint32_t>::max()
                                      ? ""
                                      : fmt::format("{} > {}", at,
                                                    unsigned_literal(static_cast<std::uint64_t>(n.upper)));
        return below + (below.empty() || above.empty() ? "" : " || ") + above;
    }
    const std::string below = n.lower <= limits::min() ? "" : fmt::format("{} < {}", at, n.lower);
    const std::string above = n.upper >= limits::max() ? "" : fmt::format("{} > {}", at, n.upper);
    return below + (below.empty() || above.empty() ? "" : " || ") + above;
}

/// Condition that the value lies outside its constraint; empty where it cannot or nothing is tested.
std::string bounds_test(const usage &type, const std::string &at)
{
    if (type.shape == shape::enumerated)
        return type.index.exact ? "" : fmt::format("std::uint32_t({}) > {}", at, type.index.root_count - 1);
    if (type.shape == shape::integer && is_field(type, true) && !type.number.exact)
        return number_test(type.number, at);
    return "";
}

void put_bounds(packer &k, const std::string &test, std::string_view label, const std::string &at,
                std::string_view lower)
{
    if (!test.empty())
        k.out.put(R"(
if ($test$) {
    report_out_of_bounds("$label$");
    $at$ = $lower$;
}
)", {{"test", test}, {"label", label}, {"at", at}, {"lower", lower}});
}

void put_usage_bounds(packer &k, const usage &type, const spot &at)
{
    const bool is_enum = type.shape == shape::enumerated;
    put_bounds(k, bounds_test(type, at.value), type.label, at.value,
               is_enum ? fmt::format("{}(0)", type.cpp_type) : int_literal(type.number.lower));
}

// ------------------------------------------------------------------------------------------------------------ words

std::string distance(const std::string &at, std::int64_t lower)
{
    return lower == 0 ? fmt::format("std::uint32_t({})", at)
                      : fmt::format("std::uint32_t({}) {} {}", at, lower < 0 ? '+' : '-',
                                    unsigned_literal(static_cast<std::uint64_t>(lower < 0 ? -lower : lower)));
}

/// What goes out for a field, no wider than it.
std::string written(const bit_field &f)
{
    if (f.type == nullptr)
        return f.bit;
    const usage &type = *f.type;
    if (type.shape == shape::boolean)
        return fmt::format("({} & 1u)", f.at.value);
    const bool        is_number = type.shape == shape::integer;
    const std::int64_t lower = is_number ? type.number.lower : 0;
    const std::string  sum = distance(f.at.value, lower);
    const std::string  whole = lower == 0 ? sum : "(" + sum + ")";
    if (f.width == 32 || !bounds_test(type, f.at.value).empty())
        return whole;
    return fmt::format("({} & {})", whole, unsigned_literal((1ull << f.width) - 1));
}

void put_word(packer &k, const std::vector<bit_field> &word)
{
    for (const bit_field &f : word)
        if (f.type != nullptr)
            put_usage_bounds(k, *f.type, f.at);
    std::uint32_t left = width_of(word);
    if (left == 0)
        return;
    const std::uint32_t width = left;
    std::vector<std::string> pieces;
    for (const bit_field &f : word) {
        left -= f.width;
        if (f.width > 0)
            pieces.push_back(left == 0 ? written(f) : fmt::format("{} << {}", written(f), left));
    }
    const std::string notes = notes_of(word);
    const std::string head = fmt::format("per_put_{}(stream, {}, ", band(width), width);
    if (pieces.size() == 1) {
        k.out.put(head + pieces[0] + ");" + (notes.empty() ? "" : " // " + notes) + "\n");
        return;
    }
    k.out.put("// " + notes + "\n");
    for (std::size_t n = 0; n < pieces.size(); ++n)
        k.out.put((n == 0 ? head : "    | ") + pieces[n] + (n + 1 == pieces.size() ? ");" : "") + "\n");
}

void put_words(packer &k, std::vector<bit_field> &fields)
{
    for (const std::vector<bit_field> &word : words_of(fields))
        put_word(k, word);
    fields.clear();
}

bit_field field_of(const usage &type, const spot &at, std::string_view name)
{
    const std::string note = name.empty() ? describe(type) : fmt::format("{}: {}", name, describe(type));
    return {field_width(type, true), note, &type, at, {}};
}

// ----------------------------------------------------------------------------------------------------------- usages

void put_number(packer &k, const usage &type, const spot &at)
{
    const whole_number &n = type.number;
    if (n.has_lower && n.has_upper)
        k.out.put("per_put_wide(stream, $width$, $value$); // $note$\n", {{"width", std::to_string(n.width)},
                                                                        {"value", distance(at.value, n.lower)},
                                                                        {"note", describe(type)}});
    else if (n.has_lower)
        k.out.put("AsnIntSemiConstrained_pack(stream, AsnInt($at$), $lower$, \"$label$\");\n",
                  {{"at", at.value}, {"lower", int_literal(n.lower)}, {"label", type.label}});
    else
        k.out.put("AsnIntUnconstrained_pack(stream, AsnInt($at$));\n", {{"at", at.value}});
}

void put_usage(packer &k, const usage &type, const spot &at)
{
    if (is_field(type, true)) {
        put_word(k, {field_of(type, at, "")});
        return;
    }
    switch (type.shape) {
    case shape::integer:
        put_number(k, type, at);
        return;
    case shape::octets:
    case shape::bits:
        k.out.put("Asn$kind$_pack(stream, $at$, $upper$, $lower$, $mode$); // $note$\n",
                  {{"kind", type.shape == shape::octets ? "Octs" : "Bits"},
                   {"at", at.address},
                   {"upper", std::to_string(type.string.mode == 2 ? type.string.upper : 0)},
                   {"lower", std::to_string(type.string.mode == 0 ? 0 : type.string.lower)},
                   {"mode", std::to_string(type.string.mode)},
                   {"note", describe(type)}});
        return;
    case shape::sequence:
    case shape::choice:
    case shape::list:
    case shape::array:
        k.out.put("$name$_pack(stream, $at$);\n", {{"name", k.p.codecs[type.codec].name}, {"at", at.address}});
        return;
    case shape::unsupported:
        k.out.put("AsnErrorPrint(\"This type is currently not supported\");\n");
        return;
    case shape::boolean:
    case shape::enumerated:
    case shape::null:
        return;
    }
}

void put_open(packer &k, const usage &type, const spot &at)
{
    k.out.put("per_open_pack(stream, &open, $size$);\n", {{"size", size_of(k.p, type, at)}});
    put_usage(k, type, at);
    k.out.put("per_close_pack(stream, &open);\n");
}

// --------------------------------------------------------------------------------------------------------- SEQUENCE

std::string any_addition(const codec &c)
{
    std::string text;
    for (const member *const m : additions_of(c))
        text += (text.empty() ? "" : " | ") + presence_bit(*m);
    return text;
}

void put_additions(packer &k)
{
    k.out.gap();
    k.out.open("if (extended == 1) {\n");
    k.out.put("per_open_type open;\n");
    std::vector<bit_field> fields;
    fields.push_back({7, fmt::format("{} additions", k.c.no_additions), nullptr, {},
                      unsigned_literal((k.c.no_additions - 1) & 0x3F)});
    std::uint32_t next = 0; // an empty group has a bit as well
    for (const member *const m : additions_of(k.c)) {
        for (; next < m->addition; ++next)
            fields.push_back({1, "", nullptr, {}, "0u"});
        fields.push_back({1, m->name, nullptr, {}, presence_bit(*m)});
        ++next;
    }
    for (; next < k.c.no_additions; ++next)
        fields.push_back({1, "", nullptr, {}, "0u"});
    put_words(k, fields);
    for (const member *const m : additions_of(k.c)) {
        if (!m->flag.empty())
            k.out.open("if ($test$) { // $name$\n", {{"test", presence_test(*m)}, {"name", m->name}});
        put_open(k, m->type, member_spot(m->name));
        if (!m->flag.empty())
            k.out.close();
    }
    k.out.close();
}

/// Whether a value of the usage takes bits or is tested.
bool writes(const usage &type)
{
    return !is_field(type, true) || field_width(type, true) > 0 || !bounds_test(type, "").empty();
}

void put_sequence(packer &k)
{
    const bool             has_additions = k.c.is_extensible && k.c.no_additions > 0 && !additions_of(k.c).empty();
    std::vector<bit_field> fields;
    if (has_additions)
        k.out.put("const std::uint32_t extended = $any$;\n", {{"any", any_addition(k.c)}});
    if (k.c.is_extensible)
        fields.push_back({1, "extension", nullptr, {}, has_additions ? "extended" : "0u"});
    const std::vector<const member *> root = root_of(k.c);
    for (const member *const m : root)
        if (!m->flag.empty())
            fields.push_back({1, m->name, nullptr, {}, presence_bit(*m)});
    for (const member *const m : root) {
        const spot at = member_spot(m->name);
        if (m->flag.empty() && is_field(m->type, true)) {
            fields.push_back(field_of(m->type, at, m->name));
            continue;
        }
        put_words(k, fields);
        k.out.gap();
        if (m->flag.empty()) {
            put_usage(k, m->type, at);
            continue;
        }
        if (!writes(m->type))
            continue;
        k.out.open("if ($test$) { // $name$\n", {{"test", presence_test(*m)}, {"name", m->name}});
        put_usage(k, m->type, at);
        k.out.close();
    }
    put_words(k, fields);
    if (has_additions)
        put_additions(k);
}

// ----------------------------------------------------------------------------------------------------------- CHOICE

void put_alternative(packer &k, std::size_t n)
{
    const alternative &a = k.c.alternatives[n];
    k.out.open("case $n$: // $name$\n", {{"n", std::to_string(n)}, {"name", a.asn_name}});
    if (a.is_addition)
        put_open(k, a.type, alternative_spot(a.name));
    else
        put_usage(k, a.type, alternative_spot(a.name));
    k.out.put("break;\n");
    k.out.close("");
}

void put_choice(packer &k)
{
    const selection &s = k.c.type.index;
    const bool       additions = s.count > s.root_count;
    if (!s.exact)
        put_bounds(k, fmt::format("value->ChoiceId > {}", s.count - 1), k.c.type.label, "value->ChoiceId", "0");
    const std::uint32_t width = s.width + (s.extensible ? 1 : 0);
    const std::string   root = fmt::format("per_put_{}(stream, {}, value->ChoiceId);", band(width), width);
    if (additions) {
        k.out.put("per_open_type open;\n");
        k.out.put("if (value->ChoiceId < $count$)\n    $root$\n",
                  {{"count", std::to_string(s.root_count)}, {"root", root}});
        k.out.put("else\n    per_put_8(stream, 8, 0x80u | ((value->ChoiceId - $count$u) & 0x3Fu));\n",
                  {{"count", std::to_string(s.root_count)}});
    } else if (width > 0) {
        k.out.put(root + "\n");
    }
    k.out.put("switch (value->ChoiceId) {\n");
    for (std::size_t n = 0; n < k.c.alternatives.size(); ++n)
        if (k.c.alternatives[n].type.shape != shape::null || k.c.alternatives[n].is_addition)
            put_alternative(k, n);
    k.out.put("default:\n    break;\n}\n");
}

// ------------------------------------------------------------------------------------------------------ SEQUENCE OF

void put_list(packer &k)
{
    const whole_number &n = k.c.type.number;
    const usage        &element = k.c.element.front();
    if (n.has_upper) {
        if (!n.exact)
            put_bounds(k, number_test(n, "value->count"), k.c.type.label, "value->count", int_literal(n.lower));
        if (n.width > 0)
            k.out.put("per_put_$band$(stream, $width$, $count$); // $note$\n",
                      {{"band", band(n.width)},
                       {"width", std::to_string(n.width)},
                       {"count", distance("value->count", n.lower)},
                       {"note", describe(n)}});
    } else {
        k.out.put("AsnLenSemiConstrained_pack(stream, AsnLen(value->count), $lower$, \"$label$\");\n",
                  {{"lower", std::to_string(n.lower)}, {"label", k.c.type.label}});
    }
    k.out.open(list_walk);
    if (writes(element)) {
        k.out.put("auto *const element = static_cast<$pointer$ *>(node->data);\n",
                  {{"pointer", element.cpp_type}});
        put_usage(k, element, element_spot());
    }
    k.out.close();
}

void put_array(packer &k)
{
    k.out.open("for (std::uint32_t n = 0; n < $count$; ++n) {\n",
               {{"count", std::to_string(k.c.type.number.upper)}});
    put_usage(k, k.c.element.front(), array_spot());
    k.out.close();
}

void put_body(packer &k)
{
    if (k.c.is_alias || !has_parts(k.c.type.shape)) {
        put_usage(k, k.c.type, own_spot());
        return;
    }
    switch (k.c.type.shape) {
    case shape::sequence: put_sequence(k); break;
    case shape::choice: put_choice(k); break;
    case shape::list: put_list(k); break;
    case shape::array: put_array(k); break;
    default: break;
    }
}

} // namespace

void put_pack(code_text &out, const plan &p, const codec &c)
{
    packer k{out, p, c};
    out.open_function("void", c.name + "_pack", {{"pack_info_struct *", "stream"}, {c.name + " *", "value"}});
    put_body(k);
    out.close_function();
    if (c.has_entry)
        out.put(R"(

void $name$_encode(pack_info_struct *stream, $name$ *value)
{
    $name$_pack(stream, value);
}
)", {{"name", c.name}});
}

} // namespace solvane::gen::per
