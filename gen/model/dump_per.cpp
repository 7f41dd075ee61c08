// Prints codecs as text.
#include "model/dump_per.h"

#include <string_view>

#include <fmt/format.h>

namespace solvane::gen {
namespace {

using per::shape;

std::string_view shape_name(shape s)
{
    switch (s) {
    case shape::boolean: return "boolean";
    case shape::integer: return "integer";
    case shape::enumerated: return "enumerated";
    case shape::null: return "null";
    case shape::octets: return "octets";
    case shape::bits: return "bits";
    case shape::sequence: return "sequence";
    case shape::choice: return "choice";
    case shape::list: return "list";
    case shape::array: return "array";
    case shape::unsupported: return "unsupported";
    }
    return {};
}

std::string number_text(const per::whole_number &n)
{
    std::string out = fmt::format(" {}..{}", n.has_lower ? std::to_string(n.lower) : "MIN",
                                  n.has_upper ? std::to_string(n.upper) : "MAX");
    if (n.has_upper)
        out += fmt::format(" in {} bits{}", n.width, n.exact ? "" : ", tested");
    return out + (n.is_unsigned ? ", unsigned" : "");
}

std::string constraint_text(const per::usage &u)
{
    switch (u.shape) {
    case shape::integer:
    case shape::list:
    case shape::array: return number_text(u.number);
    case shape::octets:
    case shape::bits: return fmt::format(" {}..{} mode {}", u.string.lower, u.string.upper, u.string.mode);
    case shape::enumerated:
    case shape::choice:
        return fmt::format(" of {}{} in {} bits{}", u.index.root_count,
                           u.index.extensible ? fmt::format("+{}", u.index.count - u.index.root_count) : "",
                           u.index.width, u.index.exact ? "" : ", tested");
    case shape::boolean:
    case shape::null:
    case shape::sequence:
    case shape::unsupported: break;
    }
    return {};
}

std::string facts_text(const per::facts &f)
{
    std::string out;
    out += f.can_fail ? " fails" : "";
    out += f.owns_memory ? " owns" : "";
    out += f.constant_bits ? fmt::format(" {}bits", *f.constant_bits) : "";
    return out.empty() ? "" : ";" + out;
}

std::string usage_text(const per::usage &u)
{
    return fmt::format("{} {}{}{}{}", u.cpp_type, shape_name(u.shape), constraint_text(u), facts_text(u.facts),
                       u.in_place ? "" : "; called");
}

std::string fallback_text(const per::member &m)
{
    std::string out = fmt::format(", default {}", m.fallback.text);
    if (m.fallback.length == 0)
        return out + fmt::format(" = {}", m.fallback.number);
    out += fmt::format(" = {} of", m.fallback.length);
    for (const std::uint8_t octet : m.fallback.octets)
        out += fmt::format(" {:02x}", octet);
    return out;
}

std::string member_text(const per::member &m)
{
    std::string out = "    ";
    out += m.addition == no_index ? "" : fmt::format("+{} ", m.addition);
    out += fmt::format("{}{}: {}", m.name, m.name == m.asn_name ? "" : " '" + m.asn_name + "'", usage_text(m.type));
    if (m.presence == per::presence::optional)
        out += ", optional by " + m.flag;
    return out + (m.presence == per::presence::with_default ? fallback_text(m) : "") + "\n";
}

std::string codec_text(const per::codec &c)
{
    std::string out = fmt::format("codec {} {} '{}': {}{}", c.source, c.name, c.asn_name,
                                  c.is_alias ? "alias of " : "", usage_text(c.type));
    if (c.is_extensible && c.type.shape == shape::sequence)
        out += fmt::format(", {} additions", c.no_additions);
    out += c.has_entry ? ", entry\n" : "\n";
    for (const per::member &m : c.members)
        out += member_text(m);
    for (const per::alternative &a : c.alternatives)
        out += fmt::format("    {}{}: {}\n", a.is_addition ? "+" : "", a.name, usage_text(a.type));
    for (const std::string &e : c.enumerators)
        out += fmt::format("    {}\n", e);
    for (const per::usage &u : c.element)
        out += fmt::format("    of {}\n", usage_text(u));
    return out;
}

} // namespace

std::string dump_codecs(const model &m, std::uint32_t unit_id)
{
    std::string out;
    for (const per::unit_codecs &unit : m.codecs.units) {
        if (unit.unit != unit_id)
            continue;
        const per::schema &s = m.codecs.schemas[unit.schema];
        out += fmt::format("codecs of {}, file codes {} and {}\n", s.name, s.codec_file_code, s.free_file_code);
        for (const std::uint32_t id : unit.codecs)
            out += codec_text(m.codecs.codecs[id]);
    }
    return out;
}

} // namespace solvane::gen
