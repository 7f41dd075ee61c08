// `check`: holds the tables of a plug-in against the rules that every host relies on.
#include <algorithm>
#include <functional>
#include <map>
#include <set>

#include <fmt/format.h>

#include "commands.h"
#include "failure.h"
#include "json_out.h"
#include "layout.h"
#include "peer_message.h"
#include "session.h"
#include "words.h"

namespace solvane::tools {

namespace {

/// Counts what was looked at and tells what does not hold.
class checker {
public:
    explicit checker(session &work) : work_(work) {}

    void looked_at(const char *what, std::uint64_t count = 1) { counts_[what] += count; }

    void fault(const std::string &where, const std::string &what)
    {
        ++faults_;
        work_.note_finding();
        if (work_.settings.json) {
            json out = json_object("fault");
            out["where"] = where;
            out["fault"] = what;
            work_.line(json_line(out));
        } else {
            work_.line(work_.paint(ink::bad, where) + ": " + what);
        }
    }

    void demand(bool holds, const std::string &where, const std::string &what)
    {
        if (!holds) {
            fault(where, what);
        }
    }

    /// Runs a look at the tables that ends with `failure` where they are broken.
    void attempt(const std::string &where, const std::function<void()> &look)
    {
        try {
            look();
        } catch (const failure &broken) {
            fault(where, broken.what());
        }
    }

