// Sizes of wire formats, and the merging of their fields into words.
#include "model/wire.h"

#include <algorithm>

#include "model/model.h"

namespace solvane::gen {
namespace {

using what = wire_item::what;

std::optional<std::uint32_t> item_bits(const model &m, const wire_item &i)
{
    switch (i.kind) {
    case what::field:
    case what::constant:
    case what::word: return i.width;
    case what::presence:
    case what::any:
    case what::low_high: return 1;
    case what::derive:
    case what::look: return 0;
    case what::record: return m.records[i.record_id].wire->bits;
    case what::array: {
        if (i.extent != wire_extent::fixed)
            return std::nullopt;
        const std::optional<std::uint32_t> element = i.width != 0 ? i.width : m.records[i.record_id].wire->bits;
        return element ? std::optional(*element * (i.count - i.first)) : std::nullopt;
    }
    case what::choice:
    case what::group:
    case what::block:
    case what::window:
    case what::align: break;
    }
    return std::nullopt;
}

/// The most bits of an item; nothing where there is no such number.
std::optional<std::uint32_t> most_bits(const model &m, const std::vector<wire_item> &items);

std::optional<std::uint32_t> most_record_bits(const model &m, std::uint32_t id)
{
    const wire_codec                  &codec = *m.records[id].wire;
    const std::optional<std::uint32_t> bits = most_bits(m, codec.items);
    if (!bits || !codec.options.empty())
        return std::nullopt;
    return codec.length_width == 0 ? *bits : (*bits + 7) / 8 * 8 + codec.length_width;
}

std::optional<std::uint32_t> most_array_bits(const model &m, const wire_item &i)
{
    const std::optional<std::uint32_t> element = i.width != 0 ? i.width : most_record_bits(m, i.record_id);
    if (i.is_pointer || !element)
        return std::nullopt;
    const std::uint32_t chain = i.extent == wire_extent::chained || i.extent == wire_extent::linked ? 1 : 0;
    const std::uint32_t count = i.count - i.first + (i.bcd ? 1 : 0);
    return (*element + chain) * count;
}

std::optional<std::uint32_t> most_item_bits(const model &m, const wire_item &i)
{
    switch (i.kind) {
    case what::record: return most_record_bits(m, i.record_id);
    case what::array: return most_array_bits(m, i);
    case what::align: return 7;
    case what::window: return i.width;
    case what::block:
    case what::group: {
        const std::optional<std::uint32_t> first = most_bits(m, i.items), second = most_bits(m, i.otherwise);
        if (!first || !second)
            return std::nullopt;
        return std::max(*first, *second) + (i.kind == what::block ? i.width + 7 : 0);
    }
    case what::choice: {
        std::uint32_t most = 0;
        for (const wire_item &branch : i.items) {
            const std::optional<std::uint32_t> bits = most_item_bits(m, branch);
            if (!bits)
                return std::nullopt;
            most = std::max(most, *bits);
        }
        return most;
    }
    case what::field:
    case what::constant:
    case what::word:
    case what::presence:
    case what::any:
    case what::low_high:
    case what::derive:
    case what::look: break;
    }
    return item_bits(m, i);
}

std::optional<std::uint32_t> most_bits(const model &m, const std::vector<wire_item> &items)
{
    std::uint32_t total = 0;
    for (const wire_item &i : items) {
        const std::optional<std::uint32_t> bits = most_item_bits(m, i);
        if (!bits)
            return std::nullopt;
        total += *bits;
    }
    return total;
}

bool goes_into_word(const wire_item &i)
{
    return i.kind == what::field || i.kind == what::constant || i.kind == what::presence || i.kind == what::any;
}

/// Adds an item to the word that stands last, or begins a new one.
void add_to_word(std::vector<wire_item> &out, wire_item item)
{
    item.width = item.kind == what::presence || item.kind == what::any ? 1 : item.width;
    if (out.empty() || out.back().kind != what::word || out.back().width + item.width > 32) {
        wire_item word;
        word.kind = what::word;
        out.push_back(std::move(word));
    }
    out.back().width += item.width;
    out.back().items.push_back(std::move(item));
}

wire_item constant(std::uint32_t width, std::uint32_t value)
{
    wire_item c;
    c.kind = what::constant;
    c.width = width;
    c.value = value;
    return c;
}

void lay(const model &m, const std::vector<wire_item> &items, bool packing, std::vector<wire_item> &out)
{
    for (const wire_item &i : items) {
        const std::optional<std::uint32_t> bits =
            packing && i.kind == what::block && i.trim.steps.empty() ? fixed_bits(m, i.items) : std::nullopt;
        if (goes_into_word(i)) {
            add_to_word(out, i);
        } else if (bits) {
            const std::uint32_t octets = (*bits + 7) / 8;
            add_to_word(out, constant(i.width, octets));
            lay(m, i.items, packing, out);
            if (octets * 8 != *bits)
                add_to_word(out, constant(octets * 8 - *bits, 0));
        } else {
            wire_item laid = i;
            laid.items.clear();
            laid.otherwise.clear();
            if (i.kind == what::choice) {
                laid.items = i.items;
            } else {
                lay(m, i.items, packing, laid.items);
                lay(m, i.otherwise, packing, laid.otherwise);
            }
            out.push_back(std::move(laid));
        }
    }
}

} // namespace

std::optional<std::uint32_t> fixed_bits(const model &m, const std::vector<wire_item> &items)
{
    std::uint32_t total = 0;
    for (const wire_item &i : items) {
        const std::optional<std::uint32_t> bits = item_bits(m, i);
        if (!bits)
            return std::nullopt;
        total += *bits;
    }
    return total;
}

std::optional<std::uint32_t> most_octets(const model &m, const std::vector<wire_item> &items)
{
    const std::optional<std::uint32_t> bits = most_bits(m, items);
    return bits ? std::optional((*bits + 7) / 8) : std::nullopt;
}

std::vector<wire_item> lay_packing(const model &m, const std::vector<wire_item> &items)
{
    std::vector<wire_item> out;
    lay(m, items, true, out);
    return out;
}

std::vector<wire_item> lay_unpacking(const model &m, const std::vector<wire_item> &items)
{
    std::vector<wire_item> out;
    lay(m, items, false, out);
    return out;
}

std::string stem_of(const std::string &record)
{
    constexpr std::string_view ending = "_struct";
    const bool                 ends = record.size() > ending.size() && record.ends_with(ending);
    return record.substr(0, record.size() - (ends ? ending.size() : 0));
}

std::string wire_function(const std::string &record, const char *operation)
{
    return stem_of(record) + "_" + operation;
}

} // namespace solvane::gen
