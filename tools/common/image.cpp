#include "image.h"

#include <algorithm>
#include <cstring>

#include <fmt/format.h>

#include "failure.h"
#include "layout.h"
#include "words.h"

namespace solvane::tools {

namespace {

constexpr int deepest = 200;             /* levels of live memory that are followed */
constexpr std::uint64_t most_list_nodes = 65536;

/// Where a value stands and who holds it.
struct site {
    std::span<const std::uint8_t> at; ///< from the value's first octet to the end of what is there
    const char                   *structure = nullptr; ///< of the member, for value texts
    const char                   *field = nullptr;
    int                           depth = 0;
};

class reader {
public:
    reader(const plugin &loaded, const domain &in, memory kind) : loaded_(loaded), in_(in), kind_(kind) {}

    value_node value(const resolved_type &type, std::size_t from_level, const site &where) const;

private:
    value_node scalar(const resolved_type &type, const site &where) const;
    value_node array(const resolved_type &type, std::size_t from_level, const site &where) const;
    value_node pointer(const resolved_type &type, std::size_t from_level, const site &where) const;
    value_node record(const resolved_type &type, const site &where) const;
    value_node member(const laid_record &whole, const laid_member &each, const site &where) const;
    value_node bit_field(const laid_member &each, const site &where) const;
    value_node counted(const laid_record &whole, const laid_member &each, const site &where) const;
    value_node selected(const laid_record &whole, const laid_member &each, const site &where) const;
    value_node list_nodes(const resolved_type &type, const laid_record &whole, const site &where) const;
    void       add_texts(value_node &node, const resolved_type *type, const site &where) const;

    void       keep_counted(value_node &node, const laid_record &whole, const laid_member &each,
                            const site &where) const;
    std::optional<std::int64_t> plain_number(const laid_record &whole, std::uint32_t index, const site &where) const;
    std::optional<std::uint64_t> run_time_count(const laid_record &whole, const laid_member &each,
                                                const site &where) const;
    std::uint64_t                unsigned_at(std::span<const std::uint8_t> at, std::uint64_t size) const;
    std::span<const std::uint8_t> behind(std::uint64_t address, std::uint64_t size) const;

