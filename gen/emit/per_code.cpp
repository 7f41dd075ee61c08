// What the emitters of the PER codecs share.
#include "emit/per_code.h"

#include <algorithm>
#include <cctype>
#include <limits>

#include <fmt/format.h>

namespace solvane::gen::per {

namespace {

constexpr std::size_t widest = 120; // columns of a line; a note that runs over is left out

} // namespace

// ---------------------------------------------------------------------------------------------------- lines of code

code_text::code_text(std::string head)
    : text_(std::move(head)), line_(1 + static_cast<std::uint32_t>(std::ranges::count(text_, '\n')))
{
}

void code_text::put(std::string_view block, std::initializer_list<named> values)
{
    if (block.starts_with('\n'))
        block.remove_prefix(1);
    while (!block.empty()) {
        const std::size_t end = std::min(block.find('\n'), block.size());
        std::string       pattern(block.substr(0, end));
        block.remove_prefix(std::min(end + 1, block.size()));
        for (std::size_t at; (at = pattern.find("$line$")) != std::string::npos;)
            pattern.replace(at, 6, std::to_string(line_));
        std::string line = pattern.empty() ? "" : std::string(depth_ * 4, ' ');
        gen::put(line, pattern, values);
        const std::size_t note = line.find(" // ");
        text_ += line.size() > widest && note != std::string::npos ? line.substr(0, note) : line;
        text_ += '\n';
        ++line_;
    }
}

void code_text::open(std::string_view block, std::initializer_list<named> values)
{
    put(block, values);
    ++depth_;
}

void code_text::close(std::string_view block)
{
    --depth_;
    put(block);
}

void code_text::gap()
{
    if (text_.ends_with("{\n") || text_.ends_with("\n\n"))
        return;
    text_ += '\n';
    ++line_;
}

void code_text::open_function(std::string_view result, std::string_view name, const std::vector<parameter> &parameters)
{
    names_.clear();
    signature_ = text_.size();
    std::string list;
    for (const parameter &p : parameters) {
        list += (list.empty() ? "" : ", ") + p.type + p.name;
        names_.push_back(p.name);
    }
    const std::string head = std::string(result) + " " + std::string(name) + "(";
    put(head.size() + list.size() < widest ? head + list + ")\n{\n" : head + "\n    " + list + ")\n{\n");
    body_ = text_.size();
    ++depth_;
}

namespace {

bool mentions(std::string_view text, std::string_view word)
{
    const auto is_part = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; };
    for (std::size_t at = 0; (at = text.find(word, at)) != std::string_view::npos; at += word.size())
        if ((at == 0 || !is_part(text[at - 1])) && !is_part(text[at + word.size()]))
            return true;
    return false;
}

} // namespace

void code_text::close_function()
{
    for (const std::string &name : names_) {
        if (mentions(std::string_view(text_).substr(body_), name))
            continue;
        const std::size_t in_list = text_.find_first_of(",)", text_.find(name, text_.find('(', signature_)));
        const std::size_t at = in_list - name.size();
        const std::size_t blank = text_[at - 1] == ' ';
        text_.erase(at - blank, name.size() + blank);
        body_ -= name.size() + blank;
    }
    close();
}

// ---------------------------------------------------------------------------------------------------------- places

spot own_spot()
{
    return {"*value", "value"};
}

spot member_spot(std::string_view name)
{
    return {fmt::format("value->{}", name), fmt::format("&value->{}", name)};
}

spot alternative_spot(std::string_view name)
{
    return {fmt::format("value->a.{}", name), fmt::format("&value->a.{}", name)};
}

spot element_spot()
{
    return {"*element", "element"};
}

spot array_spot()
{
    return {"(*value)[n]", "&(*value)[n]"};
}

// ---------------------------------------------------------------------------------------------------------- usages

bool is_field(const usage &u, bool in_pack)
{
    switch (u.shape) {
    case shape::boolean:
    case shape::null:
        return true;
    case shape::integer:
        return u.number.has_lower && u.number.has_upper && u.number.width <= 32;
    case shape::enumerated:
        return in_pack || !u.index.extensible;
    case shape::octets:
    case shape::bits:
    case shape::sequence:
    case shape::choice:
    case shape::list:
    case shape::array:
    case shape::unsupported:
        break;
    }
    return false;
}

std::uint32_t field_width(const usage &u, bool in_pack)
{
    switch (u.shape) {
    case shape::boolean: return 1;
    case shape::integer: return u.number.width;
    case shape::enumerated: return u.index.width + (in_pack && u.index.extensible);
    default: return 0;
    }
}

bool is_chained(const usage &u)
{
    switch (u.shape) {
    case shape::octets:
    case shape::bits:
        return true;
    case shape::integer:
        return !u.number.has_lower || !u.number.has_upper;
    case shape::sequence:
    case shape::choice:
    case shape::list:
    case shape::array:
        return u.facts.can_fail;
    case shape::boolean:
    case shape::null:
    case shape::enumerated:
    case shape::unsupported:
        break;
    }
    return false;
}

