// References to types, parameterised types, and types that contain themselves.
#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include <fmt/format.h>

#include "asn1/check.h"
#include "asn1/scope.h"

namespace solvane::gen::asn1 {
namespace {

/// Walks the type of one assignment.
struct resolver {
    scope            &s;
    std::uint32_t     module;
    const assignment *inside = nullptr;  ///< a parameterised type: its parameters are known

    bool is_parameter(const std::string &id) const
    {
        return inside != nullptr &&
               std::any_of(inside->parameters.begin(), inside->parameters.end(),
                           [&](const name &p) { return p.text == id; });
    }

    void        walk(type &t);
    void        walk(std::vector<constraint_set> &sets);
    void        walk_members(type &t);
    void        walk_numbers(type &t) const;
    void        resolve(type &t);
    assignment *make_instance(assignment &parameterised, type &use);
};

/// Replaces the parameters of a parameterised type by the arguments of a use.
void substitute(type &t, const assignment &parameterised, const std::vector<type> &arguments)
{
    for (std::size_t n = 0; n < arguments.size(); ++n) {
        if (t.kind == type_kind::reference && t.text == parameterised.parameters[n].text) {
            t = arguments[n];
            return;
        }
    }
    for (member &m : t.members)
        substitute(m.of.front(), parameterised, arguments);
    for (type &element : t.element)
        substitute(element, parameterised, arguments);
    for (type &argument : t.arguments)
        substitute(argument, parameterised, arguments);
    for (constraint_set &set : t.constraints) {
        for (constraint &c : set.any_of) {
            for (type &contained : c.types)
                substitute(contained, parameterised, arguments);
        }
    }
}

/// One type for each list of arguments, shared by all uses.
assignment *resolver::make_instance(assignment &parameterised, type &use)
{
    std::string id;
    for (const type &argument : use.arguments) {
        if (argument.kind != type_kind::reference || !argument.constraints.empty()) {
            s.diag.error(argument.where, "an argument is the name of a type");
            return nullptr;
        }
        id += (id.empty() ? "" : ",") + argument.text;
    }
    id = parameterised.id.text + "{" + id + "}";
    const auto [at, fresh] = s.instances.emplace(id, nullptr);
    if (!fresh)
        return at->second;
    assignment instance = parameterised;
    instance.id = {id, parameterised.id.where};
    instance.is_instance = true;
    instance.parameters.clear();
    substitute(instance.of.front(), parameterised, use.arguments);
    s.module_of(parameterised).instances.push_back(std::move(instance));
    assignment *made = at->second = &s.module_of(parameterised).instances.back();
    resolver{s, parameterised.module}.walk(made->of.front());
    return made;
}

void resolver::resolve(type &t)
{
    if (t.target != nullptr || is_parameter(t.text))
        return;
    assignment *found = find(s, module, t.module, {t.text, t.where});
    if (found == nullptr)
        return;
    if (found->kind != assignment_kind::type) {
        s.diag.conflict(t.where, fmt::format("'{}' is no type", t.text), found->id.where, "it is defined here");
        return;
    }
    if (found->parameters.size() != t.arguments.size() || t.other_arguments || found->odd_parameters) {
        if (found->odd_parameters || t.other_arguments)
            s.diag.error(t.where, "only types can be parameters");
        else
            s.diag.conflict(t.where,
                            fmt::format("'{}' takes {} arguments", t.text, found->parameters.size()),
                            found->id.where, "it is defined here");
        return;
    }
    for (type &argument : t.arguments)
        walk(argument);
    if (t.arguments.empty()) {
        t.target = found;
    } else if (inside == nullptr && std::all_of(t.arguments.begin(), t.arguments.end(), [](const type &argument) {
                   return argument.target != nullptr || argument.kind != type_kind::reference;
               })) {
        t.target = make_instance(*found, t);
    }
}

void resolver::walk(std::vector<constraint_set> &sets)
{
    for (constraint_set &set : sets) {
        for (constraint &c : set.any_of) {
            for (type &t : c.types)
                walk(t);
            walk(c.inner);
        }
    }
}

void resolver::walk_members(type &t)
{
    std::set<std::pair<std::string, place>> names;
    for (member &m : t.members) {
        const auto same = names.lower_bound({m.id.text, {}});
        if (!m.is_components_of && same != names.end() && same->first == m.id.text)
            s.diag.conflict(m.id.where, fmt::format("there is a member '{}' already", m.id.text), same->second,
                            "the other one");
        names.emplace(m.id.text, m.id.where);
        walk(m.of.front());
    }
    if (t.kind == type_kind::choice && t.members.empty())
        s.diag.error(t.where, "a CHOICE has an alternative at least");
}

void resolver::walk_numbers(type &t) const
{
    std::set<std::pair<std::string, place>> names;
    for (const named_number &n : t.numbers) {
        const auto same = names.lower_bound({n.id.text, {}});
        if (same != names.end() && same->first == n.id.text)
            s.diag.conflict(n.id.where, fmt::format("there is a '{}' already", n.id.text), same->second,
                            "the other one");
        names.emplace(n.id.text, n.id.where);
    }
}

void resolver::walk(type &t)
{
    if (t.kind == type_kind::reference)
        resolve(t);
    if (t.kind == type_kind::class_field) {
        const assignment *of = find(s, module, {}, {t.text, t.where});
        if (of != nullptr && of->kind != assignment_kind::object_class)
            s.diag.conflict(t.where, fmt::format("'{}' is no information object class", t.text), of->id.where,
                            "it is defined here");
    }
    walk(t.constraints);
    walk_members(t);
    walk_numbers(t);
    for (type &element : t.element)
        walk(element);
}

// ------------------------------------------------------------------------------------------- circles

/// Depth-first along all that is held in place: what is behind a list is not.
struct circle_walk {
    scope &s;

