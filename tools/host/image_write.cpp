#include "image_write.h"

#include <algorithm>
#include <cstring>

#include <fmt/format.h>

#include "failure.h"
#include "layout.h"

namespace solvane::tools {

namespace {

using octet_span = std::span<std::uint8_t>;

[[noreturn]] void refuse(const std::string &path, const std::string &what)
{
    throw failure(exit_usage, fmt::format("{}: {}", path.empty() ? "the value" : path, what));
}

std::string inside(const std::string &path, const std::string &name)
{
    return path.empty() ? name : path + "." + name;
}

std::string element(const std::string &path, std::uint64_t index)
{
    return fmt::format("{}[{}]", path, index);
}

bool is_octet(const resolved_type &type)
{
    return type.dims.empty() && (type.kind == RW_KIND_UNSIGNED_CHAR || type.kind == RW_KIND_CHAR ||
                                 type.kind == RW_KIND_SIGNED_CHAR);
}

resolved_type behind_level(resolved_type type)
{
    type.dims.erase(type.dims.begin());
    return type;
}

/* The number that a JSON value stands for: itself, {"value": n}, or the name of a literal. */
std::int64_t number_of(const domain &in, const resolved_type &type, const json &value, const std::string &path)
{
    if (value.is_object() && value.contains("value")) {
        return number_of(in, type, value.at("value"), path);
    }
    if (value.is_boolean()) {
        return value.get<bool>() ? 1 : 0;
    }
    if (value.is_number_integer()) {
        return value.get<std::int64_t>();
    }
    if (!value.is_string()) {
        refuse(path, "a number is wanted");
    }
    const auto  text = value.get<std::string>();
    suggestions near(text);
    if (type.kind == RW_KIND_ENUM) {
        const rw_enum_row &row = enum_row(in, type);
        for (std::uint32_t i = 0; i < row.no_literals; ++i) {
            if (text == row.literals[i].name && row.literals[i].value.valstat == RW_VS_VALID_VAL) {
                return row.literals[i].value.num;
            }
            near.offer(row.literals[i].name);
        }
    }
    const auto number = parse_number(text);
    if (!number) {
        refuse(path, fmt::format("{} is no number{}", text, near.text()));
    }
    return static_cast<std::int64_t>(*number);
}

/* A field takes what fits it as an unsigned or as a signed number: readers differ in how they show a sign. */
void check_width(std::int64_t number, unsigned bits, const std::string &path)
{
    const std::int64_t above = bits < 63 ? std::int64_t{1} << bits : INT64_MAX;
    if (number >= above || number < -(above / 2)) {
        refuse(path, fmt::format("{} does not fit in {} bit{}", number, bits, bits == 1 ? "" : "s"));
    }
}

octets octets_of(const json &value, const std::string &path)
{
    if (!value.is_string()) {
        refuse(path, "octets are wanted, as hex digits");
    }
    hex_result read = parse_hex(value.get<std::string>());
    if (read.bad_column != 0) {
        refuse(path, fmt::format("column {} of the octets: {}", read.bad_column, read.complaint));
    }
    return std::move(read.value);
}

class writer {
public:
    writer(const domain &in, block_store &blocks) : in_(in), blocks_(blocks) {}

    void value(const resolved_type &type, const json &from, octet_span at, const std::string &path) const;

private:
    void scalar(const resolved_type &type, const json &from, octet_span at, const std::string &path) const;
    void array(const resolved_type &type, const json &from, octet_span at, const std::string &path) const;
    std::uint64_t pointer(const resolved_type &type, const json &from, octet_span at, const std::string &path,
                          bool counted) const;
    void record(const resolved_type &type, const json &from, octet_span at, const std::string &path) const;
    void member(const laid_record &whole, const laid_member &each, const json &all, octet_span at,
                const std::string &path) const;
    std::optional<std::int64_t> choice(const laid_member &each, const json &from, octet_span at,
                                       const std::string &path) const;
    void list(const resolved_type &type, const laid_record &whole, const json &from, octet_span at,
              const std::string &path) const;
    void tie(const laid_record &whole, const laid_member &each, const json &all, octet_span at, std::int64_t number,
             const std::string &path) const;
    void put_member(const laid_member &each, std::int64_t number, octet_span at, const std::string &path) const;
    void put_number(std::uint64_t number, std::uint64_t size, octet_span at) const;
    void put_address(octet_span to, octet_span at) const;

