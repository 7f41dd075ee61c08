// Names and order of the definitions of a schema.
#include "asn1/layout.h"

#include <algorithm>
#include <string_view>

#include <fmt/format.h>

#include "asn1/check.h"
#include "def/scope.h"

namespace solvane::gen::asn1 {
namespace {

/// The ending of a nested type's name; empty for a type that needs no definition.
std::string_view ending_of(const type &t)
{
    switch (t.kind) {
    case type_kind::sequence:
    case type_kind::set: return "Seq";
    case type_kind::sequence_of:
    case type_kind::set_of: return "SeqOf";
    case type_kind::choice: return "Choice";
    case type_kind::enumerated: return "Enum";
    default: return {};
    }
}

/// Counts the nested types of one type by their kind.
struct counter {
    std::unordered_map<std::string_view, int> seen;

    std::string next(std::string_view ending)
    {
        const int n = seen[ending]++;
        return std::string(ending) + (n == 0 ? "" : std::to_string(n));
    }
};

std::string plain_name(std::string_view id)
{
    std::string out(id);
    std::replace_if(out.begin(), out.end(), [](char c) { return c == '-' || c == '{' || c == ','; }, '_');
    std::erase(out, '}');
    return out;
}

struct walk {
    diagnostics &diag;
    const schema &s;
    const family &f;
    layout       out;

    void add(type &t, assignment &owner, std::string name, bool nested)
    {
        out.index.emplace(&t, static_cast<std::uint32_t>(out.items.size()));
        const auto weight = static_cast<std::uint32_t>(2 + t.members.size() * 2 + t.numbers.size() / 2);
        out.items.push_back({&t, &owner, std::move(name), nested, weight});
    }

    void visit_nested(type &t, assignment &owner, const std::string &base, counter &count)
    {
        const std::string_view ending = ending_of(t);
        if (t.target != nullptr)
            visit(*t.target, t.where);
        if (ending.empty())
            return;
        const std::string name = base + count.next(ending);
        visit_inside(t, owner, name);
        add(t, owner, name, true);
    }

    /// What stands in a group is named for the group, and the group's record for the type around it.
    void visit_group(member &group, assignment &owner, const std::string &base, counter &count)
    {
        const std::string name = base + count.next("Seq");
        visit_inside(group.of.front(), owner, base + "_" + group.id.text);
        add(group.of.front(), owner, name, true);
    }

    void visit_inside(type &t, assignment &owner, const std::string &base)
    {
        counter count;
        for (member &m : t.members) {
            if (m.is_group)
                visit_group(m, owner, base, count);
            else
                visit_nested(m.of.front(), owner, base, count);
        }
        for (type &element : t.element)
            visit_nested(element, owner, base, count);
    }

    void visit(assignment &a, const place &from)
    {
        if (out.index.contains(&a.of.front()))
            return;
        if (a.state == 4) {
            diag.error(from, fmt::format("'{}' holds a list of itself: that is not supported", a.id.text));
            return;
        }
        if (!s.modules[a.module].is_generated) {
            diag.conflict(from, fmt::format("'{}' is of a module that is not generated", a.id.text), a.id.where,
                          "it is defined here");
            return;
        }
        a.state = 4;
        const std::string name = f.rules.prefix + plain_name(a.id.text);
        type             &t = a.of.front();
        if (t.target != nullptr)
            visit(*t.target, t.where);
        visit_inside(t, a, name);
        add(t, a, name, false);
    }
};

} // namespace

std::string cpp_name(std::string_view id)
{
    std::string out = plain_name(id);
    return def::is_cpp_word(out) ? out + "_" : out;
}

layout lay_out(diagnostics &diag, schema &s, const family &f)
{
    walk w{diag, s, f, {}};
    for (module &m : s.modules) {
        for (assignment &a : m.assignments) {
            if (m.is_generated && a.kind == assignment_kind::type && a.parameters.empty())
                w.visit(a, a.id.where);
        }
    }
    return std::move(w.out);
}

} // namespace solvane::gen::asn1
