// The free and clear functions of the PER codecs.
//
//     void X_free(X *value)     releases what unpack has allocated, and leaves the other fields
//     void X_clear(X *value)    zeroes the record
#include <fmt/format.h>

#include "emit/per.h"
#include "emit/per_code.h"

namespace solvane::gen::per {

namespace {

struct releaser {
    code_text   &out;
    const plan  &p;
    const codec &c;
};

std::string tag_of(const releaser &r)
{
    return fmt::format("1, {}, $line$", r.p.schemas[r.c.schema].free_file_code);
}

bool owns(const usage &type)
{
    return type.shape == shape::octets || type.shape == shape::bits || type.shape == shape::list ||
           (has_parts(type.shape) && type.facts.owns_memory);
}

void put_usage(releaser &r, const usage &type, const spot &at)
{
    if (!owns(type))
        return;
    if (has_parts(type.shape))
        r.out.put("$name$_free($at$);\n", {{"name", r.p.codecs[type.codec].name}, {"at", at.address}});
    else
        r.out.put(fmt::format("Asn{}Free({}, {});\n", type.shape == shape::octets ? "Octs" : "Bits", at.address,
                              tag_of(r)));
}

/// A DEFAULT that applies was installed in a block of its own, so a string with one is released either way.
void put_sequence(releaser &r)
{
    for (const member &m : r.c.members) {
        if (!owns(m.type))
            continue;
        const bool tested = m.presence == presence::optional && !m.flag.empty();
        if (tested)
            r.out.open("if ($test$) {\n", {{"test", presence_test(m)}});
        put_usage(r, m.type, member_spot(m.name));
        if (tested)
            r.out.close();
    }
}

void put_choice(releaser &r)
{
    r.out.put("switch (value->ChoiceId) {\n");
    for (std::size_t n = 0; n < r.c.alternatives.size(); ++n) {
        const alternative &a = r.c.alternatives[n];
        if (!owns(a.type))
            continue;
        r.out.open("case $n$: // $name$\n", {{"n", std::to_string(n)}, {"name", a.asn_name}});
        put_usage(r, a.type, alternative_spot(a.name));
        r.out.put("break;\n");
        r.out.close("");
    }
    r.out.put("default:\n    break;\n}\n");
}

void put_list(releaser &r)
{
    const usage &element = r.c.element.front();
    if (owns(element)) {
        r.out.open(list_walk);
        r.out.put("auto *const element = static_cast<$pointer$ *>(node->data);\n",
                  {{"pointer", element.cpp_type}});
        put_usage(r, element, element_spot());
        r.out.close();
    }
    r.out.put("AsnListFreeElmts(value, " + tag_of(r) + ");\n");
}

void put_array(releaser &r)
{
    r.out.open("for (std::uint32_t n = 0; n < $count$; ++n) {\n",
               {{"count", std::to_string(r.c.type.number.upper)}});
    put_usage(r, r.c.element.front(), array_spot());
    r.out.close();
}

void put_body(releaser &r)
{
    r.out.put("if (!value)\n    return;\n");
    if (r.c.is_alias || !has_parts(r.c.type.shape)) {
        put_usage(r, r.c.type, own_spot());
        return;
    }
    switch (r.c.type.shape) {
    case shape::sequence: put_sequence(r); break;
    case shape::choice: put_choice(r); break;
    case shape::list: put_list(r); break;
    case shape::array: put_array(r); break;
    default: break;
    }
}

} // namespace

void put_free(code_text &out, const plan &p, const codec &c)
{
    releaser r{out, p, c};
    out.open_function("void", c.name + "_free", {{c.name + " *", "value"}});
    if (owns(c.type))
        put_body(r);
    out.close_function();
}

void put_clear(code_text &out, const plan &, const codec &c)
{
    out.open_function("void", c.name + "_clear", {{c.name + " *", "value"}});
    out.put("dll_info_version.memset(value, 0, sizeof *value);\n");
    out.close_function();
}

} // namespace solvane::gen::per
