// The output files of the PER codecs: which functions go where.
#include "emit/per.h"

#include <algorithm>

#include <fmt/format.h>

namespace solvane::gen::per {

namespace {

std::string head_of(std::string_view holds, const unit &u)
{
    std::string head;
    put_head(head, holds, u.path);
    return head;
}

/// The definition as the schema has it; of a nested type only where it stands.
void put_definition(std::string &out, const codec &c)
{
    out += '\n';
    if (c.is_nested) {
        gen::put(out, "// in $around$, $source$\n", {{"around", c.asn_name}, {"source", c.source}});
        return;
    }
    gen::put(out, "// $source$\n", {{"source", c.source}});
    std::string_view left = c.asn_text;
    while (!left.empty()) {
        const std::size_t end = std::min(left.find('\n'), left.size());
        std::string       line = "// " + std::string(left.substr(0, end));
        line.erase(line.find_last_not_of(" \t\r") + 1);
        out += line + "\n";
        left.remove_prefix(std::min(end + 1, left.size()));
    }
}

void put_declarations(std::string &out, const codec &c)
{
    gen::put(out, R"(
void          $name$_pack(pack_info_struct *stream, $name$ *value);
void          $name$_unpack($name$ *value, unpack_info_struct *stream);
std::uint32_t $name$_size($name$ *value);
int           $name$_print($name$ *value, AsnTextBuf *buffer, std::uint16_t indent);
void          $name$_free($name$ *value);
void          $name$_clear($name$ *value);
)", {{"name", c.name}});
    if (c.has_entry)
        gen::put(out, R"(
void          $name$_encode(pack_info_struct *stream, $name$ *value);
std::uint32_t $name$_decode($name$ *value, unpack_info_struct *stream);
)", {{"name", c.name}});
}

std::string header(const plan &p, const unit_codecs &u, const unit &file)
{
    std::string out = head_of("The codecs of " + file.stem + ".", file);
    gen::put(out, R"(
//
// pack, unpack, size, print, free, clear of each type: contracts in asn/per_codec.h and asn/asn_print.h.
#pragma once

#include "asn_print.h"
#include "per_codec.h"

#include "$stem$.h"
)", {{"stem", file.stem}});
    for (const std::uint32_t id : u.codecs) {
        put_definition(out, p.codecs[id]);
        put_declarations(out, p.codecs[id]);
    }
    return out;
}

using family = void (*)(code_text &out, const plan &p, const codec &c);

std::string source(const plan &p, const std::vector<unit> &units, const unit_codecs &u, std::string_view holds,
                   std::initializer_list<family> families)
{
    const unit &file = units[u.unit];
    std::string head = head_of(fmt::format("{} of {}.", holds, file.stem), file);
    gen::put(head, "#include \"$stem$_codec.h\"\n", {{"stem", file.stem}});
    if (!u.called.empty())
        head += '\n';
    for (const std::uint32_t id : u.called)
        gen::put(head, "#include \"$stem$_codec.h\"\n", {{"stem", units[id].stem}});
    code_text out(std::move(head));
    for (const std::uint32_t id : u.codecs) {
        const codec &c = p.codecs[id];
        out.gap();
        put_heading(out, c);
        for (const family &put : families) {
            if (put != *families.begin())
                out.gap();
            put(out, p, c);
        }
    }
    return out.take();
}

} // namespace

void emit_codecs(const plan &p, const std::vector<unit> &units, std::vector<output_file> &files)
{
    for (const unit_codecs &u : p.units) {
        const std::string path = "production/" + units[u.unit].stem;
        files.push_back({path + "_codec.h", header(p, u, units[u.unit])});
        files.push_back({path + "_pack.cpp", source(p, units, u, "pack and size", {put_pack, put_size})});
        files.push_back({path + "_unpack.cpp", source(p, units, u, "unpack", {put_unpack})});
        files.push_back({path + "_print.cpp", source(p, units, u, "print", {put_print})});
        files.push_back({path + "_free.cpp", source(p, units, u, "free and clear", {put_free, put_clear})});
    }
}

} // namespace solvane::gen::per
