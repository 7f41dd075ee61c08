// Pack functions: the fields of a record as bits, in words of up to 32.
#include <fmt/format.h>

#include "emit/codec_text.h"
#include "emit/record.h"
#include "emit/text.h"

namespace solvane::gen {
namespace {

using what = wire_item::what;

/// The packing of one record.
struct packer {
    const model     &m;
    std::uint32_t    record_id;
    code_block       code;
    std::string_view file;   ///< as the message of an overflow names it
    std::string     &parts;  ///< functions for the windows inside

    void item(const wire_item &i);
    void items(const std::vector<wire_item> &list);
    void word(const wire_item &word);
    void array(const wire_item &i);
    void choice(const wire_item &i);
    void group(const wire_item &i);
    bool octets_behind_length(const wire_item &block);
    void block(const wire_item &i);
    void window(const wire_item &i);
    void bounded(const wire_item &block, const std::string &length);
    void option(const wire_option &o);
};

/// A part of a word, its bits at the low end.
std::string part_text(const model &m, const wire_item &i)
{
    switch (i.kind) {
    case what::constant: return fmt::format("0x{:02X}", i.value);
    case what::presence:
    case what::any:
        return fmt::format("msg_bits({} {} 0, 1)", place_text(m, i.member), i.inverse ? "==" : "!=");
    default:
        return i.minus == 0 ? fmt::format("msg_bits({}, {})", place_text(m, i.member), i.width)
                            : fmt::format("msg_bits({} - {}, {})", place_text(m, i.member), i.minus, i.width);
    }
}

std::string put_call(std::uint32_t width)
{
    return fmt::format("per_put_{}(stream, {}, ", (width + 7) / 8 * 8, width);
}

void packer::word(const wire_item &word)
{
    std::vector<std::string> terms;
    std::uint32_t            shift = word.width;
    for (const wire_item &i : word.items) {
        shift -= i.width;
        const bool zero = i.kind == what::constant && i.value == 0;
        if (!zero)
            terms.push_back(part_text(m, i) + (shift == 0 ? "" : fmt::format(" << {}", shift)));
    }
    if (terms.empty())
        terms.push_back("0");
    code.terms(put_call(word.width), terms, ");");
}

void packer::array(const wire_item &i)
{
    const std::string array = place_text(m, i.member);
    const std::string count = written_count(m, i);
    if (i.bcd) {
        code.line(fmt::format("msg_put_digits(stream, {}, {}, {});", array, i.first, count));
        return;
    }
    if (i.octets && i.extent != wire_extent::chained && i.extent != wire_extent::linked) {
        code.line(fmt::format("per_put_octets(stream, {}, {});", octets_text(m, i.member, true), count));
        return;
    }
    const bool chained = i.extent == wire_extent::chained;
    const bool linked = i.extent == wire_extent::linked;
    code.line(fmt::format("for (std::uint32_t n = 0; n < {}; n++){}", count, chained || linked ? " {" : ""));
    ++code.level;
    if (chained)
        code.line(fmt::format("per_put_8(stream, 1, n + 1 == {});", count));
    if (i.width == 0)
        code.line(fmt::format("{}(stream, &{}[n]);", codec_function(m, i.record_id, "pack"), array));
    else
        code.line(fmt::format("{}msg_bits({}[n], {}));", put_call(i.width), array, i.width));
    if (linked)
        code.line(fmt::format("per_put_8(stream, 1, n + 1 != {});", count));
    --code.level;
    if (chained || linked)
        code.line("}");
}

void packer::choice(const wire_item &i)
{
    code.open(fmt::format("switch (static_cast<std::uint32_t>({}))", place_text(m, i.other)));
    for (const wire_item &branch : i.items) {
        --code.level;
        code.line(fmt::format("case {}:", branch.value));
        ++code.level;
        items(lay_packing(m, {branch}));
        code.line("break;");
    }
    --code.level;
    code.line("default:");
    ++code.level;
    code.line("break;");
    code.close();
}

void packer::group(const wire_item &i)
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

/// An array of octets alone needs no look back: its count is the length.
bool packer::octets_behind_length(const wire_item &block)
{
    if (!block.trim.steps.empty() || block.items.size() != 1)
        return false;
    const wire_item &only = block.items[0];
    const bool       all = only.kind == what::array && only.octets && !only.bcd && only.extent == wire_extent::to_end;
    if (!all || member_bits(m, place_member(m, block.items[0].other)) > block.width)
        return false;
    code.line(fmt::format("{}{});", put_call(block.width), written_count(m, block.items[0])));
    array(block.items[0]);
    return true;
}

void packer::bounded(const wire_item &block, const std::string &length)
{
    const std::uint32_t                width = block.width;
    const std::optional<std::uint32_t> most = most_octets(m, block.items);
    const std::uint32_t                room = width == 8 ? 0xFF : 0xFFFF;
    code.line(fmt::format("const msg_length {} = msg_begin(stream, {});", length, width / 8));
    items(block.items);
    if (!block.trim.steps.empty())
        code.line(fmt::format("msg_trim_{}(stream, &{}, {});", width, length, place_text(m, block.trim)));
    const std::string end = fmt::format("msg_end_{}(stream, &{}, ", width, length);
    if (most && *most <= room) {
        code.line(end + "nullptr);");
        return;
    }
    code.line(end + text_literal(fmt::format("{}:", file)));
    code.line(std::string(end.size(), ' ') +
              text_literal(fmt::format("length of {} will not fit length field with width {}.\n", block.name, width)) +
              ");");
}

void packer::block(const wire_item &i)
{
    if (!octets_behind_length(i))
        bounded(i, cpp_identifier(i.name) + "_length");
}

/// A content is written to a copy, and of that as much as it had: what it never had is zero there.
void packer::window(const wire_item &i)
{
    std::string body;
    packer      inner{m, record_id, {body, 1}, file, parts};
    inner.items(i.items);
    put(parts, R"(

static void $function$(pack_info_struct *stream, const $type$ *value)
{
)", {{"function", content_name(m, record_id, i)}, {"type", record_name(m, record_id)}});
    parts += body + "}\n";
    const std::string member = place_text(m, i.member);
    code.line(fmt::format("msg_window {}_window;", i.name));
    code.line(fmt::format("pack_info_struct {0}_inside = msg_begin_window(&{0}_window);", i.name));
    code.line(fmt::format("{}(&{}_inside, value);", content_name(m, record_id, i), i.name));
    const std::string bits = i.keeps ? fmt::format("{0} != 0 ? 8u * {0} : ({1}_inside.bits + 7) & ~7u", member, i.name)
                                     : member;
    code.line(fmt::format("msg_put_window(stream, &{}_window, {});", i.name, bits));
}

void packer::item(const wire_item &i)
{
    switch (i.kind) {
    case what::word: word(i); break;
    case what::low_high: code.line(fmt::format("msg_put_low_high(stream, {});", place_text(m, i.member))); break;
    case what::record:
        code.line(fmt::format("{}(stream, &{});", codec_function(m, i.record_id, "pack"), place_text(m, i.member)));
        break;
    case what::choice: choice(i); break;
    case what::array: array(i); break;
    case what::group: group(i); break;
    case what::block: block(i); break;
    case what::window: window(i); break;
    case what::align: code.line("msg_put_align(stream);"); break;
    case what::derive:
    case what::look:
    case what::field:
    case what::constant:
    case what::presence:
    case what::any: break; // in words
    }
}

void packer::items(const std::vector<wire_item> &list)
{
    for (const wire_item &i : list)
        item(i);
}

void packer::option(const wire_option &o)
{
    wire_item identifier;
    identifier.kind = what::constant;
    identifier.width = o.half ? 4 : 8;
    identifier.value = o.identifier;
    std::vector<wire_item> all = {identifier};
    all.insert(all.end(), o.items.begin(), o.items.end());
    code.open(fmt::format("if ({})", place_text(m, o.present)));
    items(lay_packing(m, all));
    code.close();
}

} // namespace

void put_pack(std::string &out, const model &m, std::uint32_t record_id, std::string_view file)
{
    const wire_codec &codec = *m.records[record_id].wire;
    std::string       body, parts;
    packer            p{m, record_id, {body, 1}, file, parts};
    const std::vector<wire_item> list = lay_packing(m, codec.items);
    if (codec.length_width == 0) {
        p.items(list);
    } else if (codec.bits) {
        wire_item whole;
        whole.kind = what::block;
        whole.width = codec.length_width;
        whole.items = codec.items;
        p.items(lay_packing(m, {whole}));
    } else {
        wire_item whole;
        whole.kind = what::block;
        whole.width = codec.length_width;
        whole.name = codec.length_name;
        whole.trim = codec.trim;
        whole.items = list;
        if (!p.octets_behind_length(whole))
            p.bounded(whole, "length");
    }
    for (const wire_option &o : codec.options)
        p.option(o);
    out += parts;
    put(out, R"(

void $function$(pack_info_struct *stream, const $type$ *value)
{
)", {{"function", codec_function(m, record_id, "pack")}, {"type", record_name(m, record_id)}});
    out += body + "}\n";
}

} // namespace solvane::gen
