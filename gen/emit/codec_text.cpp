// Lines and expressions of codecs.
#include "emit/codec_text.h"

#include <fmt/format.h>

#include "emit/record.h"
#include "emit/text.h"

namespace solvane::gen {

namespace {

constexpr std::size_t widest_line = 118;

} // namespace

/// A line that is too wide goes on behind one of its commas, further in.
void code_block::line(std::string_view text)
{
    std::size_t margin = level * 4;
    while (margin + text.size() > widest_line) {
        const std::size_t comma = text.rfind(", ", widest_line - margin);
        if (comma == std::string_view::npos || text.front() == '"')
            break;
        out.append(margin, ' ').append(text.substr(0, comma + 1)) += '\n';
        text.remove_prefix(comma + 2);
        margin = level * 4 + 8;
    }
    out.append(margin, ' ').append(text) += '\n';
}
void code_block::open(std::string_view head)
{
    line(head.empty() ? "{" : std::string(head) + " {");
    ++level;
}

void code_block::close(std::string_view tail)
{
    --level;
    line(tail);
}

void code_block::terms(std::string_view head, const std::vector<std::string> &terms, std::string_view tail)
{
    std::string all(head);
    for (std::size_t n = 0; n < terms.size(); ++n)
        all += (n > 0 ? " | " : "") + terms[n];
    all += tail;
    if (level * 4 + all.size() <= widest_line || terms.size() == 1) {
        line(all);
        return;
    }
    const std::string margin(head.size(), ' ');
    for (std::size_t n = 0; n < terms.size(); ++n) {
        const bool last = n + 1 == terms.size();
        line((n == 0 ? std::string(head) : margin) + terms[n] + (last ? std::string(tail) : " |"));
    }
}

std::string place_text(const model &m, const wire_place &p)
{
    std::string text = "value";
    for (std::size_t n = 0; n < p.steps.size(); ++n) {
        const wire_place::step &step = p.steps[n];
        text += (n == 0 ? "->" : ".") + member_name(m, step.record_id, step.member);
        if (step.index)
            text += fmt::format("[{}]", *step.index);
    }
    return text;
}

std::string place_name(const model &m, const wire_place &p)
{
    return member_name(m, p.steps.back().record_id, p.steps.back().member);
}

const member &place_member(const model &m, const wire_place &p)
{
    return m.records[p.steps.back().record_id].members[p.steps.back().member];
}

std::uint32_t member_bits(const model &m, const member &field)
{
    if (field.bit_width != 0)
        return field.bit_width;
    switch (base_of(m, field.type).base) {
    case kind::unsigned_short:
    case kind::signed_short: return 16;
    case kind::unsigned_char:
    case kind::plain_char:
    case kind::signed_char: return 8;
    default: return 32;
    }
}

std::string member_enum(const model &m, const member &field)
{
    const type_use base = base_of(m, field.type);
    return base.base == kind::enumeration ? enum_name(m, base.id) : "";
}

std::string mask_text(std::uint32_t bits)
{
    const std::uint32_t mask = bits < 32 ? (std::uint32_t{1} << bits) - 1 : 0xFFFFFFFF;
    return fmt::format("0x{:02X}", mask);
}

std::string conditions_text(const model &m, const std::vector<wire_condition> &conditions)
{
    using what = wire_condition::what;
    std::string text;
    for (const wire_condition &c : conditions) {
        const std::string one = c.kind == what::left ? "" : place_text(m, c.member);
        text += text.empty() ? "" : " && ";
        switch (c.kind) {
        case what::set: text += fmt::format("{} != 0", one); break;
        case what::clear: text += fmt::format("{} == 0", one); break;
        case what::equal: text += fmt::format("{} == {}", one, c.value); break;
        case what::unequal: text += fmt::format("{} != {}", one, c.value); break;
        case what::less: text += fmt::format("{} < {}", one, c.value); break;
        case what::less_equal: text += fmt::format("{} <= {}", one, c.value); break;
        case what::greater: text += fmt::format("{} > {}", one, c.value); break;
        case what::greater_equal: text += fmt::format("{} >= {}", one, c.value); break;
        case what::mask: text += fmt::format("({} & {}) != 0", one, c.value); break;
        case what::left: text += fmt::format("msg_left(stream) >= {}", c.value); break;
        }
    }
    return text;
}

std::string octets_text(const model &m, const wire_place &array, bool is_const)
{
    const std::string text = place_text(m, array);
    if (base_of(m, place_member(m, array).type).base == kind::unsigned_char)
        return text;
    return fmt::format("reinterpret_cast<{}std::uint8_t *>({})", is_const ? "const " : "", text);
}

std::string codec_function(const model &m, std::uint32_t record_id, const char *operation)
{
    return wire_function(record_name(m, record_id), operation);
}

std::string content_name(const model &m, std::uint32_t record_id, const wire_item &part)
{
    return wire_function(record_name(m, record_id), (part.name + "_content").c_str());
}

std::string written_count(const model &m, const wire_item &array)
{
    if (array.extent == wire_extent::fixed)
        return std::to_string(array.count);
    const std::string count = place_text(m, array.other);
    return array.is_pointer ? count : fmt::format("msg_at_most({}, {})", count, array.count);
}

} // namespace solvane::gen