std::string presence_test(const member &m, std::string_view record)
{
    return fmt::format("{}->{} {} 1", record, m.flag, m.presence == presence::with_default ? "!=" : "==");
}

std::string presence_bit(const member &m)
{
    if (m.flag.empty())
        return "1u";
    return m.presence == presence::with_default ? fmt::format("std::uint32_t(value->{} != 1)", m.flag)
                                                : fmt::format("(value->{} & 1u)", m.flag);
}

bool has_parts(shape s)
{
    return s == shape::sequence || s == shape::choice || s == shape::list || s == shape::array;
}

namespace {

std::string bits_text(std::uint32_t width)
{
    return width == 1 ? "1 bit" : fmt::format("{} bits", width);
}

std::string describe_string(const string_limits &s, std::string_view unit)
{
    switch (s.mode) {
    case 0: return fmt::format("{}", unit);
    case 1: return fmt::format("{} or more {}", s.lower, unit);
    default:
        return s.lower == s.upper ? fmt::format("{} {}", s.lower, unit)
                                  : fmt::format("{}..{} {}", s.lower, s.upper, unit);
    }
}

} // namespace

std::string describe(const whole_number &n)
{
    if (!n.has_lower)
        return "any number";
    if (!n.has_upper)
        return fmt::format("from {} on", n.lower);
    return n.lower == n.upper ? fmt::format("always {}", n.lower)
                              : fmt::format("{}..{} in {}", n.lower, n.upper, bits_text(n.width));
}

std::string describe(const selection &s)
{
    return fmt::format("one of {} in {}{}", s.root_count, bits_text(s.width), s.extensible ? ", extensible" : "");
}

std::string describe(const usage &u)
{
    switch (u.shape) {
    case shape::boolean: return "1 bit";
    case shape::integer: return describe(u.number);
    case shape::enumerated: return describe(u.index);
    case shape::null: return "nothing";
    case shape::octets: return describe_string(u.string, "octets");
    case shape::bits: return describe_string(u.string, "bits");
    case shape::sequence:
    case shape::choice:
    case shape::list:
    case shape::array:
    case shape::unsupported: break;
    }
    return u.cpp_type;
}

std::string unsigned_literal(std::uint64_t n)
{
    return n < 10 ? fmt::format("{}u", n) : n > 0xFFFF ? fmt::format("0x{:X}u", n) : fmt::format("{}u", n);
}

std::string int_literal(std::int64_t n)
{
    return n == std::numeric_limits<std::int32_t>::min() ? "INT32_MIN" : fmt::format("{}", n);
}

std::string band(std::uint32_t width)
{
    return width <= 8 ? "8" : width <= 16 ? "16" : width <= 24 ? "24" : "32";
}

// ----------------------------------------------------------------------------------------------------------- words

std::vector<std::vector<bit_field>> words_of(const std::vector<bit_field> &fields)
{
    std::vector<std::vector<bit_field>> words;
    std::uint32_t                       width = 0;
    for (const bit_field &f : fields) {
        if (words.empty() || width + f.width > 32) {
            words.emplace_back();
            width = 0;
        }
        words.back().push_back(f);
        width += f.width;
    }
    return words;
}

std::uint32_t width_of(const std::vector<bit_field> &word)
{
    std::uint32_t width = 0;
    for (const bit_field &f : word)
        width += f.width;
    return width;
}

// "presence of a, b; c: 1..60 in 6 bits", as far as a line holds it.
std::string notes_of(const std::vector<bit_field> &word)
{
    constexpr std::size_t longest = 72;
    std::string           text;
    bool                  in_presence = false;
    for (const bit_field &f : word) {
        const bool is_presence = f.type == nullptr && !f.note.empty();
        if (f.note.empty())
            continue;
        const std::string piece = text.empty()                   ? (is_presence ? "presence: " : "")
                                  : is_presence && in_presence   ? ", "
                                  : is_presence                  ? "; presence: "
                                                                 : "; ";
        if (text.size() + piece.size() + f.note.size() > longest)
            return text + (text.empty() ? f.note : " …");
        text += piece + f.note;
        in_presence = is_presence;
    }
    return text;
}

std::vector<const member *> root_of(const codec &c)
{
    std::vector<const member *> members;
    for (const member &m : c.members)
        if (m.addition == no_index)
            members.push_back(&m);
    return members;
}

std::vector<const member *> additions_of(const codec &c)
{
    std::vector<const member *> members;
    for (const member &m : c.members)
        if (m.addition != no_index)
            members.push_back(&m);
    return members;
}

void put_heading(code_text &out, const codec &c)
{
    if (c.is_nested)
        out.put("// $name$: in $around$, $source$\n", {{"name", c.name}, {"around", c.asn_name}, {"source", c.source}});
    else
        out.put("// $name$   $source$\n", {{"name", c.asn_name}, {"source", c.source}});
}

} // namespace solvane::gen::per
