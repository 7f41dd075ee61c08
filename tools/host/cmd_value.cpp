#include <fmt/format.h>

#include "commands.h"
#include "failure.h"
#include "json_out.h"
#include "layout.h"
#include "lookup.h"
#include "session.h"
#include "words.h"

namespace solvane::tools {

namespace {

struct value_options {
    std::string                  structure;
    std::string                  field;
    std::string                  value;
    std::optional<std::uint64_t> selector;
};

/// What is known of a value: the literal of the field's enumeration, and words.
struct meaning {
    std::string literal;
    std::string words;
    std::string comment;
};

/* The domains whose dictionary or value texts know the structure; a text can exist without a type. */
std::vector<const domain *> domains_with(session &work, const std::string &structure)
{
    std::vector<const domain *> found;
    for (const auto &in : work.domains()) {
        const bool described = work.started().info->db_struct_known(in.number, structure.c_str()) != 0;
        if (described || find_type(in, structure)) {
            found.push_back(&in);
        }
    }
    return found;
}

const rw_member_row *member_of(const domain &in, const std::string &structure, const std::string &field)
{
    const auto use = find_type(in, structure);
    const auto type = use ? resolve(in, *use) : resolved_type();
    if (!type.is_record()) {
        return nullptr;
    }
    const rw_struct_row &row = struct_row(in, type);
    for (std::uint32_t i = 0; i < row.no_members; ++i) {
        if (field == row.members[i].name) {
            return &row.members[i];
        }
    }
    return nullptr;
}

bool knows_field(session &work, const domain &in, const value_options &options)
{
    const auto *described = description_of(work.started(), in, options.structure);
    return member_of(in, options.structure, options.field) != nullptr ||
           (described != nullptr && field_of(*described, options.field) != nullptr);
}

[[noreturn]] void unknown_field(session &work, std::span<const domain *const> in, const value_options &options)
{
    suggestions near(options.field);
    for (const domain *each : in) {
        const auto use = find_type(*each, options.structure);
        const auto type = use ? resolve(*each, *use) : resolved_type();
        for (std::uint32_t i = 0; type.is_record() && i < struct_row(*each, type).no_members; ++i) {
            near.offer(struct_row(*each, type).members[i].name);
        }
        const auto *described = description_of(work.started(), *each, options.structure);
        for (std::uint32_t i = 0; described != nullptr && i < described->no_fields; ++i) {
            near.offer(described->fields[i].name);
        }
    }
    throw failure(exit_findings, fmt::format("no field {} in {}{}", options.field, options.structure, near.text()));
}

meaning meaning_of(session &work, const domain &in, const value_options &options, std::uint32_t value)
{
    const auto   &info = *work.started().info;
    const char   *structure = options.structure.c_str();
    const char   *field = options.field.c_str();
    meaning       out;
    if (options.selector) {
        const auto  selector = static_cast<std::uint32_t>(*options.selector);
        const char *text = info.db_field_case_value_text(in.number, structure, field, selector, value);
        out.words = text != nullptr ? text : "";
    } else {
        out.words = words_of(work.started(), in, structure, field, value);
    }
    if (const rw_member_row *member = member_of(in, options.structure, options.field);
        member != nullptr && member->kind != RW_KIND_BIT_FIELD) {
        const auto            type = resolve(in, use_of(*member));
        const rw_literal_row *literal =
            type.kind == RW_KIND_ENUM ? find_literal(enum_row(in, type), static_cast<std::int32_t>(value)) : nullptr;
        out.literal = literal != nullptr ? literal->name : "";
    }
    const char *comment = info.db_field_comment(in.number, structure, field);
    out.comment = comment != nullptr ? comment : "";
    return out;
}

void show(session &work, const domain &in, const value_options &options, std::uint32_t value, const meaning &found)
{
    if (work.settings.json) {
        json out = json_object("value");
        out["domain"] = json_enum(in.number, in.name);
        out["struct"] = options.structure;
        out["field"] = options.field;
        if (options.selector) {
            out["case"] = *options.selector;
        }
        out["value"] = json_enum(value, found.words);
        out["literal"] = found.literal;
        out["comment"] = found.comment;
        work.line(json_line(out));
        return;
    }
    std::string text = found.literal.empty() ? "" : work.paint(ink::name, found.literal);
    text += found.words.empty() ? "" : (text.empty() ? "" : "  ") + work.paint(ink::text, found.words);
    text = text.empty() ? "no words" : text;
    text += found.comment.empty() ? "" : "  " + work.paint(ink::note, found.comment);
    work.line(work.paint(ink::module, in.name) + " " + options.structure + "." +
              work.paint(ink::name, options.field) + " = " + work.paint(ink::number, std::to_string(value)) + "  " +
              text);
}

int run(session &work, const value_options &options)
{
    const auto value = parse_word(options.value);
    if (!value || (options.selector && *options.selector > 0xFFFFFFFFU)) {
        throw failure(exit_usage, fmt::format("{} is no 32-bit number",
                                              value ? std::to_string(*options.selector) : options.value));
    }
    const auto known = domains_with(work, options.structure);
    if (known.empty()) {
        find_in_domains(work, options.structure); /* tells what was perhaps meant */
    }
    bool any = false;
    bool words = false;
    for (const domain *in : known) {
        if (!knows_field(work, *in, options)) {
            continue;
        }
        const meaning found = meaning_of(work, *in, options, *value);
        const bool    means = !found.words.empty() || !found.literal.empty();
        if (any && !means) {
            continue; /* one line that says nothing is enough */
        }
        show(work, *in, options, *value, found);
        any = true;
        words = words || means;
    }
    if (!any) {
        unknown_field(work, known, options);
    }
    if (!words) {
        work.note_finding();
    }
    return work.result();
}

} // namespace

command value_command()
{
    const auto options = std::make_shared<value_options>();
    return {
        "value",
        "what a value of a field means in words",
        "Exit code 1 when there are no words for the value.  Without --case the unconditional words are given, or\n"
        "those of every case that knows the value.",
        {{"value qos_struct delay_class 7", "\"Reserved\""},
         {"value cc_peer_cause_struct value 129 --case 1", "words that hold for one value of a selector"}},
        {{"STRUCT", "structure", &options->structure},
         {"FIELD", "one of its fields", &options->field},
         {"VALUE", "number", &options->value}},
        {{"--case", "N", "value of the selector that the words depend on", &options->selector}},
        [options](session &work) { return run(work, *options); },
    };
}

} // namespace solvane::tools
