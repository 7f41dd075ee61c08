// The trace decoders: one walk over a format, and the two layouts that its arguments come in.
//
// A format is plain text with conversions.  A conversion runs from `%` to the first letter of the layout's set;
// whatever stands between, be it flags or words of plain text, belongs to it.  The layout then says how the next
// argument becomes text.
#include "tsc_decode.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "tsc_format.h"
#include "tt_assert.h"

namespace {

constexpr char unknown_id[] = "ERROR: can not find in tsc_db!!!";
constexpr char invalid_data[] = "ERROR: invalid trace id integer data!!!";
constexpr char too_few_arguments[] = " -- ERROR: arg_num is not match!!! -- ";

constexpr tsc_trace_info      unknown_info = {TSC_NO_MODULE, nullptr, nullptr, 0};
constexpr tsc_trace_full_info unknown_full_info = {nullptr, 0, TSC_NO_MODULE, nullptr, nullptr, 0};

/// The one text buffer.  A result of the formatter is written before the line's length is tested, and the mark of
/// missing arguments goes behind a line of any permitted length: there is room for either.
constexpr std::uint32_t line_reserve = TSC_RESULT_MAX;
static_assert(sizeof too_few_arguments <= line_reserve);
char line_text[TSC_LINE_SIZE + line_reserve];

/// The line so far; its length is always below TSC_LINE_SIZE.
struct trace_line {
    std::uint32_t length;
    std::uint32_t no_missing; /* conversions for which there was no argument */
};

/// What is left of a trace's arguments, in octets.
struct trace_arguments {
    const std::uint8_t *next;
    std::uint32_t       left;
};

/// Which octets end the scan behind a `%`, and how the next argument, if any is left, becomes text.
struct trace_layout {
    std::array<bool, 256> ends_scan;
    void (*put_argument)(trace_line *line, trace_arguments *arguments, const char *conversion, std::size_t length);
};

void grow_line(trace_line *line, std::size_t count)
{
    tt_assert(count < TSC_LINE_SIZE - line->length, "line->length + count < TSC_LINE_SIZE", TSC_UNIT, __LINE__);
    line->length += static_cast<std::uint32_t>(count);
}

/// Blocks of 16, the last one laid over the end of the one before it: for stretches of this length that is twice
/// as fast as a call.
void copy_text(char *out, const char *text, std::size_t count)
{
    constexpr std::size_t block = 16;
    if (count < block) {
        while (count-- != 0)
            *out++ = *text++;
        return;
    }
    const std::size_t last = count - block;
    for (std::size_t done = 0; done < last; done += block)
        std::memcpy(out + done, text + done, block);
    std::memcpy(out + last, text + last, block);
}

void put_text(trace_line *line, const char *text, std::size_t count)
{
    char *const out = line_text + line->length;
    grow_line(line, count);
    copy_text(out, text, count);
}

void put_character(trace_line *line, char character)
{
    put_text(line, &character, 1);
}

/// String layout: the next argument text, to its 0x01 or to the end.  Not more is looked at than a line can take.
void put_field(trace_line *line, trace_arguments *arguments, const char *, std::size_t)
{
    const auto *const   field = reinterpret_cast<const char *>(arguments->next);
    const std::uint32_t reach = std::min(arguments->left, TSC_LINE_SIZE);
    const void *const   end = std::memchr(field, 0x01, reach);
    const auto count = end != nullptr ? static_cast<std::uint32_t>(static_cast<const char *>(end) - field) : reach;
    put_text(line, field, count);
    const std::uint32_t used = end != nullptr ? count + 1 : count;
    arguments->next += used;
    arguments->left -= used;
}

/// Integer layout: the next word, through the formatter.
void put_word(trace_line *line, trace_arguments *arguments, const char *conversion, std::size_t length)
{
    tt_assert(length <= TSC_CONVERSION_MAX, "length <= TSC_CONVERSION_MAX", TSC_UNIT, __LINE__);
    std::uint32_t word;
    std::memcpy(&word, arguments->next, sizeof word);
    arguments->next += sizeof word;
    arguments->left -= static_cast<std::uint32_t>(sizeof word);
    grow_line(line, tsc_format_word(line_text + line->length, {conversion, length}, word));
}

constexpr std::array<bool, 256> scan_ends(const char *letters)
{
    std::array<bool, 256> ends{};
    ends[0] = true;
    ends[static_cast<unsigned char>('%')] = true;
    for (; *letters != 0; ++letters)
        ends[static_cast<unsigned char>(*letters)] = true;
    return ends;
}

constexpr trace_layout string_layout = {scan_ends("CXcdiopsux"), put_field};
constexpr trace_layout integer_layout = {scan_ends("CXcdiopux"), put_word};

const char *end_of_conversion(const char *text, const trace_layout &layout)
{
    while (!layout.ends_scan[static_cast<unsigned char>(*text)])
        ++text;
    return text;
}

/// Nothing is put out for a conversion that the format's end cuts off.
void put_format(trace_line *line, const char *format, const trace_layout &layout, trace_arguments *arguments)
{
    for (;;) {
        const char *const percent = strchrnul(format, '%');
        put_text(line, format, static_cast<std::size_t>(percent - format));
        if (*percent == 0)
            return;
        const char *const end = end_of_conversion(percent + 1, layout);
        if (*end == 0)
            return;
        format = end + 1;
        if (*end == '%') {
            put_character(line, '%');
        } else if (arguments->left == 0) {
            put_character(line, '?');
            ++line->no_missing;
        } else {
            layout.put_argument(line, arguments, percent, static_cast<std::size_t>(format - percent));
        }
    }
}

/// The mark of missing arguments goes to the end of the text as its reader sees it: a zero octet in an argument
/// text ends it early.
const char *make_line(const tsc_db_item_struct &item, const trace_layout &layout, trace_arguments arguments)
{
    trace_line line = {};
    put_format(&line, item.trace_format, layout, &arguments);
    line_text[line.length] = 0;
    if (line.no_missing != 0)
        std::memcpy(line_text + std::strlen(line_text), too_few_arguments, sizeof too_few_arguments);
    return line_text;
}

tsc_trace_info item_info(const tsc_table &table, const tsc_db_item_struct &item)
{
    const std::uint32_t mod_row = tsc_find_module(table, item.trace_id);
    const char *const   mod_name = mod_row == TSC_NO_MODULE ? nullptr : table.db_info->mod_list[mod_row].mod_name;
    return {mod_row, mod_name, item.file, item.line};
}

/// Fills the info record, when there is one, for the item of an id or for a missing one.
void tell_info(const tsc_table &table, const tsc_db_item_struct *item, tsc_trace_info *info)
{
    if (info != nullptr)
        *info = item != nullptr ? item_info(table, *item) : unknown_info;
}

std::uint32_t read_big_endian(const std::uint8_t *data)
{
    return static_cast<std::uint32_t>(data[0]) << 24 | static_cast<std::uint32_t>(data[1]) << 16 |
           static_cast<std::uint32_t>(data[2]) << 8 | data[3];
}

} // namespace

