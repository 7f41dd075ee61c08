// Release functions: the arrays of a record, and of what it contains.
#include <algorithm>

#include <fmt/format.h>

#include "emit/codec_text.h"
#include "emit/record.h"
#include "emit/text.h"

namespace solvane::gen {
namespace {

using what = wire_item::what;

struct releaser {
    const model &m;
    code_block   code;

    bool owns(std::uint32_t record_id) const { return m.records[record_id].wire->owns; }
    void record(std::uint32_t record_id, const std::string &at);
    void array(const wire_item &i);
    void items(const std::vector<wire_item> &list);
};

void releaser::record(std::uint32_t record_id, const std::string &at)
{
    if (owns(record_id))
        code.line(fmt::format("{}(&{});", codec_function(m, record_id, "release"), at));
}

/// All elements that there is room for: those behind the count may hold what an earlier unpack has read.
void releaser::array(const wire_item &i)
{
    const std::string array = place_text(m, i.member);
    if (i.width == 0 && owns(i.record_id)) {
        const std::string room = i.is_pointer ? place_text(m, i.capacity) : std::to_string(i.count);
        code.line(fmt::format("for (std::uint32_t n = 0; n < {}; n++)", room));
        ++code.level;
        record(i.record_id, array + "[n]");
        --code.level;
    }
    if (i.is_pointer) {
        code.line(fmt::format("msg_release(&{}, &{}, {{file_code, __LINE__}});", array, place_text(m, i.capacity)));
        code.line(fmt::format("{} = 0;", place_text(m, i.other)));
    }
}

} // namespace

void put_choice_release(code_block &code, const model &m, const wire_item &i)
{
    const auto owning = [&](const wire_item &b) { return b.kind == what::record && m.records[b.record_id].wire->owns; };
    if (std::none_of(i.items.begin(), i.items.end(), owning))
        return;
    code.open(fmt::format("switch (static_cast<std::uint32_t>({}))", place_text(m, i.other)));
    for (const wire_item &branch : i.items) {
        if (!owning(branch))
            continue;
        --code.level;
        code.line(fmt::format("case {}:", branch.value));
        ++code.level;
        code.line(fmt::format("{}(&{});", codec_function(m, branch.record_id, "release"),
                              place_text(m, branch.member)));
        code.line("break;");
    }
    --code.level;
    code.line("default:");
    ++code.level;
    code.line("break;");
    code.close();
}

namespace {

void releaser::items(const std::vector<wire_item> &list)
{
    for (const wire_item &i : list) {
        if (i.kind == what::record)
            record(i.record_id, place_text(m, i.member));
        else if (i.kind == what::array)
            array(i);
        else if (i.kind == what::choice)
            put_choice_release(code, m, i);
        else {
            items(i.items);
            items(i.otherwise);
        }
    }
}

} // namespace

void put_release(std::string &out, const model &m, std::uint32_t record_id)
{
    const wire_codec &codec = *m.records[record_id].wire;
    put(out, R"(

void $function$($type$ *value)
{
)", {{"function", codec_function(m, record_id, "release")}, {"type", record_name(m, record_id)}});
    releaser r{m, {out, 1}};
    r.items(codec.items);
    for (const wire_option &o : codec.options)
        r.items(o.items);
    out += "}\n";
}

} // namespace solvane::gen
