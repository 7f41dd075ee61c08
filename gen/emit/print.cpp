// The print functions: a value as indented text in ASN.1 value notation.
//
//     int X_print(X *value, AsnTextBuf *buffer, std::uint16_t indent)    1; 0 for a null constructed value
#include <fmt/format.h>

#include "emit/per.h"
#include "emit/per_code.h"

namespace solvane::gen::per {

namespace {

struct printer {
    code_text   &out;
    const plan  &p;
    const codec &c;
};

/// Prints a value in a line that its name or indentation has begun; `indent` is its own.
void put_usage(printer &r, const usage &type, const spot &at, std::string_view indent)
{
    std::string call;
    switch (type.shape) {
    case shape::boolean: call = fmt::format("AsnBool_print({}", at.address); break;
    case shape::integer:
        call = fmt::format("{}_print({}", type.number.is_unsigned ? "UAsnInt" : "AsnInt", at.address);
        break;
    case shape::enumerated:
        call = fmt::format("AsnEnum_print(reinterpret_cast<const std::int32_t *>({})", at.address);
        break;
    case shape::null: call = fmt::format("AsnNull_print({}", at.address); break;
    case shape::octets: call = fmt::format("AsnOcts_print({}", at.address); break;
    case shape::bits: call = fmt::format("AsnBits_print({}", at.address); break;
    case shape::sequence:
    case shape::choice:
    case shape::list:
    case shape::array: call = fmt::format("{}_print({}", r.p.codecs[type.codec].name, at.address); break;
    case shape::unsupported: return;
    }
    r.out.put("$call$, buffer, $indent$);\n", {{"call", call}, {"indent", indent}});
}

constexpr std::string_view deeper = "inner";

void put_inner(printer &r)
{
    r.out.put("const auto inner = static_cast<std::uint16_t>(indent + ASN_INDENT_STEP);\n");
}

/// The first member that is printed has no comma ahead of it: known where the schema's first member always is there.
void put_sequence(printer &r)
{
    const bool open_start = !r.c.members.empty() && !r.c.members.front().flag.empty();
    bool       certain = false; // a member has been printed for sure
    if (!r.c.members.empty())
        put_inner(r);
    r.out.put("AsnPrintSequence(buffer);\n");
    if (open_start)
        r.out.put("bool first = true;\n");
    for (const member &m : r.c.members) {
        if (!m.flag.empty())
            r.out.open("if ($test$) {\n", {{"test", presence_test(m)}});
        const bool may_be_first = open_start && !certain;
        r.out.put("AsnPrint$which$(buffer, indent, \"$name$ \"$flag$);\n",
                  {{"which", may_be_first ? "MaybeFirst" : certain ? "Next" : "First"},
                   {"name", m.asn_name},
                   {"flag", may_be_first ? ", &first" : ""}});
        put_usage(r, m.type, member_spot(m.name), deeper);
        if (!m.flag.empty())
            r.out.close();
        certain = certain || m.flag.empty();
    }
    r.out.put("AsnPrintEnd(buffer, indent);\n");
}

void put_choice(printer &r)
{
    put_inner(r);
    r.out.put("switch (value->ChoiceId) {\n");
    for (std::size_t n = 0; n < r.c.alternatives.size(); ++n) {
        const alternative &a = r.c.alternatives[n];
        r.out.open("case $n$:\n", {{"n", std::to_string(n)}});
        r.out.put("AsnTextBufPut(buffer, \"$name$ \");\n", {{"name", a.asn_name}});
        put_usage(r, a.type, alternative_spot(a.name), deeper);
        r.out.put("break;\n");
        r.out.close("");
    }
    r.out.put("default:\n    break;\n}\n");
}

void put_list(printer &r)
{
    const usage &element = r.c.element.front();
    put_inner(r);
    r.out.put("AsnPrintList(buffer);\n");
    r.out.open(list_walk);
    r.out.put("AsnPrintFirst(buffer, indent, \"\");\n");
    r.out.put("auto *const element = static_cast<$pointer$ *>(node->data);\n",
              {{"pointer", element.cpp_type}});
    put_usage(r, element, element_spot(), deeper);
    r.out.put("if (node->data != value->last->data)\n    AsnTextBufPut(buffer, \",\\n\");\n");
    r.out.close();
    r.out.put("AsnPrintEnd(buffer, indent);\n");
}

void put_array(printer &r)
{
    const std::int64_t count = r.c.type.number.upper;
    put_inner(r);
    r.out.put("AsnPrintList(buffer);\n");
    r.out.open("for (std::uint32_t n = 0; n < $count$; ++n) {\n", {{"count", std::to_string(count)}});
    r.out.put("AsnPrintFirst(buffer, indent, \"\");\n");
    put_usage(r, r.c.element.front(), array_spot(), deeper);
    r.out.put("if (n != $last$)\n    AsnTextBufPut(buffer, \",\\n\");\n", {{"last", std::to_string(count - 1)}});
    r.out.close();
    r.out.put("AsnPrintEnd(buffer, indent);\n");
}

void put_body(printer &r)
{
    if (r.c.is_alias || !has_parts(r.c.type.shape)) {
        put_usage(r, r.c.type, own_spot(), "indent");
        return;
    }
    r.out.put("if (!value)\n    return 0;\n");
    switch (r.c.type.shape) {
    case shape::sequence: put_sequence(r); break;
    case shape::choice: put_choice(r); break;
    case shape::list: put_list(r); break;
    case shape::array: put_array(r); break;
    default: break;
    }
}

} // namespace

void put_print(code_text &out, const plan &p, const codec &c)
{
    printer r{out, p, c};
    out.open_function("int", c.name + "_print",
                      {{c.name + " *", "value"}, {"AsnTextBuf *", "buffer"}, {"std::uint16_t ", "indent"}});
    if (has_parts(c.type.shape) && c.is_alias)
        out.put("return $name$_print(value, buffer, indent);\n", {{"name", p.codecs[c.type.codec].name}});
    else {
        put_body(r);
        out.put("return 1;\n");
    }
    out.close_function();
}

} // namespace solvane::gen::per