    void finish()
    {
        if (work_.settings.json) {
            json out = json_object("check");
            for (const auto &[what, count] : counts_) {
                std::string key = what;
                std::replace(key.begin(), key.end(), ' ', '_');
                out[key] = count;
            }
            out["faults"] = faults_;
            work_.line(json_line(out));
            return;
        }
        std::string out;
        for (const auto &[what, count] : counts_) {
            out.append(out.empty() ? "" : ", ").append(fmt::format("{} {}", count, what));
        }
        work_.line(fmt::format("{}: {}", out, faults_ == 0 ? "no fault" : fmt::format("{} faults", faults_)));
    }

private:
    session                             &work_;
    std::map<std::string, std::uint64_t> counts_;
    std::uint64_t                        faults_ = 0;
};

std::string place(const domain &in, std::string_view name)
{
    return fmt::format("{} {}", in.name, name);
}

/* A reference leads to a member of the role that answers it. */
void check_reference(checker &on, const domain &in, const rw_struct_row &row, const rw_member_row &member)
{
    if (row.kind == RW_KIND_UNION || member.ref == RW_NO_REF) {
        return;
    }
    const std::string where = place(in, fmt::format("{}.{}", row.name, member.name));
    if (member.ref >= row.no_members) {
        on.fault(where, fmt::format("refers to member {} of {}", member.ref, row.no_members));
        return;
    }
    const std::uint32_t found = row.members[member.ref].role;
    switch (member.role) {
    case RW_ROLE_POINTER: on.demand(found == RW_ROLE_COUNT, where, "is not counted by a counting member"); break;
    case RW_ROLE_UNION: on.demand(found == RW_ROLE_SELECTOR, where, "is not selected by a selector"); break;
    case RW_ROLE_ARRAY:
    case RW_ROLE_OPTIONAL: on.demand(found == RW_ROLE_PRESENCE, where, "has no presence flag"); break;
    default: on.fault(where, fmt::format("of role {} refers to a member", role_word(member.role)));
    }
}

void check_structs(checker &on, const domain &in)
{
    for (const auto &row : in.structs()) {
        on.attempt(place(in, row.name), [&] { lay_out(in, row); });
        on.demand(row.kind == RW_KIND_STRUCT || row.kind == RW_KIND_UNION, place(in, row.name),
                  "is neither struct nor union");
        for (std::uint32_t i = 0; i < row.no_members; ++i) {
            check_reference(on, in, row, row.members[i]);
        }
        on.looked_at("members", row.no_members);
    }
    on.looked_at("structures", in.types->no_structs);
}

void check_types(checker &on, const domain &in)
{
    for (const auto &row : in.type_rows()) {
        on.attempt(place(in, row.name), [&] {
            const resolved_type type = resolve(in, use_of(row));
            levels_of(in, type);
            size_of(in, type);
        });
    }
    for (std::uint32_t i = 0; i < in.types->no_enums; ++i) {
        const rw_enum_row &row = in.types->enums[i];
        on.demand(row.ordinal == (i & 0xFFFFU), place(in, row.name),
                  fmt::format("has ordinal {} in row {}", row.ordinal, i));
    }
    for (std::uint32_t i = 0; i < in.types->no_rt_rules; ++i) {
        const rw_rt_rule_row &rule = in.types->rt_rules[i];
        const bool            leads = rule.length_func != nullptr || rule_type(in, rule) != nullptr;
        on.demand(leads, place(in, fmt::format("run-time rule {}", i)), "leads to no type");
    }
    on.looked_at("types", in.types->no_types);
    on.looked_at("enumerations", in.types->no_enums);
}

void check_enum_name(checker &on, const domain &in, const char *what, const char *name)
{
    const std::string where = place(in, what);
    if (name == nullptr) {
        on.fault(where, "is null");
    } else if (*name != '\0') {
        on.attempt(where, [&] {
            on.demand(find_enum(in, name) != nullptr, where, fmt::format("{} is no enumeration", name));
        });
    }
}

void check_registry(checker &on, const domain &in)
{
    const tt_entity_info &row = *in.row;
    const struct {
        const char *what;
        const char *name;
    } enums[] = {{"file codes", row.file_code_enum},
                 {"saps", row.sap_enum},
                 {"messages", row.msg_enum},
                 {"modules", row.module_enum},
                 {"channels", row.channels_enum},
                 {"error actions", row.error_actions_enum},
                 {"peer parameters", row.peer_msg_param_enum}};
    for (const auto &each : enums) {
        check_enum_name(on, in, each.what, each.name);
    }
    const std::string context = row.context_struct != nullptr ? row.context_struct : "";
    on.demand(context.empty() || find_type(in, context), place(in, "context"), context + " is no structure");
    const std::pair<const tt_enum_name *, std::uint32_t> tables[] = {
        {row.module_file_codes, TT_NO_MODULES}, {row.module_peer_msgs, TT_NO_MODULES},
        {row.module_proto_errors, TT_NO_MODULES}, {row.module_timers, TT_NO_MODULES},
        {row.module_fsms, TT_NO_MODULES}, {row.module_states, TT_NO_MODULE_STATES}};
    for (const auto &[rows, count] : tables) {
        for (std::uint32_t i = 0; rows != nullptr && i < count; ++i) {
            if (rows[i][0] != '\0') {
                check_enum_name(on, in, "module table", rows[i]);
            }
        }
    }
}

void check_messages(checker &on, const plugin &loaded, const domain &in)
{
    for (const auto &row : in.messages()) {
        const std::string where = place(in, row.msg_name);
        const auto        use = find_type(in, row.struct_name);
        on.demand(*row.struct_name == '\0' || (use && resolve(in, *use).is_record()), where,
                  fmt::format("{} is no structure", row.struct_name));
        if (in.row->msg_table->index_count == 0) {
            continue;
        }
        const bool signal = in.number == ENTITY_SIGNAL;
        const auto code = static_cast<std::uint16_t>(row.msg_code);
        const auto &info = *loaded.info;
        const auto index = (signal ? info.signal_msg_code_to_index : info.lte_msg_code_to_index)(code);
        const auto back = (signal ? info.signal_msg_index_to_code : info.lte_msg_index_to_code)(
            static_cast<std::uint16_t>(index));
        on.demand(index != 0 && back == row.msg_code, where,
                  fmt::format("dense index {} leads to code {:#x}", index, back));
    }
    on.looked_at("messages", in.messages().size());
}

void check_texts(checker &on, const plugin &loaded, const domain &in)
{
    const auto number = static_cast<std::uint32_t>(in.number);
    const auto *tables = loaded.info->value_desc_tables;
    if (tables == nullptr || number >= tables->count || tables->tables[number] == nullptr) {
        on.fault(place(in, "value texts"), "there is no table");
        return;
    }
    const tt_value_desc_table &table = *tables->tables[number];
    on.demand(table.count > 0 && table.rows[table.count - 1].record == nullptr, place(in, "value texts"),
              "no end row");
    for (std::uint32_t i = 0; i < table.count; ++i) {
        const tt_value_desc_row &row = table.rows[i];
        if (row.record == nullptr) {
            continue;
        }
        on.demand(find_type(in, row.name).has_value(), place(in, row.name),
                  "has value texts and is in no dictionary");
        on.demand(loaded.info->db_struct_known(in.number, row.name) == 1, place(in, row.name),
                  "has texts that no query finds");
        on.looked_at("described fields", row.record->no_fields);
    }
}

/* Sorted ids from 0 to all ones, a head item where each module starts. */
void check_traces(checker &on, const plugin &loaded)
{
    const tsc_db_info_struct &db = *loaded.info->tsc_db_get();
    const auto where = [](std::uint32_t id) { return fmt::format("trace {:#010x}", id); };
    on.demand(db.total >= 2 && db.db[0].trace_id == 0 && db.db[db.total - 1].trace_id == 0xFFFFFFFF, "trace table",
              "does not reach from id 0 to the closing id");
    std::set<std::uint32_t> heads;
    for (std::uint32_t i = 0; i < db.total; ++i) {
        const tsc_db_item_struct &item = db.db[i];
        on.demand(i == 0 || db.db[i - 1].trace_id < item.trace_id, where(item.trace_id), "does not ascend");
        on.demand(item.trace_format != nullptr && item.file != nullptr, where(item.trace_id), "has a null text");
        if (item.status == TSC_DIS_HEAD) {
            heads.insert(item.trace_id);
        }
    }
    for (std::uint32_t i = 0; i < db.mod_num; ++i) {
        const auto start = db.mod_list[i].start_trace_id;
        on.demand(start == i * 0x80000U, where(start), "does not start its module's block");
        on.demand(heads.count(start) == 1, where(start), "is the start of a module and no head item");
    }
    on.looked_at("trace statements", db.total);
}

void check_peers(checker &on, const plugin &loaded, std::span<const domain> all)
{
    std::set<std::string_view> names;
    for (std::uint32_t i = 0; i < loaded.peers->count; ++i) {
        const tt_peer_row &row = loaded.peers->rows[i];
        const std::string  where = fmt::format("peer {}", row.name);
        bool               known = false;
        on.demand(names.insert(row.name).second, where, "stands twice in the peer table");
        on.demand(row.pack != nullptr && row.unpack != nullptr, where, "lacks a codec");
        for (const auto &in : all) {
            const auto use = find_type(in, row.name);
            known = known || use;
            on.attempt(where, [&] {
                const std::uint64_t size = use ? size_of(in, resolve(in, *use)) : row.size;
                on.demand(size == row.size, where,
                          fmt::format("takes {} octets, in domain {} {}", row.size, in.name, size));
            });
        }
        on.demand(known, where, "is in no dictionary");
    }
    on.looked_at("peer structures", loaded.peers->count);
}

int run(session &work)
{
    checker       on(work);
    const plugin &loaded = work.started();
    for (const auto &in : work.domains()) {
        check_structs(on, in);
        check_types(on, in);
        check_registry(on, in);
        on.attempt(place(in, "messages"), [&] { check_messages(on, loaded, in); });
        check_texts(on, loaded, in);
    }
    if (work.settings.domain.empty()) {
        check_traces(on, loaded);
        check_peers(on, loaded, work.domains());
    }
    on.finish();
    return work.result();
}

} // namespace

command check_command()
{
    return {
        "check",
        "holds the plug-in's tables against the rules that a host relies on",
        "Every structure is laid out, every reference, name, message, index, value text, trace id and peer size followed.\n"
        "For whoever builds a plug-in: a fault a line, exit code 1 when there is one.",
        {{"check", "the library next to the tool"}, {"check --domain lte --json", "one domain, for programs"}},
        {},
        {},
        [](session &work) { return run(work); },
    };
}

} // namespace solvane::tools