    void visit(assignment &a)
    {
        if (a.state == 1)
            s.diag.error(a.id.where, fmt::format("'{}' contains itself, perhaps through others", a.id.text));
        if (a.state != 0)
            return;
        a.state = 1;
        visit(a.of.front());
        a.state = 2;
    }

    void visit(const type &t)
    {
        if (t.target != nullptr)
            visit(*t.target);
        for (const member &m : t.members)
            visit(m.of.front());
    }
};

/// Puts the members of the root of another type where COMPONENTS OF stands (X.680 25.5).
void expand(scope &s, type &t)
{
    std::vector<member> members;
    for (member &m : t.members) {
        type *of = &m.of.front();
        expand(s, *of);
        if (!m.is_components_of) {
            members.push_back(std::move(m));
            continue;
        }
        while (of->target != nullptr)
            of = &of->target->of.front();
        if (of->kind != t.kind)
            s.diag.error(m.id.where, "COMPONENTS OF names a type of the same kind");
        expand(s, *of);
        std::copy_if(of->members.begin(), of->members.end(), std::back_inserter(members),
                     [](const member &inner) { return !inner.is_addition; });
    }
    t.members = std::move(members);
    for (type &element : t.element)
        expand(s, element);
}

template <typename Visit> void for_each_type(scope &s, Visit visit)
{
    for (module &m : s.in.modules) {
        for (std::list<assignment> *all : {&m.assignments, &m.instances}) {
            for (assignment &a : *all) {
                if (a.kind == assignment_kind::type && a.parameters.empty())
                    visit(a);
            }
        }
    }
}

} // namespace

void resolve_types(scope &s)
{
    for (std::uint32_t n = 0; n < s.in.modules.size(); ++n) {
        for (assignment &a : s.in.modules[n].assignments) {
            const bool governed = a.kind == assignment_kind::value || a.kind == assignment_kind::value_set;
            const bool is_type = a.kind == assignment_kind::type && !a.odd_parameters;
            if (governed || is_type)
                resolver{s, n, a.parameters.empty() ? nullptr : &a}.walk(a.of.front());
        }
    }
}

void find_circles(scope &s)
{
    circle_walk walk{s};
    for_each_type(s, [&](assignment &a) { walk.visit(a); });
}

void expand_components(scope &s)
{
    for_each_type(s, [&](assignment &a) { expand(s, a.of.front()); });
}

} // namespace solvane::gen::asn1
