#include <fmt/format.h>

#include "commands.h"
#include "failure.h"
#include "json_out.h"
#include "lookup.h"
#include "session.h"

namespace solvane::tools {

namespace {

struct enum_options {
    std::string name;
    std::string wanted;
};

const char *status_word(std::uint32_t status)
{
    return status == RW_VS_VALID_VAL ? "valid" : status == RW_VS_INVAL_ASSIGNED ? "not evaluated" : "not assigned";
}

bool fits(const rw_literal_row &literal, const std::string &wanted)
{
    const auto value = parse_word(wanted);
    return wanted.empty() || wanted == literal.name ||
           (value && literal.value.valstat == RW_VS_VALID_VAL &&
            literal.value.num == static_cast<std::int32_t>(*value));
}

void show(session &work, const domain &in, const std::string &name, const rw_enum_row &row,
          const rw_literal_row &literal)
{
    const bool valid = literal.value.valstat == RW_VS_VALID_VAL;
    if (!work.settings.json) {
        const std::string value = valid ? std::to_string(literal.value.num) : status_word(literal.value.valstat);
        work.line(work.paint(ink::number, fmt::format("{:>8}", value)) + "  " + work.paint(ink::name, literal.name));
        return;
    }
    json out = json_object("enum-literal");
    out["domain"] = json_enum(in.number, in.name);
    out["enum"] = name;
    out["tag"] = row.name;
    out["literal"] = json_enum(literal.value.num, literal.name);
    out["status"] = json_enum(literal.value.valstat, status_word(literal.value.valstat));
    work.line(json_line(out));
}

int run(session &work, const enum_options &options)
{
    const auto         found = find_in_domains(work, options.name);
    const domain      &in = *found[0].in;
    const rw_enum_row *row = find_enum(in, options.name);
    if (row == nullptr) {
        throw failure(exit_findings, fmt::format("{} is no enumeration", options.name));
    }
    bool        any = false;
    suggestions near(options.wanted);
    for (std::uint32_t i = 0; i < row->no_literals; ++i) {
        near.offer(row->literals[i].name);
        if (fits(row->literals[i], options.wanted)) {
            show(work, in, options.name, *row, row->literals[i]);
            any = true;
        }
    }
    if (!any && !options.wanted.empty()) {
        work.finding(fmt::format("no literal {} in {}{}", options.wanted, options.name, near.text()));
    }
    return work.result();
}

} // namespace

command enum_command()
{
    const auto options = std::make_shared<enum_options>();
    return {
        "enum",
        "the literals of an enumeration",
        "",
        {{"enum RW_OFSZ_SEG_ENUM", "a literal a line, behind its value"},
         {"enum sdi_entity_enum 8", "the literals of a value: there can be several"},
         {"enum sdi_entity_enum ENTITY_STACK", "the value of a literal"}},
        {{"NAME", "the enumeration, or a typedef of it", &options->name},
         {"LITERAL", "only this literal or this value", &options->wanted, false}},
        {},
        [options](session &work) { return run(work, *options); },
    };
}

} // namespace solvane::tools
