// The codecs of elements and messages: for a unit `stem` the header `<stem>_codec.h`, the source `<stem>_pack.cpp` and
// the source `tt_<stem>_rest.cpp`.
//
// The pack source holds what the stack itself sends, the rest source what remains for a tool: the packing of what only
// the network sends, all unpacking, all releasing.
#include <algorithm>

#include <fmt/format.h>

#include "emit/codec_text.h"
#include "emit/emit.h"
#include "emit/record.h"
#include "emit/text.h"

namespace solvane::gen {
namespace {

std::vector<std::uint32_t> codecs_of(const model &m, const unit &u)
{
    std::vector<std::uint32_t> ids;
    for (const definition &d : u.definitions) {
        if (d.kind == definition::what::record && m.records[d.id].wire)
            ids.push_back(d.id);
    }
    return ids;
}

void put_declarations(std::string &out, const model &m, std::uint32_t id)
{
    const std::string type = record_name(m, id);
    put(out, R"(

void $pack$(pack_info_struct *stream, const $type$ *value);
void $unpack$($type$ *value, unpack_info_struct *stream);
)", {{"pack", codec_function(m, id, "pack")}, {"unpack", codec_function(m, id, "unpack")}, {"type", type}});
    if (m.records[id].wire->owns)
        put(out, "void $release$($type$ *value);\n", {{"release", codec_function(m, id, "release")}, {"type", type}});
}

std::string codec_header(const model &m, const unit &u, const std::vector<std::uint32_t> &ids)
{
    std::string out;
    put_head(out, "Codecs of the elements and messages of " + u.stem + ".", u.path);
    put(out, R"(
//
//   pack     writes the structure's bits at the cursor; the caller owes the room
//   unpack   reads them into a structure that is cleared or holds what an earlier unpack left
//   release  gives back the arrays of a structure that was unpacked
#pragma once

#include "solvane/solvane.h"

#include "$stem$.h"
)", {{"stem", u.stem}});
    for (const std::uint32_t import : u.imports) {
        if (!codecs_of(m, m.units[import]).empty())
            put(out, "#include \"$stem$_codec.h\"\n", {{"stem", m.units[import].stem}});
    }
    for (const std::uint32_t id : ids)
        put_declarations(out, m, id);
    return out;
}

void put_includes(std::string &out, const unit &u)
{
    put(out, R"(
#include "$stem$_codec.h"

#include "msg_codec.h"
)", {{"stem", u.stem}});
}

std::string pack_source(const model &m, const unit &u, const std::vector<std::uint32_t> &ids)
{
    std::string out;
    put_head(out, "Packing of " + u.stem + ": what both sides and what the mobile sends.", u.path);
    put_includes(out, u);
    for (const std::uint32_t id : ids) {
        if (m.records[id].wire->direction != wire_direction::downlink)
            put_pack(out, m, id, "obj\\gen\\production\\" + u.stem + "_pack");
    }
    return out;
}

std::string rest_source(const model &m, const unit &u, const std::vector<std::uint32_t> &ids)
{
    std::string out;
    put_head(out, "The rest of " + u.stem + ": unpacking, releasing, packing of what the network sends.", u.path);
    put_includes(out, u);
    const bool owns = std::any_of(ids.begin(), ids.end(), [&](std::uint32_t id) { return m.records[id].wire->owns; });
    if (owns)
        put(out, R"(

namespace {

constexpr std::uint16_t file_code = $code$; // of this file, in the tags of allocations

} // namespace
)", {{"code", std::to_string(&u - m.units.data())}});
    for (const std::uint32_t id : ids) {
        if (m.records[id].wire->direction == wire_direction::downlink)
            put_pack(out, m, id, "obj\\gen\\debug\\tt_" + u.stem + "_rest");
        put_unpack(out, m, id);
        if (m.records[id].wire->owns)
            put_release(out, m, id);
    }
    return out;
}

} // namespace

void emit_codecs(const model &m, std::vector<output_file> &files)
{
    for (const unit &u : m.units) {
        const std::vector<std::uint32_t> ids = codecs_of(m, u);
        if (ids.empty())
            continue;
        files.push_back({"production/" + u.stem + "_codec.h", codec_header(m, u, ids)});
        files.push_back({"production/" + u.stem + "_pack.cpp", pack_source(m, u, ids)});
        files.push_back({"debug/tt_" + u.stem + "_rest.cpp", rest_source(m, u, ids)});
    }
}

} // namespace solvane::gen