    const domain &in_;
    block_store  &blocks_;
};

void writer::put_number(std::uint64_t number, std::uint64_t size, octet_span at) const
{
    for (std::uint64_t i = 0; i < size; ++i) {
        at[static_cast<std::size_t>(little_endian(in_) ? i : size - 1 - i)] = static_cast<std::uint8_t>(number);
        number >>= 8;
    }
}

void writer::put_address(octet_span to, octet_span at) const
{
    put_number(reinterpret_cast<std::uintptr_t>(to.data()), basic_size(in_, RW_KIND_VOID), at);
}

void writer::value(const resolved_type &type, const json &from, octet_span at, const std::string &path) const
{
    if (from.is_null()) {
        return;
    }
    if (!type.dims.empty()) {
        if (type.dims[0].dim_class == RW_PC_POINTERTO) {
            pointer(type, from, at, path, false);
        } else {
            array(type, from, at, path);
        }
    } else if (type.is_record()) {
        record(type, from, at, path);
    } else {
        scalar(type, from, at, path);
    }
}

void writer::scalar(const resolved_type &type, const json &from, octet_span at, const std::string &path) const
{
    const std::uint64_t size = size_of(in_, type);
    const std::int64_t  number = number_of(in_, type, from, path);
    check_width(number, 8U * static_cast<unsigned>(size), path);
    put_number(static_cast<std::uint64_t>(number), size, at);
}

void writer::array(const resolved_type &type, const json &from, octet_span at, const std::string &path) const
{
    const resolved_type inner = behind_level(type);
    const std::uint64_t step = size_of(in_, inner);
    const std::uint64_t room = step != 0 ? size_of(in_, type) / step : 0;
    if (is_octet(inner)) {
        const octets bytes = octets_of(from, path);
        if (bytes.size() > room) {
            refuse(path, fmt::format("{} octets do not fit in {}", bytes.size(), room));
        }
        std::copy(bytes.begin(), bytes.end(), at.begin());
        return;
    }
    if (!from.is_array() || from.size() > room) {
        refuse(path, fmt::format("an array of at most {} elements is wanted", room));
    }
    for (std::uint64_t i = 0; i < from.size(); ++i) {
        value(inner, from.at(static_cast<std::size_t>(i)), at.subspan(static_cast<std::size_t>(i * step)),
              element(path, i));
    }
}

/* Answers how many elements stand behind the pointer now. */
std::uint64_t writer::pointer(const resolved_type &type, const json &from, octet_span at, const std::string &path,
                              bool counted) const
{
    const bool  wrapped = from.is_object() && (from.contains("points_to") || from.contains("address"));
    const json &content = wrapped ? (from.contains("points_to") ? from.at("points_to") : json()) : from;
    if (content.is_null()) {
        return 0;
    }
    const resolved_type inner = behind_level(type);
    if (counted && is_octet(inner)) {
        const octets bytes = octets_of(content, path);
        const auto   block = blocks_.take(bytes.size());
        std::copy(bytes.begin(), bytes.end(), block.begin());
        put_address(block, at);
        return bytes.size();
    }
    const std::uint64_t step = size_of(in_, inner);
    if (!counted) {
        const auto block = blocks_.take(step);
        value(inner, content, block, path);
        put_address(block, at);
        return 1;
    }
    if (!content.is_array()) {
        refuse(path, "an array is wanted");
    }
    const auto block = blocks_.take(step * content.size());
    for (std::uint64_t i = 0; i < content.size(); ++i) {
        value(inner, content.at(static_cast<std::size_t>(i)), block.subspan(static_cast<std::size_t>(i * step)),
              element(path, i));
    }
    put_address(block, at);
    return content.size();
}

void writer::record(const resolved_type &type, const json &from, octet_span at, const std::string &path) const
{
    const laid_record whole = lay_out(in_, struct_row(in_, type), type.rt_tag);
    if (list_element(in_, type)) {
        list(type, whole, from, at, path);
        return;
    }
    if (!from.is_object()) {
        refuse(path, fmt::format("an object with the members of {} is wanted", whole.row->name));
    }
    for (const auto &[name, unused] : from.items()) {
        suggestions near(name);
        bool        known = false;
        for (const auto &each : whole.members) {
            known = known || name == each.row->name;
            near.offer(each.row->name);
        }
        if (!known) {
            refuse(inside(path, name), fmt::format("{} has no such member{}", whole.row->name, near.text()));
        }
    }
    for (const auto &each : whole.members) {
        if (from.contains(each.row->name) && !from.at(each.row->name).is_null()) {
            member(whole, each, from, at, inside(path, each.row->name));
        }
    }
}

/* `at` starts at the structure here and in the functions below. */
void writer::member(const laid_record &whole, const laid_member &each, const json &all, octet_span at,
                    const std::string &path) const
{
    const json      &from = all.at(each.row->name);
    const octet_span place = at.subspan(static_cast<std::size_t>(each.offset));
    const bool       tied = !whole.is_union() && each.row->ref != RW_NO_REF;
    if (each.is_bit_field()) {
        put_member(each, number_of(in_, each.type, from, path), at, path);
    } else if (each.row->role == RW_ROLE_POINTER && (tied || each.row->has_rt_rule == 1)) {
        const std::uint64_t count = pointer(each.type, from, place, path, true);
        if (tied) {
            tie(whole, each, all, at, static_cast<std::int64_t>(count), path);
        }
    } else if (each.row->role == RW_ROLE_UNION && !whole.is_union() && each.type.kind == RW_KIND_UNION &&
               each.levels.empty()) {
        const auto selected = choice(each, from, place, path);
        if (tied && selected) {
            tie(whole, each, all, at, *selected, path);
        }
    } else {
        value(each.type, from, place, path);
        if (tied && (each.row->role == RW_ROLE_OPTIONAL || each.row->role == RW_ROLE_ARRAY)) {
            tie(whole, each, all, at, 1, path);
        }
    }
}

/* What stands in the member that counts, guards or selects `each`: written where it was not given, and compared
 * where it was.  A presence flag may say 0 of a value that is there; then the value stays unused. */
void writer::tie(const laid_record &whole, const laid_member &each, const json &all, octet_span at,
                 std::int64_t number, const std::string &path) const
{
    if (each.row->ref >= whole.members.size()) {
        throw failure(exit_mismatch, fmt::format("broken dictionary of domain {}: {} refers to its member {} of {}",
                                                 in_.name, whole.row->name, each.row->ref, whole.members.size()));
    }
    const laid_member &other = whole.members[each.row->ref];
    if (!all.contains(other.row->name)) {
        put_member(other, number, at, path);
        return;
    }
    const std::int64_t given = number_of(in_, other.type, all.at(other.row->name), path);
    const bool         flag = each.row->role == RW_ROLE_OPTIONAL || each.row->role == RW_ROLE_ARRAY;
    if (!flag && given != number) {
        refuse(path, fmt::format("{} says {}, here it is {}", other.row->name, given, number));
    }
}

void writer::put_member(const laid_member &each, std::int64_t number, octet_span at, const std::string &path) const
{
    if (!each.is_bit_field()) {
        check_width(number, 8U * static_cast<unsigned>(each.size), path);
        put_number(static_cast<std::uint64_t>(number), each.size, at.subspan(static_cast<std::size_t>(each.offset)));
        return;
    }
    check_width(number, each.width, path);
    unsigned left = each.width;
    for (const auto &part : each.parts) {
        const unsigned width = part.high - part.low + 1U;
        const auto     mask = (1U << width) - 1U;
        left -= width;
        auto          &octet = at[static_cast<std::size_t>(part.octet)];
        const unsigned bits = static_cast<unsigned>(static_cast<std::uint64_t>(number) >> left) & mask;
        octet = static_cast<std::uint8_t>((octet & ~(mask << part.low)) | bits << part.low);
    }
}

/* Answers the selector's value for the case that is named; nothing for a union without cases or a null. */
std::optional<std::int64_t> writer::choice(const laid_member &each, const json &from, octet_span at,
                                           const std::string &path) const
{
    const laid_record cases = lay_out(in_, struct_row(in_, each.type), each.type.rt_tag);
    if (from.is_string()) {
        const octets bytes = octets_of(from, path);
        if (bytes.size() > cases.size) {
            refuse(path, fmt::format("{} octets do not fit in {}", bytes.size(), cases.size));
        }
        std::copy(bytes.begin(), bytes.end(), at.begin());
        return std::nullopt;
    }
    if (!from.is_object() || from.size() != 1) {
        refuse(path, "an object with one case is wanted");
    }
    suggestions near(from.begin().key());
    for (const auto &one : cases.members) {
        if (from.begin().key() == one.row->name) {
            member(cases, one, from, at, inside(path, one.row->name));
            return one.row->ref != RW_NO_REF ? std::optional(static_cast<std::int64_t>(one.row->ref)) : std::nullopt;
        }
        near.offer(one.row->name);
    }
    refuse(inside(path, from.begin().key()), fmt::format("{} has no such case{}", cases.row->name, near.text()));
}

/* A list with its nodes: the ruled member of the list and of each node that has the node's type is a link, the ruled
 * member of another type leads to the element. */
void writer::list(const resolved_type &type, const laid_record &whole, const json &from, octet_span at,
                  const std::string &path) const
{
    if (!from.is_array()) {
        refuse(path, "an array is wanted");
    }
    const auto is_link = [](const laid_member &each) {
        return each.row->has_rt_rule == 1 && each.type.kind == RW_KIND_STRUCT && !each.levels.empty();
    };
    const auto first = std::find_if(whole.members.begin(), whole.members.end(), is_link);
    resolved_type inner = resolve(in_, *list_element(in_, type));
    if (!inner.dims.empty() && inner.dims[0].dim_class == RW_PC_POINTERTO) {
        inner = behind_level(inner);
    }
    if (first == whole.members.end()) {
        refuse(path, "the dictionary does not tell how its elements are linked");
    }
    resolved_type node_type = first->type;
    node_type.dims.clear();
    const laid_record node = lay_out(in_, struct_row(in_, node_type), node_type.rt_tag);
    octet_span        link = at.subspan(static_cast<std::size_t>(first->offset));
    for (std::size_t i = 0; i < from.size(); ++i) {
        const auto fresh = blocks_.take(node.size);
        const auto data = blocks_.take(size_of(in_, inner));
        value(inner, from.at(i), data, element(path, i));
        put_address(fresh, link);
        for (const auto &each : node.members) {
            const auto place = fresh.subspan(static_cast<std::size_t>(each.offset));
            if (is_link(each)) {
                link = place;
            } else if (each.row->has_rt_rule == 1) {
                put_address(data, place);
            }
        }
    }
    for (const auto &each : whole.members) {
        if (std::string_view(each.row->name) == "count") {
            put_member(each, static_cast<std::int64_t>(from.size()), at, path);
        } else if (std::string_view(each.row->name) == "dataSize") {
            put_member(each, static_cast<std::int64_t>(size_of(in_, inner)), at, path);
        }
    }
}

} // namespace

std::span<std::uint8_t> block_store::take(std::uint64_t size)
{
    blocks_.push_back(std::make_unique<std::uint64_t[]>(static_cast<std::size_t>(size / 8 + 1)));
    return {reinterpret_cast<std::uint8_t *>(blocks_.back().get()), static_cast<std::size_t>(size)};
}

void write_value(const domain &in, const type_use &use, const json &value, std::span<std::uint8_t> at,
                 block_store &blocks)
{
    writer(in, blocks).value(resolve(in, use), value, at, "");
}

} // namespace solvane::tools
