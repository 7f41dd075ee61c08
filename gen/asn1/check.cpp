// The driver of the checks, and the names of modules.
#include "asn1/check.h"

#include <map>

#include <fmt/format.h>

#include "asn1/scope.h"

namespace solvane::gen::asn1 {
namespace {

void enter_own(scope &s)
{
    std::map<std::string, const module *> modules;
    for (std::uint32_t n = 0; n < s.in.modules.size(); ++n) {
        module &m = s.in.modules[n];
        const auto [at, fresh] = modules.emplace(m.id.text, &m);
        if (!fresh)
            s.diag.conflict(m.id.where, fmt::format("module '{}' stands here twice", m.id.text), at->second->id.where,
                            "the first");
        for (assignment &a : m.assignments) {
            a.module = n;
            const auto [other, is_new] = s.own[n].emplace(a.id.text, &a);
            if (!is_new)
                s.diag.conflict(a.id.where, fmt::format("'{}' is defined twice", a.id.text), other->second->id.where,
                                "the other definition");
        }
    }
    s.visible = s.own;
}

std::uint32_t find_module(const scope &s, const std::string &id)
{
    std::uint32_t n = 0;
    while (n < s.in.modules.size() && s.in.modules[n].id.text != id)
        ++n;
    return n;
}

void enter_import(scope &s, std::uint32_t into, const import_list &list)
{
    const std::uint32_t from = find_module(s, list.from.text);
    if (from == s.in.modules.size()) {
        s.diag.error(list.from.where, fmt::format("there is no module '{}' among those of this schema",
                                                  list.from.text));
        return;
    }
    for (const name &symbol : list.symbols) {
        const auto found = s.own[from].find(symbol.text);
        if (found == s.own[from].end()) {
            s.diag.conflict(symbol.where, fmt::format("'{}' has no '{}'", list.from.text, symbol.text),
                            s.in.modules[from].id.where, "this module");
            continue;
        }
        const auto [at, fresh] = s.visible[into].emplace(symbol.text, found->second);
        if (!fresh && at->second != found->second)
            s.diag.conflict(symbol.where, fmt::format("'{}' is known here already", symbol.text),
                            at->second->id.where, "by this definition");
    }
}

/// A name with a governor is a value or a set of values; where the governor is a class, an object or a set of them.
void tell_objects(scope &s)
{
    for (std::uint32_t n = 0; n < s.in.modules.size(); ++n) {
        for (assignment &a : s.in.modules[n].assignments) {
            if (a.of.empty() || a.kind == assignment_kind::type || a.of.front().kind != type_kind::reference)
                continue;
            const auto governor = s.visible[n].find(a.of.front().text);
            const bool is_class = governor != s.visible[n].end() &&
                                  governor->second->kind == assignment_kind::object_class;
            if (a.kind == assignment_kind::object_set && !is_class)
                a.kind = assignment_kind::value_set;
            if (a.kind == assignment_kind::value && is_class)
                a.kind = assignment_kind::object;
        }
    }
}

} // namespace

assignment *find(scope &s, std::uint32_t from, const std::string &module, const name &id)
{
    const symbols *known = &s.visible[from];
    if (!module.empty()) {
        const std::uint32_t named = find_module(s, module);
        if (named == s.in.modules.size()) {
            s.diag.error(id.where, fmt::format("there is no module '{}' among those of this schema", module));
            return nullptr;
        }
        known = &s.own[named];
    }
    const auto found = known->find(id.text);
    if (found != known->end())
        return found->second;
    for (std::uint32_t n = 0; n < s.own.size(); ++n) {
        const auto elsewhere = s.own[n].find(id.text);
        if (elsewhere != s.own[n].end()) {
            s.diag.conflict(id.where, fmt::format("'{}' is not imported here", id.text), elsewhere->second->id.where,
                            fmt::format("it is defined in '{}'", s.in.modules[n].id.text));
            return nullptr;
        }
    }
    s.diag.error(id.where, fmt::format("'{}' is not defined", id.text));
    return nullptr;
}

void enter_names(scope &s)
{
    enter_own(s);
    for (std::uint32_t n = 0; n < s.in.modules.size(); ++n) {
        for (const import_list &list : s.in.modules[n].imports)
            enter_import(s, n, list);
    }
    tell_objects(s);
}

const type *base_type(const type &t)
{
    const type *at = &t;
    while (at != nullptr && at->kind == type_kind::reference)
        at = at->target == nullptr ? nullptr : &at->target->of.front();
    return at;
}

digit_string digits_of(const value &v)
{
    digit_string      out;
    const std::size_t bits_each = v.kind == value::what::hex ? 4 : 1;
    out.bits = static_cast<std::uint32_t>(v.text.size() * bits_each);
    out.octets.resize((out.bits + 7) / 8);
    for (std::size_t n = 0; n < v.text.size(); ++n) {
        const char        c = v.text[n];
        const auto        digit = static_cast<unsigned>(c >= 'A' ? c - 'A' + 10 : c - '0');
        const std::size_t first = n * bits_each;
        out.octets[first / 8] = static_cast<std::uint8_t>(out.octets[first / 8] | digit << (8 - bits_each - first % 8));
    }
    return out;
}

void check(diagnostics &diag, schema &in)
{
    scope s{diag, in, std::vector<symbols>(in.modules.size()), {}, {}};
    enter_names(s);
    resolve_types(s);
    if (diag.failed())
        return; // a type that is not known would look like a fault in all that use it
    find_circles(s);
    if (diag.failed())
        return;
    expand_components(s);
    evaluate_constraints(s);
}

} // namespace solvane::gen::asn1