    const plugin &loaded_;
    const domain &in_;
    memory        kind_;
};

std::span<const std::uint8_t> tail(std::span<const std::uint8_t> at, std::uint64_t offset)
{
    return at.subspan(static_cast<std::size_t>(std::min<std::uint64_t>(offset, at.size())));
}

bool is_signed(std::uint32_t kind)
{
    return kind == RW_KIND_LONG || kind == RW_KIND_INT || kind == RW_KIND_SHORT || kind == RW_KIND_SIGNED_CHAR ||
           kind == RW_KIND_ENUM;
}

bool is_octet(const resolved_type &type)
{
    return type.kind == RW_KIND_UNSIGNED_CHAR || type.kind == RW_KIND_CHAR || type.kind == RW_KIND_SIGNED_CHAR;
}

std::string printable(std::span<const std::uint8_t> bytes)
{
    const auto end = std::find(bytes.begin(), bytes.end(), std::uint8_t{0});
    const bool clean = std::all_of(bytes.begin(), end, [](std::uint8_t b) { return b >= 0x20 && b < 0x7F; });
    return clean ? std::string(bytes.begin(), end) : std::string();
}

value_node cut_node(const resolved_type &type)
{
    value_node node;
    node.type = type.name;
    node.form = shape::cut;
    return node;
}

std::uint64_t reader::unsigned_at(std::span<const std::uint8_t> at, std::uint64_t size) const
{
    std::uint64_t value = 0;
    for (std::uint64_t i = 0; i < size; ++i) {
        value = value << 8 | at[static_cast<std::size_t>(little_endian(in_) ? size - 1 - i : i)];
    }
    return value;
}

/* Live memory has no bounds that we could know: the pointee is as large as its type and count say. */
std::span<const std::uint8_t> reader::behind(std::uint64_t address, std::uint64_t size) const
{
    return {reinterpret_cast<const std::uint8_t *>(static_cast<std::uintptr_t>(address)),
            static_cast<std::size_t>(size)};
}

value_node reader::value(const resolved_type &type, std::size_t from_level, const site &where) const
{
    if (where.depth > deepest) {
        value_node node = cut_node(type);
        node.note = "nested too deeply";
        return node;
    }
    if (from_level < type.dims.size()) {
        return type.dims[from_level].dim_class == RW_PC_POINTERTO ? pointer(type, from_level, where)
                                                                  : array(type, from_level, where);
    }
    resolved_type element = type; /* behind its last declarator level */
    element.dims.clear();
    return element.is_record() ? record(element, where) : scalar(element, where);
}

void reader::add_texts(value_node &node, const resolved_type *type, const site &where) const
{
    if (type != nullptr && type->kind == RW_KIND_ENUM) {
        const rw_literal_row *literal = find_literal(enum_row(in_, *type), node.number);
        node.literal = literal != nullptr ? literal->name : "";
    }
    if (where.structure != nullptr && where.field != nullptr) {
        node.words = words_of(loaded_, in_, where.structure, where.field, static_cast<std::uint32_t>(node.number));
    }
}

value_node reader::scalar(const resolved_type &type, const site &where) const
{
    const std::uint64_t size = size_of(in_, type);
    if (where.at.size() < size) {
        return cut_node(type);
    }
    value_node node;
    node.type = type.name;
    const std::uint64_t raw = size != 0 ? unsigned_at(where.at, size) : 0;
    const unsigned      spare = 64U - 8U * static_cast<unsigned>(std::min<std::uint64_t>(size, 8));
    node.number = spare < 64 && is_signed(type.kind) ? static_cast<std::int64_t>(raw << spare) >> spare
                                                     : static_cast<std::int64_t>(raw);
    add_texts(node, &type, where);
    return node;
}

value_node reader::array(const resolved_type &type, std::size_t from_level, const site &where) const
{
    const std::uint64_t whole = size_of(in_, type, from_level);
    const std::uint64_t element = size_of(in_, type, from_level + 1);
    value_node          node;
    node.type = type.name;
    if (where.at.empty() && whole != 0) {
        return cut_node(type);
    }
    if (from_level + 1 == type.dims.size() && is_octet(type)) {
        node.form = shape::octets;
        const auto there = static_cast<std::size_t>(std::min<std::uint64_t>(whole, where.at.size()));
        node.bytes.assign(where.at.begin(), where.at.begin() + static_cast<std::ptrdiff_t>(there));
        node.partial = there < whole;
        node.note = node.partial ? fmt::format("{} of {} octets", there, whole) : "";
        node.words = type.kind != RW_KIND_UNSIGNED_CHAR ? printable(node.bytes) : "";
        return node;
    }
    node.form = shape::list;
    for (std::uint64_t i = 0; element != 0 && i < whole / element; ++i) {
        site place = where;
        place.at = tail(where.at, i * element);
        ++place.depth;
        node.children.push_back(value(type, from_level + 1, place));
        if (node.children.back().form == shape::cut) {
            break; /* the rest is not there either */
        }
    }
    return node;
}

value_node reader::pointer(const resolved_type &type, std::size_t from_level, const site &where) const
{
    const std::uint64_t width = basic_size(in_, RW_KIND_VOID);
    if (where.at.size() < width) {
        return cut_node(type);
    }
    value_node node;
    node.type = type.name;
    node.form = shape::pointer;
    node.number = static_cast<std::int64_t>(unsigned_at(where.at, width));
    /* A pointer that stands in an array has no count: one element, unless its type is nothing at all. */
    const std::uint64_t size = size_of(in_, type, from_level + 1);
    if (from_level > 0 && kind_ == memory::live && node.number != 0 && size != 0) {
        site place = where;
        place.at = behind(static_cast<std::uint64_t>(node.number), size);
        ++place.depth;
        node.children.push_back(value(type, from_level + 1, place));
    }
    return node;
}

value_node reader::record(const resolved_type &type, const site &where) const
{
    const laid_record whole = lay_out(in_, struct_row(in_, type), type.rt_tag);
    if (where.at.empty() && whole.size != 0) {
        return cut_node(type);
    }
    if (kind_ == memory::live && list_element(in_, type)) {
        return list_nodes(type, whole, where);
    }
    value_node node;
    node.type = type.name;
    node.form = shape::record;
    site inside = where;
    inside.structure = whole.row->name;
    ++inside.depth;
    for (const auto &each : whole.members) {
        inside.field = each.row->name;
        inside.at = where.at;
        node.children.push_back(member(whole, each, inside));
        node.children.back().name = each.row->name;
    }
    return node;
}

std::string bits_text(unsigned width)
{
    return fmt::format("{} bit{}", width, width == 1 ? "" : "s");
}

/* `where.at` starts at the structure here and in the functions below. */
value_node reader::member(const laid_record &whole, const laid_member &each, const site &where) const
{
    const bool optional = each.row->role == RW_ROLE_OPTIONAL || each.row->role == RW_ROLE_ARRAY;
    if (!whole.is_union() && optional && each.row->ref != RW_NO_REF &&
        plain_number(whole, each.row->ref, where) == std::int64_t{0}) {
        value_node node;
        node.type = each.is_bit_field() ? bits_text(each.width) : std::string(each.type.name);
        node.form = shape::absent;
        return node;
    }
    if (each.is_bit_field()) {
        return bit_field(each, where);
    }
    if (!whole.is_union() && each.row->role == RW_ROLE_UNION) {
        return selected(whole, each, where);
    }
    if (each.row->role == RW_ROLE_POINTER) {
        return counted(whole, each, where);
    }
    site place = where;
    place.at = tail(where.at, each.offset);
    value_node node = value(each.type, 0, place);
    if (!whole.is_union() && each.row->role == RW_ROLE_ARRAY) {
        keep_counted(node, whole, each, where);
    }
    return node;
}

/* The dictionary does not tell what counts an array in place; by the stack's convention it is the member `no_` and the
 * array's own name. */
void reader::keep_counted(value_node &node, const laid_record &whole, const laid_member &each, const site &where) const
{
    const std::string name = std::string("no_") + each.row->name;
    const auto        found = std::find_if(whole.members.begin(), whole.members.end(), [&](const laid_member &other) {
        return other.row->name == name;
    });
    if (found == whole.members.end() || node.partial) {
        return;
    }
    const auto         index = static_cast<std::uint32_t>(found - whole.members.begin());
    const std::int64_t count = plain_number(whole, index, where).value_or(-1);
    const std::size_t  all = node.form == shape::octets ? node.bytes.size() : node.children.size();
    if (count < 0 || static_cast<std::uint64_t>(count) >= all) {
        return;
    }
    const auto kept = static_cast<std::size_t>(count);
    node.note = fmt::format("{} of {}", kept, all);
    node.bytes.resize(std::min(kept, node.bytes.size()));
    node.words.resize(std::min(kept, node.words.size())); // a character an octet, where there are any
    node.children.resize(std::min(kept, node.children.size()));
}

value_node reader::bit_field(const laid_member &each, const site &where) const
{
    value_node node;
    node.type = bits_text(each.width);
    if (where.at.size() < each.offset + each.size) {
        node.form = shape::cut;
        return node;
    }
    std::uint64_t value = 0;
    for (const auto &part : each.parts) {
        const unsigned width = part.high - part.low + 1U;
        const unsigned octet = where.at[static_cast<std::size_t>(part.octet)];
        value = value << width | ((octet >> part.low) & ((1U << width) - 1U));
    }
    node.number = static_cast<std::int64_t>(value);
    add_texts(node, nullptr, where);
    return node;
}

std::optional<std::int64_t> reader::plain_number(const laid_record &whole, std::uint32_t index,
                                                 const site &where) const
{
    if (index >= whole.members.size()) {
        throw failure(exit_mismatch, fmt::format("broken dictionary of domain {}: {} refers to its member {} of {}",
                                                 in_.name, whole.row->name, index, whole.members.size()));
    }
    const laid_member &each = whole.members[index];
    if (!each.is_bit_field() && !each.levels.empty()) {
        return std::nullopt;
    }
    site place = where;
    place.at = tail(where.at, each.offset);
    const value_node node = each.is_bit_field() ? bit_field(each, where) : value(each.type, 0, place);
    return node.form == shape::number ? std::optional(node.number) : std::nullopt;
}

/* The only rule of this kind tells the octets of a bit string, from the string's own length in bits. */
std::optional<std::uint64_t> reader::run_time_count(const laid_record &whole, const laid_member &each,
                                                    const site &where) const
{
    const auto *rule =
        each.row->has_rt_rule == 1 ? find_rule(in_, each.row->rt_selector, whole.rt_tag) : nullptr;
    if (rule == nullptr || rule->length_func == nullptr || where.at.size() < whole.size) {
        return std::nullopt;
    }
    std::vector<std::uint64_t> aligned(static_cast<std::size_t>((whole.size + 7) / 8));
    std::memcpy(aligned.data(), where.at.data(), static_cast<std::size_t>(whole.size));
    return rule->length_func(aligned.data()).word[2];
}

value_node reader::counted(const laid_record &whole, const laid_member &each, const site &where) const
{
    site place = where;
    place.at = tail(where.at, each.offset);
    value_node node = value(each.type, 0, place);
    if (node.form != shape::pointer) {
        return node;
    }
    const bool tied = !whole.is_union() && each.row->ref != RW_NO_REF;
    auto       count = run_time_count(whole, each, where);
    if (!count && tied) {
        const auto number = plain_number(whole, each.row->ref, where);
        count = number ? std::optional(static_cast<std::uint64_t>(*number)) : std::nullopt;
    }
    if (count) {
        node.note = fmt::format("{} element{}", *count, *count == 1 ? "" : "s");
    }
    const std::uint64_t element = size_of(in_, each.type, 1);
    if (kind_ == memory::image || node.number == 0 || element == 0 || (!count && tied)) {
        return node;
    }
    resolved_type pointee = each.type;
    pointee.dims.erase(pointee.dims.begin());
    place.at = behind(static_cast<std::uint64_t>(node.number), element * count.value_or(1));
    ++place.depth;
    value_node content;
    if (!count) {
        content = value(pointee, 0, place);
    } else if (pointee.dims.empty() && is_octet(pointee)) {
        content.form = shape::octets;
        content.bytes.assign(place.at.begin(), place.at.end());
        content.words = pointee.kind != RW_KIND_UNSIGNED_CHAR ? printable(content.bytes) : "";
    } else {
        content.form = shape::list;
        const auto all = place.at;
        for (std::uint64_t i = 0; i < *count; ++i) {
            place.at = tail(all, i * element);
            content.children.push_back(value(pointee, 0, place));
        }
    }
    node.children.push_back(std::move(content));
    return node;
}

value_node reader::selected(const laid_record &whole, const laid_member &each, const site &where) const
{
    site place = where;
    place.at = tail(where.at, each.offset);
    const auto    selector = each.row->ref != RW_NO_REF ? plain_number(whole, each.row->ref, where) : std::nullopt;
    const bool    chosen = selector.has_value();
    const auto    wanted = selector.value_or(0);
    value_node    node;
    node.type = each.type.name;
    if (each.type.kind != RW_KIND_UNION || !each.levels.empty()) {
        return value(each.type, 0, place);
    }
    const laid_record cases = lay_out(in_, struct_row(in_, each.type), each.type.rt_tag);
    for (const auto &one : cases.members) {
        if (!chosen || one.row->ref == RW_NO_REF || one.row->ref != static_cast<std::uint64_t>(wanted)) {
            continue;
        }
        node.form = shape::record;
        node.note = fmt::format("case {}", wanted);
        site inside = place;
        inside.structure = cases.row->name;
        inside.field = one.row->name;
        ++inside.depth;
        node.children.push_back(member(cases, one, inside));
        node.children.back().name = one.row->name;
        return node;
    }
    node.form = chosen ? shape::absent : shape::octets;
    node.note = chosen ? fmt::format("no case for {}", wanted) : "no selector named";
    if (!chosen) {
        const auto there = static_cast<std::ptrdiff_t>(std::min<std::uint64_t>(cases.size, place.at.size()));
        node.bytes.assign(place.at.begin(), place.at.begin() + there);
    }
    return node;
}

/* Live lists: the list's ruled member points to the first node; a node's members are found by what the rules make of
 * them, the link having the node's own type and the element another one. */
value_node reader::list_nodes(const resolved_type &type, const laid_record &whole, const site &where) const
{
    value_node node;
    node.type = type.name;
    node.form = shape::list;
    const auto element = list_element(in_, type);
    const auto link_of = [&](const laid_record &owner, std::span<const std::uint8_t> at) -> std::uint64_t {
        for (const auto &each : owner.members) {
            if (each.row->has_rt_rule == 1 && each.type.kind == RW_KIND_STRUCT && !each.levels.empty()) {
                return unsigned_at(tail(at, each.offset), basic_size(in_, RW_KIND_VOID));
            }
        }
        return 0;
    };
    const auto first = std::find_if(whole.members.begin(), whole.members.end(), [](const laid_member &each) {
        return each.row->has_rt_rule == 1 && each.type.kind == RW_KIND_STRUCT;
    });
    if (first == whole.members.end()) {
        return node;
    }
    resolved_type     element_type = resolve(in_, *element);
    const bool        by_pointer = !element_type.dims.empty() && element_type.dims[0].dim_class == RW_PC_POINTERTO;
    const laid_record link = lay_out(in_, struct_row(in_, first->type));
    if (by_pointer) {
        element_type.dims.erase(element_type.dims.begin());
    }
    std::uint64_t address = link_of(whole, where.at);
    while (address != 0 && node.children.size() < most_list_nodes) {
        const auto at = behind(address, link.size);
        site       place = where;
        ++place.depth;
        for (const auto &each : link.members) {
            if (each.row->has_rt_rule == 1 && each.type.kind != RW_KIND_STRUCT) {
                const auto data = unsigned_at(tail(at, each.offset), basic_size(in_, RW_KIND_VOID));
                place.at = behind(data, data != 0 ? size_of(in_, element_type) : 0);
            }
        }
        node.children.push_back(value(element_type, 0, place));
        address = link_of(link, at);
    }
    return node;
}

} // namespace

value_node read_value(const plugin &loaded, const domain &in, const type_use &use, std::span<const std::uint8_t> at,
                      memory kind)
{
    return reader(loaded, in, kind).value(resolve(in, use), 0, {at, nullptr, nullptr, 0});
}

bool is_cut(const value_node &node)
{
    return node.form == shape::cut || node.partial ||
           std::any_of(node.children.begin(), node.children.end(), is_cut);
}

} // namespace solvane::tools
