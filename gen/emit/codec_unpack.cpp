// Unpack functions: bits to the fields of a record, and the loop over optional elements.
#include <algorithm>
#include <map>
#include <optional>

#include <fmt/format.h>

#include "emit/codec_text.h"
#include "emit/record.h"
#include "emit/text.h"

namespace solvane::gen {
namespace {

using what = wire_item::what;

/// The unpacking of one record.
struct unpacker {
    const model &m;
    std::uint32_t record_id;
    code_block   code;
    std::string &parts;             ///< functions for the bounded parts inside
    bool         bounded = false;   ///< what is left is asked for ahead of each read
    bool         needs_word = false;

    void guard(std::uint32_t bits);
    void item(const wire_item &i);
    void items(const std::vector<wire_item> &list);
    void word(const wire_item &word);
    void field(const wire_item &i, const std::string &bits);
    void array(const wire_item &i);
    void fixed_array(const wire_item &i);
    void octets(const wire_item &i);
    void digits(const wire_item &i);
    void elements(const wire_item &i);
    void chained(const wire_item &i);
    void linked(const wire_item &i);
    void grow(const wire_item &i, const std::string &count);
    std::string first_follows(const wire_item &i) const;
    void element(const wire_item &i, const std::string &index);
    void choice(const wire_item &i);
    void group(const wire_item &i);
    void block(const wire_item &i);
    void keep_length(const wire_place &trim);
    void window(const wire_item &i);
    void content_function(const wire_item &i, bool is_bounded);
    void block_content(const wire_item &i);
    void resets(const std::vector<wire_item> &list, std::vector<std::string> &seen);
    void reset(const std::string &place, std::vector<std::string> &seen);
    void options(const std::vector<wire_option> &all);
    void option(const wire_option &o, bool first);
    void options_of(const std::vector<const wire_option *> &same);
};

std::string get_call(std::uint32_t width)
{
    return fmt::format("per_get_{}(stream, {})", (width + 7) / 8 * 8, width);
}

std::optional<std::uint32_t> element_bits(const model &m, const wire_item &i)
{
    return i.width != 0 ? i.width : m.records[i.record_id].wire->bits;
}

void unpacker::guard(std::uint32_t bits)
{
    if (!bounded || bits == 0)
        return;
    code.line(fmt::format("if (!msg_has_bits(stream, {}))", bits));
    code.line("    return;");
}

/// Stores the bits of a field that stand at the low end of `bits`, masked.
void unpacker::field(const wire_item &i, const std::string &bits)
{
    const std::string to = place_text(m, i.member);
    if (i.kind == what::presence || i.kind == what::any) {
        code.line(i.inverse ? fmt::format("{} = ({}) ^ 1;", to, bits) : fmt::format("{} = {};", to, bits));
        return;
    }
    const member     &field = place_member(m, i.member);
    const std::string enumeration = member_enum(m, field);
    if (!enumeration.empty())
        code.line(fmt::format("{} = static_cast<{}>({});", to, enumeration, bits));
    else if (i.minus != 0)
        code.line(fmt::format("{} = (({}) + {}) & {};", to, bits, i.minus, mask_text(member_bits(m, field))));
    else
        code.line(fmt::format("{} = {};", to, bits));
}

std::string part_of_word(std::uint32_t shift, std::uint32_t width)
{
    return shift == 0 ? fmt::format("word & {}", mask_text(width))
                      : fmt::format("word >> {} & {}", shift, mask_text(width));
}

/// Wider than any word that is read: a mask is then never needless, which the compiler would take for a narrowing.
constexpr std::string_view word_declaration = "    std::uint64_t word;\n";

void unpacker::word(const wire_item &word)
{
    guard(word.width);
    const auto is_constant = [](const wire_item &i) { return i.kind == what::constant; };
    if (std::all_of(word.items.begin(), word.items.end(), is_constant)) {
        code.line(fmt::format("per_pass(stream, {});", word.width));
        return;
    }
    if (word.items.size() == 1) {
        const std::string mask = word.width == 32 ? "" : " & " + mask_text(word.width);
        field(word.items[0], get_call(word.width) + mask);
        return;
    }
    needs_word = true;
    code.line(fmt::format("word = {};", get_call(word.width)));
    std::uint32_t shift = word.width;
    for (const wire_item &i : word.items) {
        shift -= i.width;
        if (!is_constant(i))
            field(i, part_of_word(shift, i.width));
    }
}

// ------------------------------------------------------------------------------------------------ arrays

/// The most elements that the count and the capacity of an array can tell.
std::uint32_t most_elements(const model &m, const wire_item &i)
{
    const std::uint32_t count = std::min(member_bits(m, place_member(m, i.other)), 16u);
    std::uint32_t       most = (1u << count) - 1;
    if (i.is_pointer) {
        const std::uint32_t room = member_bits(m, place_member(m, i.capacity));
        most = room < 32 ? std::min(most, (1u << room) - 2) : most; // an array of octets has one more
    } else {
        most = std::min(most, i.count);
    }
    return most;
}

std::string counted(const model &m, const wire_item &i, const std::string &count)
{
    return fmt::format("{} = {} & {};", place_text(m, i.other), count,
                       mask_text(member_bits(m, place_member(m, i.other))));
}

/// Elements to be read at most, told by the count or by what is left.
std::string wanted_octets(const model &m, const wire_item &i)
{
    return i.extent == wire_extent::counted ? place_text(m, i.other) : "msg_left(stream)";
}

void unpacker::octets(const wire_item &i)
{
    const std::string array = place_text(m, i.member);
    if (i.is_pointer) {
        const std::string most = fmt::format("msg_at_most({}, {})", wanted_octets(m, i), most_elements(m, i));
        code.line(counted(m, i, fmt::format("msg_get_octets(stream, {}, &{}, &{}, {{file_code, __LINE__}})", most,
                                            array, place_text(m, i.capacity))));
        return;
    }
    code.line(counted(m, i, fmt::format("msg_get_octets(stream, {}, {}, {})", wanted_octets(m, i), array,
                                        most_elements(m, i))));
}

void unpacker::digits(const wire_item &i)
{
    const std::string array = place_text(m, i.member);
    if (i.is_pointer)
        code.line(counted(m, i, fmt::format("msg_get_digits(stream, &{}, &{}, {}, {}, {{file_code, __LINE__}})",
                                            array, place_text(m, i.capacity), i.first, most_elements(m, i))));
    else if (i.extent == wire_extent::counted)
        code.line(counted(m, i, fmt::format("msg_get_counted_digits(stream, {}, {}, {}, {})", array, i.first,
                                            place_text(m, i.other), most_elements(m, i))));
    else
        code.line(counted(m, i, fmt::format("msg_get_digits(stream, {}, {}, {})", array, i.first,
                                            most_elements(m, i))));
}

void unpacker::element(const wire_item &i, const std::string &index)
{
    const std::string to = fmt::format("{}[{}]", place_text(m, i.member), index);
    if (i.width == 0) {
        code.line(fmt::format("{}(&{}, stream);", codec_function(m, i.record_id, "unpack"), to));
        return;
    }
    const member     &field = place_member(m, i.member);
    const std::string enumeration = member_enum(m, field);
    const std::string bits = get_call(i.width) + (i.width == 32 ? "" : " & " + mask_text(i.width));
    code.line(enumeration.empty() ? fmt::format("{} = {};", to, bits)
                                  : fmt::format("{} = static_cast<{}>({});", to, enumeration, bits));
}

/// An array whose elements are read while there is something left.
void unpacker::elements(const wire_item &i)
{
    const std::string                  array = place_text(m, i.member);
    const std::string                  count = place_name(m, i.member) + "_read";
    const std::uint32_t                most = most_elements(m, i);
    const std::optional<std::uint32_t> bits = element_bits(m, i);
    const bool        whole = bits && (bounded || i.extent == wire_extent::to_end);
    const std::string more = whole ? fmt::format("msg_has_bits(stream, {})", *bits) : "stream->fr_size > 0";
    const std::string limit = i.extent == wire_extent::counted
                                  ? fmt::format("msg_at_most({}, {})", place_text(m, i.other), most)
                                  : std::to_string(most);
    code.line(fmt::format("std::uint32_t {} = 0;", count));
    code.open(fmt::format("while ({} < {} && {})", count, limit, more));
    if (i.is_pointer) {
        code.line(fmt::format("if (!msg_grow(&{}, &{}, {} + 1, {}, {{file_code, __LINE__}}))", array,
                              place_text(m, i.capacity), count, 4));
        code.line("    break;");
    }
    if (!bits) {
        code.line("msg_element one;");
        code.line("msg_begin_element(stream, &one);");
    }
    element(i, count);
    if (!bits) {
        code.line("if (!msg_end_element(stream, &one))");
        code.line("    break;");
    }
    code.line(fmt::format("{}++;", count));
    code.close();
    if (bits && i.extent == wire_extent::counted && !i.is_pointer) {
        code.line(fmt::format("if ({} > {})", place_text(m, i.other), most));
        code.line(fmt::format("    msg_pass_over(stream, (msg_bits({}, 32) - {}) * {});", place_text(m, i.other), most,
                              *bits));
    }
    code.line(counted(m, i, count));
}

/// Whether a bit ahead of a chained array tells that it has elements.
bool has_any_flag(const model &m, const std::vector<wire_item> &items, const std::string &count)
{
    return std::any_of(items.begin(), items.end(), [&](const wire_item &i) {
        return (i.kind == what::any && place_text(m, i.member) == count) || has_any_flag(m, i.items, count) ||
               has_any_flag(m, i.otherwise, count);
    });
}

std::string unpacker::first_follows(const wire_item &i) const
{
    const std::string count = place_text(m, i.other);
    return has_any_flag(m, m.records[record_id].wire->items, count) ? count + " != 0" : "true";
}

void unpacker::grow(const wire_item &i, const std::string &count)
{
    if (!i.is_pointer)
        return;
    code.line(fmt::format("if (!msg_grow(&{}, &{}, {} + 1, {}, {{file_code, __LINE__}}))", place_text(m, i.member),
                          place_text(m, i.capacity), count, 4));
    code.line("    break;");
}

void unpacker::chained(const wire_item &i)
{
    const std::string count = place_name(m, i.member) + "_read";
    const std::string more = place_name(m, i.member) + "_follow";
    code.line(fmt::format("std::uint32_t {} = 0;", count));
    code.line(fmt::format("bool {} = {};", more, first_follows(i)));
    code.open(fmt::format("while ({} && {} < {} && stream->fr_size > 0)", more, count, most_elements(m, i)));
    grow(i, count);
    code.line(fmt::format("{} = per_get_8(stream, 1) == 0;", more));
    element(i, count);
    code.line(fmt::format("{}++;", count));
    code.close();
    code.line(counted(m, i, count));
}

/// As `chained`, but the bit stands behind the element, and is 1 where another follows.
void unpacker::linked(const wire_item &i)
{
    const std::string count = place_name(m, i.member) + "_read";
    const std::string more = place_name(m, i.member) + "_follow";
    code.line(fmt::format("std::uint32_t {} = 0;", count));
    code.line(fmt::format("bool {} = {};", more, first_follows(i)));
    code.open(fmt::format("while ({} && {} < {} && stream->fr_size > 0)", more, count, most_elements(m, i)));
    grow(i, count);
    element(i, count);
    code.line(fmt::format("{}++;", count));
    code.line(fmt::format("{} = msg_has_bits(stream, 1) && per_get_8(stream, 1) != 0;", more));
    code.close();
    code.line(counted(m, i, count));
}

void unpacker::fixed_array(const wire_item &i)
{
    const std::optional<std::uint32_t> bits = element_bits(m, i);
    if (bits)
        guard(*bits * i.count);
    if (i.octets) {
        code.line(fmt::format("per_get_octets(stream, {}, {});", octets_text(m, i.member, false), i.count));
        return;
    }
    code.line(fmt::format("for (std::uint32_t n = 0; n < {}; n++)", i.count));
    ++code.level;
    element(i, "n");
    --code.level;
}

void unpacker::array(const wire_item &i)
{
    if (i.bcd)
        digits(i);
    else if (i.extent == wire_extent::fixed)
        fixed_array(i);
    else if (i.extent == wire_extent::chained)
        chained(i);
    else if (i.extent == wire_extent::linked)
        linked(i);
    else if (i.octets)
        octets(i);
    else
        elements(i);
}

// ------------------------------------------------------------------------------------------------ items

void unpacker::choice(const wire_item &i)
{
    code.open(fmt::format("switch (static_cast<std::uint32_t>({}))", place_text(m, i.other)));
    for (const wire_item &branch : i.items) {
        --code.level;
        code.line(fmt::format("case {}:", branch.value));
        ++code.level;
        items(lay_unpacking(m, {branch}));
        code.line("break;");
    }
    --code.level;
    code.line("default:");
    ++code.level;
    code.line("break;");
    code.close();
}

void unpacker::group(const wire_item &i)
{
    code.open(fmt::format("if ({})", conditions_text(m, i.conditions)));
    items(i.items);
    if (!i.otherwise.empty()) {
        --code.level;
        code.open("} else");
        items(i.otherwise);
    }
    code.close();
}

/// The items of a bounded part: one of them in place, several in a function that ends where nothing is left.
void unpacker::block_content(const wire_item &i)
{
    if (i.items.size() == 1 && i.items[0].kind == what::array && i.items[0].extent != wire_extent::fixed) {
        item(i.items[0]);
        return;
    }
    content_function(i, true);
    code.line(fmt::format("{}(value, stream);", content_name(m, record_id, i)));
}

/// The items of a part as a function of their own.
void unpacker::content_function(const wire_item &i, bool is_bounded)
{
    std::string body;
    unpacker    inner{m, record_id, {body, 1}, parts, is_bounded};
    inner.items(i.items);
    put(parts, R"(

static void $function$($type$ *value, unpack_info_struct *stream)
{
)", {{"function", content_name(m, record_id, i)}, {"type", record_name(m, record_id)}});
    parts += (inner.needs_word ? std::string(word_declaration) : "") + body + "}\n";
}

/// A content is read through a copy that is filled up with zeros.
void unpacker::window(const wire_item &i)
{
    const std::string member = place_text(m, i.member);
    content_function(i, false);
    if (i.keeps)
        code.line(fmt::format("{} = msg_at_most(msg_left(stream), msg_window::room) & {};", member,
                              mask_text(member_bits(m, place_member(m, i.member)))));
    code.line(fmt::format("msg_window {}_window;", i.name));
    code.line(fmt::format("unpack_info_struct {0}_inside = msg_open_window(stream, &{0}_window, {1}{2});", i.name,
                          i.keeps ? "8u * " : "", member));
    code.line(fmt::format("{}(value, &{}_inside);", content_name(m, record_id, i), i.name));
}

/// A content that may be cut short anywhere is packed to the length that it had.
void unpacker::keep_length(const wire_place &trim)
{
    if (!trim.steps.empty())
        code.line(fmt::format("{} = part.octets & {};", place_text(m, trim),
                              mask_text(member_bits(m, place_member(m, trim)))));
}

void unpacker::block(const wire_item &i)
{
    code.open(fmt::format("if (msg_part part; msg_open_{}(stream, &part))", i.width));
    keep_length(i.trim);
    block_content(i);
    code.line("msg_close(stream, &part);");
    code.close();
}

void unpacker::item(const wire_item &i)
{
    switch (i.kind) {
    case what::word: word(i); break;
    case what::low_high: {
        guard(1);
        wire_item bit = i;
        bit.kind = what::field;
        field(bit, "msg_get_low_high(stream) & 0x01");
        break;
    }
    case what::derive:
        code.line(fmt::format("{} = {};", place_text(m, i.member), conditions_text(m, i.conditions)));
        break;
    case what::look: {
        const std::string mask = i.width == 32 ? "" : " & " + mask_text(i.width);
        wire_item         bits = i;
        bits.kind = what::field;
        field(bits, fmt::format("msg_look(stream, {}, {}){}", i.value, i.width, mask));
        break;
    }
    case what::record:
        guard(m.records[i.record_id].wire->bits.value_or(0));
        code.line(fmt::format("{}(&{}, stream);", codec_function(m, i.record_id, "unpack"), place_text(m, i.member)));
        break;
    case what::choice: choice(i); break;
    case what::array: array(i); break;
    case what::group: group(i); break;
    case what::block: block(i); break;
    case what::window: window(i); break;
    case what::align: code.line("msg_get_align(stream);"); break;
    case what::field:
    case what::constant:
    case what::presence:
    case what::any: break; // in words
    }
}

void unpacker::items(const std::vector<wire_item> &list)
{
    for (const wire_item &i : list)
        item(i);
}

// ------------------------------------------------------------------------------------------------ ahead of the reads

void unpacker::reset(const std::string &place, std::vector<std::string> &seen)
{
    if (std::find(seen.begin(), seen.end(), place) != seen.end())
        return;
    seen.push_back(place);
    code.line(fmt::format("{} = 0;", place));
}

/// Counts, presence members and unions with memory of what may stay unread.
void unpacker::resets(const std::vector<wire_item> &list, std::vector<std::string> &seen)
{
    for (const wire_item &i : list) {
        if (i.kind == what::presence || i.kind == what::derive)
            reset(place_text(m, i.member), seen);
        if (i.kind == what::array && i.extent != wire_extent::fixed)
            reset(place_text(m, i.other), seen);
        if (i.kind == what::choice) {
            const auto owns = [&](const wire_item &branch) {
                return branch.kind == what::record && m.records[branch.record_id].wire->owns;
            };
            if (std::none_of(i.items.begin(), i.items.end(), owns))
                continue;
            put_choice_release(code, m, i); // what an earlier unpack has left
            code.line(fmt::format("dll_info_version.memset(&{0}, 0, sizeof {0});", place_text(m, i.member)));
        }
        if (i.kind != what::choice) {
            resets(i.items, seen);
            resets(i.otherwise, seen);
        }
    }
}

// ------------------------------------------------------------------------------------------------ optional elements

void unpacker::option(const wire_option &o, bool first)
{
    if (!first) {
        --code.level;
        code.open(fmt::format("}} else if (msg_takes(&options, {}, &{}))", o.order, place_text(m, o.present)));
    } else {
        code.open(fmt::format("if (msg_takes(&options, {}, &{}))", o.order, place_text(m, o.present)));
    }
    items(lay_unpacking(m, o.items));
}

/// The lines of one identifier: the first that is in order takes the element.
void unpacker::options_of(const std::vector<const wire_option *> &same)
{
    const wire_option &o = *same.front();
    if (o.half)
        code.line("per_pass(stream, 4);");
    else
        code.line("msg_step(stream);");
    if (same.size() == 1 && o.bare) {
        code.line(fmt::format("if (!msg_takes(&options, {}, &{}))", o.order, place_text(m, o.present)));
        code.line("    msg_skip_bare(&options, stream);");
        code.line("break;");
        return;
    }
    bool first = true;
    for (const wire_option *one : same) {
        option(*one, first);
        first = false;
    }
    --code.level;
    code.open("} else");
    if (o.half)
        code.line("per_pass(stream, 4);");
    if (o.bare)
        code.line("msg_skip_bare(&options, stream);");
    else if (o.length_width != 0)
        code.line(fmt::format("msg_skip_{}(&options, stream);", o.length_width));
    else
        code.line(fmt::format("msg_skip_fixed(&options, stream, {});", o.half ? 0 : o.octets));
    code.close();
    code.line("break;");
}

void unpacker::options(const std::vector<wire_option> &all)
{
    std::map<std::uint32_t, std::vector<const wire_option *>> full, half;
    std::vector<std::uint32_t>                                order;
    for (const wire_option &o : all) {
        auto &same = (o.half ? half : full)[o.identifier];
        if (same.empty() && !o.half)
            order.push_back(o.identifier);
        same.push_back(&o);
    }
    const auto label = [&](const std::string &text) {
        --code.level;
        code.line(text);
        ++code.level;
    };
    const auto comment = [](const wire_option &o) {
        return o.clause.empty() ? o.name : fmt::format("{}, clause {}", o.name, o.clause);
    };
    code.line("msg_options options = {0, 0, 0};");
    code.open(fmt::format("while (stream->fr_size > 0 && options.taken < {})", all.size()));
    code.open("switch (*stream->frame)");
    for (const std::uint32_t identifier : order) {
        label(fmt::format("case 0x{:02X}: // {}", identifier, comment(*full[identifier].front())));
        options_of(full[identifier]);
    }
    label("default:");
    if (half.empty()) {
        code.line("msg_skip_unknown(&options, stream);");
        code.line("break;");
    } else {
        code.open("switch (*stream->frame >> 4)");
        for (const auto &[identifier, same] : half) {
            label(fmt::format("case 0x{:X}: // {}", identifier, comment(*same.front())));
            options_of(same);
        }
        label("default:");
        code.line("msg_skip_unknown(&options, stream);");
        code.line("break;");
        code.close();
        code.line("break;");
    }
    code.close();
    code.close();
    code.line("msg_end_options(stream, &options);");
}

/// One function: its head, its declarations and its body.
void put_function(std::string &out, const model &m, std::uint32_t record_id, std::string_view function,
                  const unpacker &u, const std::string &body, bool is_static)
{
    put(out, R"(

$static$void $function$($type$ *value, unpack_info_struct *stream)
{
)", {{"static", is_static ? "static " : ""}, {"function", function}, {"type", record_name(m, record_id)}});
    out += (u.needs_word ? std::string(word_declaration) : "") + body + "}\n";
}

} // namespace

void put_unpack(std::string &out, const model &m, std::uint32_t record_id)
{
    const wire_codec        &codec = *m.records[record_id].wire;
    const std::string        function = codec_function(m, record_id, "unpack");
    std::string              body, parts;
    unpacker                 u{m, record_id, {body, 1}, parts};
    std::vector<std::string> seen;
    for (const wire_option &o : codec.options) {
        u.reset(place_text(m, o.present), seen);
        u.resets(o.items, seen);
    }
    if (codec.length_width == 0) {
        for (const wire_item &i : codec.items) {
            u.resets(i.items, seen);
            u.resets(i.otherwise, seen);
            if (i.kind == what::choice)
                u.resets({i}, seen);
        }
        u.items(lay_unpacking(m, codec.items));
        if (!codec.options.empty())
            u.options(codec.options);
        out += parts;
        put_function(out, m, record_id, function, u, body, false);
        return;
    }
    u.resets(codec.items, seen);
    const std::string content = codec_function(m, record_id, "content");
    std::string       inside;
    unpacker          inner{m, record_id, {inside, 1}, parts, true};
    inner.items(lay_unpacking(m, codec.items));
    out += parts;
    put_function(out, m, record_id, content, inner, inside, true);
    u.code.open(fmt::format("if (msg_part part; msg_open_{}(stream, &part))", codec.length_width));
    u.keep_length(codec.trim);
    u.code.line(content + "(value, stream);");
    u.code.line("msg_close(stream, &part);");
    u.code.close();
    put_function(out, m, record_id, function, u, body, false);
}

} // namespace solvane::gen