const char *tsc_decode_string_layout(const tsc_table &table, const std::uint8_t *data, tsc_trace_info *info)
{
    const tsc_db_item_struct *const item = tsc_find_item(table, read_big_endian(data));
    tell_info(table, item, info);
    if (item == nullptr)
        return unknown_id;
    return make_line(*item, string_layout, {data + 8, read_big_endian(data + 4)});
}

const char *tsc_decode_integer_layout(const tsc_table &table, const std::uint8_t *data, std::uint32_t length,
                                      tsc_trace_info *info)
{
    if (length == 0 || length % sizeof(std::uint32_t) != 0) {
        tell_info(table, nullptr, info);
        return invalid_data;
    }
    std::uint32_t trace_id;
    std::memcpy(&trace_id, data, sizeof trace_id);
    const tsc_db_item_struct *const item = tsc_find_item(table, trace_id);
    tell_info(table, item, info);
    if (item == nullptr)
        return unknown_id;
    return make_line(*item, integer_layout, {data + 4, length - 4});
}

bool tsc_look_up(const tsc_table &table, std::uint32_t trace_id, tsc_trace_info *info)
{
    const tsc_db_item_struct *const item = tsc_find_item(table, trace_id);
    tell_info(table, item, info);
    return item != nullptr;
}

bool tsc_look_up_full(const tsc_table &table, std::uint32_t trace_id, tsc_trace_full_info *full)
{
    const tsc_db_item_struct *const item = tsc_find_item(table, trace_id);
    if (full == nullptr)
        return item != nullptr;
    *full = unknown_full_info;
    if (item != nullptr) {
        const tsc_trace_info info = item_info(table, *item);
        *full = {item->trace_format, item->status, info.mod_row, info.mod_name, info.file, info.line};
    }
    return item != nullptr;
}
