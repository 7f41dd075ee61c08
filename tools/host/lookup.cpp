#include "lookup.h"

#include <fmt/format.h>

#include "failure.h"

namespace solvane::tools {

namespace {

[[noreturn]] void unknown_type(session &work, const std::string &name)
{
    suggestions near(name);
    for (const auto &in : work.domains()) {
        for (const std::string_view known : type_names(in)) {
            near.offer(known);
        }
    }
    const bool one = work.domains().size() == 1;
    throw failure(exit_findings,
                  fmt::format("no type {}{}{}", name, one ? fmt::format(" in domain {}", work.domains()[0].name) : "",
                              near.text()));
}

const rw_enum_row *enum_of(const domain &in, const char *tt_entity_info::*field)
{
    const char *name = in.row->*field;
    return name != nullptr && *name != '\0' ? find_enum(in, name) : nullptr;
}

} // namespace

std::vector<found_type> find_in_domains(session &work, const std::string &name)
{
    std::vector<found_type> found;
    for (const auto &in : work.domains()) {
        if (const auto use = find_type(in, name)) {
            found.push_back({&in, *use});
        }
    }
    if (found.empty()) {
        unknown_type(work, name);
    }
    return found;
}

const tt_peer_row &find_peer_row(session &work, const std::string &name)
{
    const tt_peer_table_struct &table = *work.started().peers;
    suggestions                 near(name);
    for (std::uint32_t i = 0; i < table.count; ++i) {
        if (name == table.rows[i].name) {
            return table.rows[i];
        }
        near.offer(table.rows[i].name);
    }
    throw failure(exit_findings, fmt::format("no codec for {}{}", name, near.text()));
}

std::optional<found_type> describing_type(session &work, const std::string &name)
{
    for (const auto &in : work.domains()) {
        if (const auto use = find_type(in, name)) {
            return found_type{&in, *use};
        }
    }
    return std::nullopt;
}

std::uint32_t number_or_literal(const domain &in, const char *tt_entity_info::*field, const std::string &text,
                                std::uint32_t limit)
{
    const auto number = parse_number(text);
    if (number && *number <= limit) {
        return static_cast<std::uint32_t>(*number);
    }
    suggestions        near(text);
    const rw_enum_row *row = enum_of(in, field);
    for (std::uint32_t i = 0; row != nullptr && i < row->no_literals; ++i) {
        near.offer(row->literals[i].name);
        if (text == row->literals[i].name && static_cast<std::uint32_t>(row->literals[i].value.num) <= limit) {
            return static_cast<std::uint32_t>(row->literals[i].value.num);
        }
    }
    throw failure(exit_usage, fmt::format("{} is no number up to {} and no literal of {} in domain {}{}", text, limit,
                                          in.row->*field, in.name, near.text()));
}

std::string literal_text(const domain &in, const char *tt_entity_info::*field, std::uint32_t value)
{
    const rw_enum_row    *row = enum_of(in, field);
    const rw_literal_row *literal = row != nullptr ? find_literal(*row, value) : nullptr;
    return literal != nullptr ? literal->name : "";
}

std::string other_domains(const std::vector<found_type> &found)
{
    std::string out;
    for (std::size_t i = 1; i < found.size(); ++i) {
        out += (i > 1 ? ", " : "") + std::string(found[i].in->name);
    }
    return out;
}

found_type find_record(session &work, const std::string &name)
{
    const auto found = find_in_domains(work, name);
    if (!resolve(*found[0].in, found[0].use).is_record()) {
        throw failure(exit_findings, fmt::format("{} is no structure", name));
    }
    if (found.size() > 1 && work.settings.verbose) {
        work.remark(fmt::format("{} of domain {}; also in {}", name, found[0].in->name, other_domains(found)));
    }
    return found[0];
}

} // namespace solvane::tools
