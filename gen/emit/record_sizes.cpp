// `<schema>_record_sizes.cpp`: sizes that an independent source tells of the records of a schema, held against the
// compiler's.
#include <algorithm>

#include "emit/emit.h"
#include "emit/text.h"

namespace solvane::gen {

namespace {

bool has_sizes(const model &m, std::uint32_t schema)
{
    return std::ranges::any_of(m.codecs.codecs, [&](const per::codec &c) {
        return c.schema == schema && c.lp64_size != 0;
    });
}

std::string sizes_source(const model &m, std::uint32_t schema)
{
    std::string out;
    put_head(out, "Sizes of the records of the schema " + m.codecs.schemas[schema].name + ".", "a table of sizes");
    for (const per::unit_codecs &unit : m.codecs.units)
        if (unit.schema == schema)
            put(out, "#include \"$stem$.h\"\n", {{"stem", m.units[unit.unit].stem}});
    out += R"(
#define HAS_SIZE(type, ilp32, lp64) static_assert(sizeof(type) == (sizeof(void *) == 4 ? ilp32 : lp64))

)";
    for (const per::codec &c : m.codecs.codecs)
        if (c.schema == schema && c.lp64_size != 0)
            put(out, "HAS_SIZE($type$, $ilp32$, $lp64$);\n",
                {{"type", c.name},
                 {"ilp32", std::to_string(c.ilp32_size)},
                 {"lp64", std::to_string(c.lp64_size)}});
    return out;
}

} // namespace

void emit_record_sizes(const model &m, std::vector<output_file> &files)
{
    for (std::uint32_t schema = 0; schema < m.codecs.schemas.size(); ++schema)
        if (has_sizes(m, schema))
            files.push_back({"production/" + m.codecs.schemas[schema].name + "_record_sizes.cpp",
                             sizes_source(m, schema)});
}

} // namespace solvane::gen
