#include "dictionary.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <unordered_set>

#include <fmt/format.h>

#include "failure.h"

namespace solvane::tools {

namespace {

constexpr int  most_typedefs = 64; /* deeper than any real chain; a loop is a broken dictionary */
constexpr char run_time_prefix[] = "TT_RTYPE_";

/* ORDER domains */
constexpr std::array<const char *, TT_NO_DOMAINS> domain_names = {"infrastructure", "stack", "gsm", "umts",
                                                                  "signal",         "lte",   "ims", "nr"};

[[noreturn]] void broken(const domain &in, const std::string &what)
{
    throw failure(exit_mismatch, fmt::format("broken dictionary of domain {}: {}", in.name, what));
}

template <class T> const T &row_at(const domain &in, std::span<const T> rows, std::uint32_t index, const char *what)
{
    if (index >= rows.size()) {
        broken(in, fmt::format("{} {} of {}", what, index, rows.size()));
    }
    return rows[index];
}

std::string_view text_of(const char *text)
{
    return text != nullptr ? std::string_view(text) : std::string_view();
}

/* Literals of the enumeration that numbers the domains, for --domain ENTITY_STACK. */
const rw_literal_row *entity_literal(const plugin &loaded, std::span<const domain> all, const std::string &wanted)
{
    if (loaded.info->entity_enum_name == nullptr) {
        return nullptr;
    }
    for (const auto &each : all) {
        const rw_enum_row *row = find_enum(each, loaded.info->entity_enum_name);
        for (std::uint32_t i = 0; row != nullptr && i < row->no_literals; ++i) {
            if (wanted == row->literals[i].name) {
                return &row->literals[i];
            }
        }
    }
    return nullptr;
}

[[noreturn]] void no_such_domain(std::span<const domain> all, const std::string &wanted)
{
    suggestions near(wanted);
    std::string known;
    for (const auto &each : all) {
        near.offer(each.name);
        known += (known.empty() ? "" : ", ") + std::string(each.name);
    }
    throw failure(exit_usage, fmt::format("no domain {}{} (domains: {})", wanted, near.text(), known));
}

} // namespace

std::span<const tt_msg_row> domain::messages() const
{
    const tt_msg_table *table = row->msg_table;
    return table != nullptr ? std::span(table->rows, table->count) : std::span<const tt_msg_row>();
}

std::vector<domain> domains_of(const plugin &loaded)
{
    std::vector<domain> all;
    const std::uint32_t rows = std::min<std::uint32_t>(loaded.info->no_entities, TT_NO_DOMAINS);
    for (std::uint32_t i = 0; i < rows; ++i) {
        const tt_entity_info &row = loaded.info->entity_info[i];
        if (row.valid == 1) {
            all.push_back(
                {static_cast<std::int32_t>(i), domain_names[i], &row, &loaded.info->tool_offsize->records[i]});
        }
    }
    return all;
}

std::string domain_name(std::uint32_t number)
{
    return number < domain_names.size() ? domain_names[number] : std::to_string(number);
}

std::vector<domain> chosen_domains(const plugin &loaded, const std::string &wanted)
{
    std::vector<domain> all = domains_of(loaded);
    if (wanted.empty()) {
        return all;
    }
    const rw_literal_row *literal = entity_literal(loaded, all, wanted);
    const auto            number = parse_number(wanted);
    for (const auto &each : all) {
        const bool by_number = number && *number == static_cast<std::uint64_t>(each.number);
        const bool by_literal = literal != nullptr && literal->value.num == each.number;
        if (by_number || by_literal || lower_case(wanted) == each.name) {
            return {each};
        }
    }
    no_such_domain(all, wanted);
}

type_use use_of(const rw_member_row &member)
{
    return {member.kind, text_of(member.type_name), member.type_index, member.rt_tag, {member.dims, member.no_dims}};
}

type_use use_of(const rw_type_row &row)
{
    return {row.kind, text_of(row.base_name), row.type_index, row.rt_tag, {row.dims, row.no_dims}};
}

type_use use_of(const domain &in, const rw_struct_row &row)
{
    return {row.kind, row.name, static_cast<std::uint32_t>(&row - in.types->structs), 0, {}};
}

std::optional<type_use> find_type(const domain &in, std::string_view name)
{
    for (std::uint32_t i = 0; i < in.types->no_types; ++i) {
        if (name == in.types->types[i].name) {
            return type_use{RW_KIND_TYPEDEF, in.types->types[i].name, i, in.types->types[i].rt_tag, {}};
        }
    }
    for (const auto &row : in.structs()) {
        if (name == row.name) {
            return use_of(in, row);
        }
    }
    for (std::uint32_t i = 0; i < in.types->no_enums; ++i) {
        if (name == in.types->enums[i].name) {
            return type_use{RW_KIND_ENUM, in.types->enums[i].name, i, 0, {}};
        }
    }
    return std::nullopt;
}

resolved_type resolve(const domain &in, const type_use &use)
{
    resolved_type out;
    type_use      now = use;
    for (int depth = 0;; ++depth) {
        if (depth == most_typedefs) {
            broken(in, fmt::format("the typedefs behind {} never end", use.name));
        }
        out.dims.insert(out.dims.end(), now.dims.begin(), now.dims.end());
        out.rt_tag = out.rt_tag != 0 ? out.rt_tag : now.rt_tag;
        if (now.kind != RW_KIND_TYPEDEF) {
            break;
        }
        now = use_of(row_at(in, in.type_rows(), now.index, "type row"));
    }
    out.kind = now.kind;
    out.name = now.name;
    out.index = now.index;
    return out;
}

const rw_struct_row &struct_row(const domain &in, const resolved_type &type)
{
    return row_at(in, in.structs(), type.index, "structure row");
}

const rw_enum_row &enum_row(const domain &in, const resolved_type &type)
{
    return row_at(in, in.enums(), type.index, "enumeration row");
}

std::uint32_t offsize_at(const domain &in, std::uint32_t index)
{
    if (in.types->offsize == nullptr) {
        broken(in, "it has no layout table");
    }
    return row_at(in, std::span(in.types->offsize, in.types->no_offsize), index, "layout entry");
}

std::uint32_t basic_size(const domain &in, std::uint32_t kind)
{
    const rw_bt_info *block = in.types->bt_info;
    if (block == nullptr || kind >= RW_BT_INDEX_SIZE || block->index[kind] >= RW_BT_PATTERN_MAX) {
        broken(in, fmt::format("no size for kind {}", kind));
    }
    return block->pattern[block->index[kind]];
}

bool little_endian(const domain &in)
{
    const rw_bt_info *block = in.types->bt_info;
    if (block == nullptr || block->index[RW_KIND_UNSIGNED_SHORT] + 2 >= RW_BT_PATTERN_MAX) {
        broken(in, "no test value in the basic-type block");
    }
    return block->pattern[block->index[RW_KIND_UNSIGNED_SHORT] + 1] == 2; /* 0x0102 as stored */
}

std::uint64_t size_of(const domain &in, const resolved_type &type, std::size_t from)
{
    if (from < type.dims.size()) {
        const rw_dim_row &dim = type.dims[from];
        return dim.dim_class == RW_PC_POINTERTO ? basic_size(in, RW_KIND_VOID)
                                                : offsize_at(in, dim.array_size_index);
    }
    switch (type.kind) {
    case RW_KIND_STRUCT:
    case RW_KIND_UNION: return offsize_at(in, struct_row(in, type).size_index);
    case RW_KIND_ENUM: return offsize_at(in, type.index);
    case RW_KIND_VOID: return 0;
    default: return basic_size(in, type.kind);
    }
}

std::vector<level> levels_of(const domain &in, const resolved_type &type)
{
    std::vector<level> out;
    for (std::size_t i = 0; i < type.dims.size(); ++i) {
        if (type.dims[i].dim_class == RW_PC_POINTERTO) {
            out.push_back({true, 0});
            continue;
        }
        const std::uint64_t whole = size_of(in, type, i);
        const std::uint64_t element = size_of(in, type, i + 1);
        if (element == 0 || whole % element != 0) {
            broken(in, fmt::format("an array of {} takes {} octets, its element {}", type.name, whole, element));
        }
        out.push_back({false, whole / element});
    }
    return out;
}

const char *kind_word(std::uint32_t kind)
{
    static constexpr std::array<const char *, 15> words = {
        "unsigned long", "long",        "unsigned int", "int",   "unsigned short", "short",   "unsigned char", "char",
        "signed char",   "struct",      "union",        "enum",  "typedef",        "void",    "bit-field"};
    return kind < words.size() ? words[kind] : "unknown";
}

const char *role_word(std::uint32_t role)
{
    static constexpr std::array<const char *, 10> words = {"plain", "pointer",  "count",   "array",    "struct",
                                                           "union", "selector", "unknown", "optional", "presence"};
    return role < words.size() ? words[role] : "unknown";
}

const rw_literal_row *find_literal(const rw_enum_row &row, std::int64_t value)
{
    for (std::uint32_t i = 0; i < row.no_literals; ++i) {
        if (row.literals[i].value.valstat == RW_VS_VALID_VAL && row.literals[i].value.num == value) {
            return &row.literals[i];
        }
    }
    return nullptr;
}

const rw_enum_row *find_enum(const domain &in, std::string_view name)
{
    const auto use = find_type(in, name);
    if (!use) {
        return nullptr;
    }
    const resolved_type type = resolve(in, *use);
    return type.kind == RW_KIND_ENUM && type.dims.empty() ? &enum_row(in, type) : nullptr;
}

const rw_rt_rule_row *find_rule(const domain &in, std::uint32_t selector, std::uint32_t tag)
{
    for (std::uint32_t i = 0; i < in.types->no_rt_rules; ++i) {
        const rw_rt_rule_row &rule = in.types->rt_rules[i];
        if (rule.key_len == 2 && rule.key[0] == selector && rule.key[1] == tag) {
            return &rule;
        }
    }
    return nullptr;
}

const rw_type_row *rule_type(const domain &in, const rw_rt_rule_row &rule)
{
    for (std::uint32_t i = 0; i < in.types->no_rt_types; ++i) {
        const rw_rt_type_row  &row = in.types->rt_types[i];
        const std::string_view name = text_of(row.name);
        if (row.rt_type != rule.rt_type || !name.starts_with(run_time_prefix)) {
            continue;
        }
        const auto use = find_type(in, name.substr(sizeof run_time_prefix - 1));
        return use && use->kind == RW_KIND_TYPEDEF ? &in.types->types[use->index] : nullptr;
    }
    return nullptr;
}

/* A list leads by its one ruled member to a node; the node's ruled members lead to the next node, whose type is the
 * one we came by, and to the element. */
std::optional<type_use> list_element(const domain &in, const resolved_type &type)
{
    if (type.kind != RW_KIND_STRUCT || !type.dims.empty() || type.rt_tag == 0) {
        return std::nullopt;
    }
    const auto ruled_types = [&](const resolved_type &owner) {
        const rw_struct_row             &row = struct_row(in, owner);
        std::vector<const rw_type_row *> found;
        for (std::uint32_t i = 0; i < row.no_members; ++i) {
            const auto &member = row.members[i];
            const auto *rule = member.has_rt_rule == 1 ? find_rule(in, member.rt_selector, owner.rt_tag) : nullptr;
            if (rule != nullptr && rule->length_func == nullptr) {
                found.push_back(rule_type(in, *rule));
            }
        }
        return found;
    };
    for (const rw_type_row *link : ruled_types(type)) {
        const auto node = link != nullptr ? resolve(in, use_of(*link)) : resolved_type();
        if (node.kind != RW_KIND_STRUCT) {
            continue;
        }
        for (const rw_type_row *behind : ruled_types(node)) {
            if (behind != nullptr && behind != link) {
                return use_of(*behind);
            }
        }
    }
    return std::nullopt;
}

std::vector<found_message> find_messages(std::span<const domain> in, std::string_view name_or_code)
{
    const auto                 code = parse_number(name_or_code);
    std::vector<found_message> found;
    for (const auto &each : in) {
        for (const auto &row : each.messages()) {
            if (code ? *code == row.msg_code : name_or_code == text_of(row.msg_name)) {
                found.push_back({&each, &row});
            }
        }
    }
    return found;
}

std::vector<std::string_view> type_names(const domain &in)
{
    std::vector<std::string_view>        names;
    std::unordered_set<std::string_view> known;
    const auto                           add = [&](const char *name) {
        if (known.insert(name).second) {
            names.emplace_back(name);
        }
    };
    std::for_each(in.type_rows().begin(), in.type_rows().end(), [&](const auto &row) { add(row.name); });
    std::for_each(in.structs().begin(), in.structs().end(), [&](const auto &row) { add(row.name); });
    std::for_each(in.enums().begin(), in.enums().end(), [&](const auto &row) { add(row.name); });
    return names;
}

} // namespace solvane::tools
