// Look-up of names and evaluation of values.
#include "def/scope.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include <fmt/format.h>

namespace solvane::gen::def {
namespace {

/// Words that are no names in C++20, sorted.
constexpr std::array<std::string_view, 92> cpp_words = {
    "alignas", "alignof", "and", "and_eq", "asm", "auto", "bitand", "bitor", "bool", "break", "case", "catch", "char",
    "char16_t", "char32_t", "char8_t", "class", "co_await", "co_return", "co_yield", "compl", "concept", "const",
    "const_cast", "consteval", "constexpr", "constinit", "continue", "decltype", "default", "delete", "do", "double",
    "dynamic_cast", "else", "enum", "explicit", "export", "extern", "false", "float", "for", "friend", "goto", "if",
    "inline", "int", "long", "mutable", "namespace", "new", "noexcept", "not", "not_eq", "nullptr", "operator", "or",
    "or_eq", "private", "protected", "public", "register", "reinterpret_cast", "requires", "return", "short", "signed",
    "sizeof", "static", "static_assert", "static_cast", "struct", "switch", "template", "this", "thread_local",
    "throw", "true", "try", "typedef", "typeid", "typename", "union", "unsigned", "using", "virtual", "void",
    "volatile", "wchar_t", "while", "xor", "xor_eq"};

/// Finds the literal or constant of a name among the visible ones.
const value_symbol *find_value(scope &s, const expression &e, const std::vector<bool> &units)
{
    const value_symbol *hidden = nullptr;
    const auto [first, last] = s.values.equal_range(e.id);
    for (auto at = first; at != last; ++at) {
        if (units[at->second.unit])
            return &at->second;
        hidden = &at->second;
    }
    if (hidden == nullptr) {
        s.diag.error(e.where, fmt::format("unknown literal or constant '{}'", e.id));
    } else {
        s.diag.conflict(e.where, fmt::format("'{}' is not imported here", e.id), hidden->where,
                        fmt::format("it is defined in \"{}\"", s.folder.units[hidden->unit].path));
    }
    return nullptr;
}

std::optional<std::int64_t> named_value(scope &s, const expression &e, const std::vector<bool> &units)
{
    const value_symbol *symbol = find_value(s, e, units);
    if (symbol == nullptr)
        return std::nullopt;
    if (!symbol->evaluated) {
        s.diag.conflict(e.where, fmt::format("'{}' has no value", e.id), symbol->where, "it is not evaluated");
        return std::nullopt;
    }
    return symbol->number;
}

std::optional<std::int64_t> combine(scope &s, const expression &e, std::int64_t left, std::int64_t right)
{
    std::int64_t result = 0;
    bool         wrong = false;
    switch (e.kind) {
    case expression::what::add: wrong = __builtin_add_overflow(left, right, &result); break;
    case expression::what::subtract: wrong = __builtin_sub_overflow(left, right, &result); break;
    case expression::what::multiply: wrong = __builtin_mul_overflow(left, right, &result); break;
    case expression::what::bit_or: result = left | right; break;
    case expression::what::divide:
        wrong = right == 0 || (left == std::numeric_limits<std::int64_t>::min() && right == -1);
        result = wrong ? 0 : left / right;
        break;
    case expression::what::shift_left:
        wrong = left < 0 || right < 0 || right > 62 || left > (std::numeric_limits<std::int64_t>::max() >> right);
        result = wrong ? 0 : left << right;
        break;
    case expression::what::number:
    case expression::what::name:
    case expression::what::negate: break;
    }
    if (!wrong)
        return result;
    s.diag.error(e.where, e.kind == expression::what::divide ? "division by zero" : "the value does not fit 64 bits");
    return std::nullopt;
}

std::optional<std::int64_t> compute(scope &s, const expression &e, const std::vector<bool> &units)
{
    if (e.kind == expression::what::name)
        return named_value(s, e, units);
    if (e.kind == expression::what::number) {
        if (e.number <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
            return static_cast<std::int64_t>(e.number);
        s.diag.error(e.where, "the value does not fit 64 bits");
        return std::nullopt;
    }
    const std::optional<std::int64_t> left = compute(s, e.operands[0], units);
    if (!left)
        return std::nullopt;
    if (e.kind == expression::what::negate)
        return -*left;
    const std::optional<std::int64_t> right = compute(s, e.operands[1], units);
    return right ? combine(s, e, *left, *right) : std::nullopt;
}

} // namespace

std::optional<std::int64_t> evaluate(scope &s, const expression &e, const std::vector<bool> &units, std::int64_t low,
                                     std::int64_t high, std::string_view what)
{
    const std::optional<std::int64_t> value = compute(s, e, units);
    if (!value || (*value >= low && *value <= high))
        return value;
    s.diag.error(e.where, fmt::format("{} is {}, outside {} to {}", what, *value, low, high));
    return std::nullopt;
}

resolved_type look_through(const scope &s, type_use use)
{
    resolved_type result{use, true};
    while (result.use.base == kind::type_name) {
        const alias_facts &alias = s.aliases[result.use.id];
        result.plain = result.plain && alias.dims.empty();
        result.use = alias.base;
    }
    return result;
}

const type_symbol *find_type(scope &s, const unit_def &unit, const name &id, bool behind_pointer)
{
    const auto at = s.types.find(id.text);
    if (at == s.types.end()) {
        s.diag.error(id.where, fmt::format("unknown type '{}'", id.text));
        return nullptr;
    }
    const type_symbol &symbol = at->second;
    if (!s.visible[unit.unit_id][symbol.unit]) {
        s.diag.conflict(id.where, fmt::format("type '{}' is not imported here", id.text), symbol.where,
                        fmt::format("it is defined in \"{}\"", s.folder.units[symbol.unit].path));
        return nullptr;
    }
    const bool record = symbol.use.base == kind::structure || symbol.use.base == kind::union_;
    if (symbol.defined || (behind_pointer && record))
        return &symbol;
    s.diag.conflict(id.where, fmt::format("'{}' is used ahead of its definition", id.text), symbol.where,
                    "it is defined here");
    return nullptr;
}

bool is_cpp_word(std::string_view word) { return std::binary_search(cpp_words.begin(), cpp_words.end(), word); }

void check_word(scope &s, const name &id)
{
    if (is_cpp_word(id.text))
        s.diag.error(id.where, fmt::format("'{}' is a word of C++ and cannot be a name", id.text));
}

std::uint32_t integer_size(kind base)
{
    switch (base) {
    case kind::unsigned_long:
    case kind::signed_long:
    case kind::unsigned_int:
    case kind::signed_int: return 4;
    case kind::unsigned_short:
    case kind::signed_short: return 2;
    case kind::unsigned_char:
    case kind::plain_char:
    case kind::signed_char: return 1;
    case kind::structure:
    case kind::union_:
    case kind::enumeration:
    case kind::type_name:
    case kind::nothing:
    case kind::bit_field: break;
    }
    return 0;
}

} // namespace solvane::gen::def
