// The size functions of the PER codecs: how many bits pack will write.
//
//     std::uint32_t X_size(X *value)
//
// They serve the estimate ahead of an open type.  What has the same size for every value is folded into a constant.
#include <fmt/format.h>

#include "emit/per.h"
#include "emit/per_code.h"

namespace solvane::gen::per {

namespace {

struct sizer {
    code_text   &out;
    const plan  &p;
    const codec &c;
};

std::string bits_size(const usage &type, const spot &at)
{
    constexpr std::uint32_t general = 65536; // from this upper bound on the length is a general one
    if (type.string.mode != 2 || type.string.upper >= general)
        return fmt::format("per_bits_size({})", at.address);
    return fmt::format("per_bits_size({}, asn_bit_width({}))", at.address, type.string.upper - type.string.lower);
}

} // namespace

// DIFFERS X.691 16.5: AsnOcts_size counts a length determinant for a string of fixed or bounded size as well, so the
// estimate of such a string is above what is written; an open type across 128 octets keeps two octets for its length
std::string size_of(const plan &p, const usage &type, const spot &at)
{
    if (is_field(type, true))
        return std::to_string(field_width(type, true));
    switch (type.shape) {
    case shape::integer:
        if (type.number.has_lower && type.number.has_upper)
            return std::to_string(type.number.width);
        return type.number.has_lower
                   ? fmt::format("AsnIntSemiConstrained_size(AsnInt({}), {})", at.value, int_literal(type.number.lower))
                   : fmt::format("AsnIntUnconstrained_size(AsnInt({}))", at.value);
    case shape::octets: return fmt::format("AsnOcts_size({})", at.address);
    case shape::bits: return bits_size(type, at);
    case shape::sequence:
    case shape::choice:
    case shape::list:
    case shape::array: return fmt::format("{}_size({})", p.codecs[type.codec].name, at.address);
    case shape::boolean:
    case shape::enumerated:
    case shape::null:
    case shape::unsupported: break;
    }
    return "0";
}

namespace {

std::uint32_t constant_of(const usage &type)
{
    if (is_field(type, true))
        return field_width(type, true);
    if (type.shape == shape::integer && type.number.has_lower && type.number.has_upper)
        return type.number.width;
    return 0;
}

bool is_constant(const usage &type)
{
    return is_field(type, true) ||
           (type.shape == shape::integer && type.number.has_lower && type.number.has_upper);
}

void put_sequence(sizer &s)
{
    std::uint32_t fixed = s.c.is_extensible ? 1 : 0;
    for (const member *const m : root_of(s.c))
        fixed += m->flag.empty() ? constant_of(m->type) : 1;
    std::string body;
    bool        varies = false;
    for (const member *const m : root_of(s.c))
        varies = varies || !m->flag.empty() || !is_constant(m->type);
    const bool has_additions = s.c.is_extensible && !additions_of(s.c).empty();
    if (!varies && !has_additions) {
        s.out.put("return $fixed$;\n", {{"fixed", std::to_string(fixed)}});
        return;
    }
    s.out.put("std::uint32_t bits = $fixed$;\n", {{"fixed", std::to_string(fixed)}});
    for (const member *const m : root_of(s.c)) {
        const std::string size = size_of(s.p, m->type, member_spot(m->name));
        if (m->flag.empty() && !is_constant(m->type))
            s.out.put("bits += $size$;\n", {{"size", size}});
        else if (!m->flag.empty() && size != "0")
            s.out.put("if ($test$)\n    bits += $size$;\n", {{"test", presence_test(*m)}, {"size", size}});
    }
    if (has_additions) {
        std::string any;
        for (const member *const m : additions_of(s.c))
            any += (any.empty() ? "" : " | ") + presence_bit(*m);
        s.out.open("if (($any$) == 1) {\n", {{"any", any}});
        s.out.put("bits += $count$;\n", {{"count", std::to_string(7 + s.c.no_additions)}});
        for (const member *const m : additions_of(s.c)) {
            const std::string size = size_of(s.p, m->type, member_spot(m->name));
            if (m->flag.empty())
                s.out.put("bits += per_open_size($size$);\n", {{"size", size}});
            else
                s.out.put("if ($test$)\n    bits += per_open_size($size$);\n",
                          {{"test", presence_test(*m)}, {"size", size}});
        }
        s.out.close();
    }
    s.out.put("return bits;\n");
}

void put_choice(sizer &s)
{
    const selection  &index = s.c.type.index;
    const std::string root = std::to_string(index.width + (index.extensible ? 1 : 0));
    for (std::size_t n = 0; n < s.c.alternatives.size(); ++n) {
        const alternative &a = s.c.alternatives[n];
        if (a.type.shape == shape::null && !a.is_addition)
            continue;
        const std::string size = size_of(s.p, a.type, alternative_spot(a.name));
        s.out.put("if (value->ChoiceId == $n$)\n    return $selector$ + $size$; // $name$\n",
                  {{"n", std::to_string(n)},
                   {"selector", a.is_addition ? "8" : root},
                   {"size", a.is_addition ? "per_open_size(" + size + ")" : size},
                   {"name", a.asn_name}});
    }
    s.out.put("return $selector$;\n", {{"selector", root}});
}

void put_list(sizer &s)
{
    const whole_number &n = s.c.type.number;
    const usage        &element = s.c.element.front();
    if (n.has_upper)
        s.out.put("std::uint32_t bits = $width$;\n", {{"width", std::to_string(n.width)}});
    else
        s.out.put("std::uint32_t bits = value ? AsnLenSemiConstrained_size(AsnLen(value->count), 0) : 8;\n");
    s.out.put("if (!value)\n    return bits;\n");
    s.out.open("for (const AsnListNode *node = value->first; node && node->data; node = node->next) {\n");
    if (is_constant(element)) {
        s.out.put("bits += $size$;\n", {{"size", std::to_string(constant_of(element))}});
    } else {
        s.out.put("auto *const element = static_cast<$pointer$ *>(node->data);\n",
                  {{"pointer", element.cpp_type}});
        s.out.put("bits += $size$;\n", {{"size", size_of(s.p, element, element_spot())}});
    }
    s.out.close();
    s.out.put("return bits;\n");
}

void put_array(sizer &s)
{
    const std::string count = std::to_string(s.c.type.number.upper);
    const usage      &element = s.c.element.front();
    if (is_constant(element)) {
        s.out.put("return $count$ * $size$;\n", {{"count", count}, {"size", std::to_string(constant_of(element))}});
        return;
    }
    s.out.put("std::uint32_t bits = 0;\n");
    s.out.put("for (std::uint32_t n = 0; n < $count$; ++n)\n    bits += $size$;\nreturn bits;\n",
              {{"count", count}, {"size", size_of(s.p, element, array_spot())}});
}

void put_body(sizer &s)
{
    if (s.c.type.shape == shape::unsupported) {
        s.out.put("AsnErrorPrint(\"This type is currently not supported\");\nreturn $bits$;\n",
                  {{"bits", std::to_string(s.c.type.facts.constant_bits.value_or(3))}});
        return;
    }
    if (s.c.is_alias || !has_parts(s.c.type.shape)) {
        s.out.put("return $size$;\n", {{"size", size_of(s.p, s.c.type, own_spot())}});
        return;
    }
    switch (s.c.type.shape) {
    case shape::sequence: put_sequence(s); break;
    case shape::choice: put_choice(s); break;
    case shape::list: put_list(s); break;
    case shape::array: put_array(s); break;
    default: break;
    }
}

} // namespace

void put_size(code_text &out, const plan &p, const codec &c)
{
    sizer s{out, p, c};
    out.open_function("std::uint32_t", c.name + "_size", {{c.name + " *", "value"}});
    put_body(s);
    out.close_function();
}

} // namespace solvane::gen::per
