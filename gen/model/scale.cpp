// Made-up rows in the mix of a whole stack build.
#include "model/scale.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

#include <fmt/format.h>

#include "model/traces.h"

namespace solvane::gen {
namespace {

constexpr std::size_t full_traces = 120846;  // heads and the closing item included
constexpr std::size_t full_messages = 8000;

/// Of a domain in a whole build, by its entity value.
struct full_domain {
    std::size_t   bit_fields;
    std::uint32_t widest;    ///< bits of its widest bit-field
    std::size_t   messages;  ///< weight of the domain among the messages that are added
};

constexpr std::array<full_domain, 8> full_domains = {{
    {0,    0,  0},
    {2496, 29, 3503},
    {238,  29, 1060},
    {327,  28, 1477},
    {21,   4,  0},
    {1263, 20, 0},
    {0,    0,  83},
    {496,  27, 486},
}};

/// A fixed sequence of numbers that look like chance (Park and Miller's minimal standard).
struct sequence {
    std::uint32_t state = 1;

    std::uint32_t below(std::size_t bound)
    {
        state = static_cast<std::uint32_t>(state * std::uint64_t{48271} % 0x7FFFFFFF);
        return static_cast<std::uint32_t>(state % bound);
    }
};

std::size_t share(std::size_t full, std::uint32_t per_cent) { return full * per_cent / 100; }

// ------------------------------------------------------------------------------------------- trace statements

constexpr std::array<std::string_view, 16> words = {
    "cell", "measurement", "timer", "bearer", "context", "report", "queue", "window",
    "paging", "handover", "segment", "carrier", "session", "request", "buffer", "state"};
constexpr std::array<std::string_view, 8> conversions = {"=%d", "=%d", "=%d", "=%d", "=0x%x", "=0x%x", "=%u", " %s"};

/// Two of three statements have arguments, one to six of them; one in ten ends in a newline, one in thirty-three
/// tags its arguments.
trace_item make_statement(sequence &chance, std::uint32_t module, std::size_t number)
{
    const bool  tagged = chance.below(33) == 0;
    std::size_t arguments = chance.below(3) == 0 ? 0 : 1 + chance.below(6);
    const bool  single = arguments == 0;
    std::string format = fmt::format("[{}] {} {}", number, words[chance.below(16)], words[chance.below(16)]);
    for (; arguments > 0; --arguments) {
        const std::string_view word = words[chance.below(16)];
        format += fmt::format(", {}{}", word, conversions[chance.below(8)]);
        if (tagged)
            format += fmt::format("@TAG<{}>", word);
    }
    if (chance.below(10) == 0)
        format += '\n';
    std::string  file = chance.below(18) == 0 ? "" : fmt::format("scale_{}_{}.c", module, chance.below(30));
    const auto   line = static_cast<std::int32_t>(1 + chance.below(6000));
    return {module * ids_of_a_module, std::move(format), single ? trace_single : trace_args, std::move(file), line};
}

void add_traces(model &m, std::uint32_t per_cent)
{
    const std::size_t wanted = share(full_traces, per_cent);
    sequence          chance;
    for (std::size_t n = m.traces.size() + m.trace_modules.size() + 1; n < wanted; ++n)
        m.traces.push_back(make_statement(chance, chance.below(m.trace_modules.size()), n));
}

// ------------------------------------------------------------------------------------------- bit-fields

std::size_t count_bit_fields(const model &m, const domain &d)
{
    std::size_t count = 0;
    for (const std::uint32_t unit_id : d.units) {
        for (const definition &what : m.units[unit_id].definitions) {
            if (what.kind != definition::what::record)
                continue;
            const std::vector<member> &members = m.records[what.id].members;
            count += static_cast<std::size_t>(std::count_if(members.begin(), members.end(), [](const member &member) {
                return member.bit_width != 0 && !member.hidden;
            }));
        }
    }
    return count;
}

/// A structure of up to 24 bit-fields behind a few octets, so that they do not all begin at 0.
record make_bit_record(sequence &chance, const domain &d, std::uint32_t unit_id, std::size_t number,
                       std::size_t bit_fields, std::uint32_t widest)
{
    record r{fmt::format("scale_{}_{}_struct", d.name, number), false, unit_id, {}, {}, {}};
    member head;
    head.name = "head";
    head.type.base = kind::unsigned_char;
    head.dims.push_back({false, 1 + chance.below(16)});
    head.role = role::array;
    r.members.push_back(std::move(head));
    for (std::size_t n = 0; n < bit_fields; ++n) {
        member field;
        field.name = fmt::format("field_{}", n);
        field.type.base = kind::unsigned_long;
        // Narrow fields are by far the most frequent.
        field.bit_width = chance.below(3) == 0 ? 1 + chance.below(widest) : 1 + chance.below(std::min(widest, 4u));
        r.members.push_back(std::move(field));
    }
    return r;
}

void add_bit_fields(model &m, domain &d, const full_domain &full, std::uint32_t per_cent)
{
    const std::size_t wanted = share(full.bit_fields, per_cent);
    std::size_t       count = count_bit_fields(m, d);
    if (count >= wanted)
        return;
    constexpr std::size_t most_in_a_record = 24;
    const auto            unit_id = static_cast<std::uint32_t>(m.units.size());
    sequence              chance;
    unit                  u;
    u.stem = "scale_" + d.name;
    u.path = fmt::format("scale/{}.def", u.stem);
    for (std::size_t number = 0; count < wanted; ++number) {
        const std::size_t bit_fields = std::min(most_in_a_record, wanted - count);
        u.definitions.push_back({definition::what::record, static_cast<std::uint32_t>(m.records.size())});
        m.records.push_back(make_bit_record(chance, d, unit_id, number, bit_fields, full.widest));
        count += bit_fields;
    }
    m.units.push_back(std::move(u));
    d.units.push_back(unit_id);
}

// ------------------------------------------------------------------------------------------- messages

bool takes_messages(const domain &d) { return d.has_messages && !d.indexed; }

/// The enumeration that is made of the messages of a domain, or null.
enumeration *messages_enum(model &m, const domain &d)
{
    for (const std::uint32_t unit_id : d.units) {
        for (const definition &what : m.units[unit_id].definitions) {
            if (what.kind != definition::what::enumeration || m.enums[what.id].name != d.messages_enum)
                continue;
            const std::vector<literal> &literals = m.enums[what.id].literals;
            const bool same = std::equal(literals.begin(), literals.end(), d.messages.begin(), d.messages.end(),
                                         [](const literal &l, const message_row &row) { return l.name == row.name; });
            return same ? &m.enums[what.id] : nullptr;
        }
    }
    return nullptr;
}

std::string upper(std::string text)
{
    for (char &c : text)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

/// Codes go on behind the highest one; access point and structure are those of the domain's own messages in turn.
void add_messages(model &m, domain &d, std::size_t count)
{
    enumeration      *literals = messages_enum(m, d);
    const std::size_t own = d.messages.size();
    std::uint32_t     code = 0;
    for (const message_row &row : d.messages)
        code = std::max(code, row.code);
    for (std::size_t n = 0; n < count; ++n) {
        message_row row = own == 0 ? message_row{} : d.messages[n % own];
        row.code = ++code;
        row.name = fmt::format("MSG_ID_SCALE_{}_{}", upper(d.name), n);
        if (literals != nullptr)
            literals->literals.push_back({row.name, static_cast<std::int32_t>(row.code), true, {}});
        d.messages.push_back(std::move(row));
    }
}

void add_messages(model &m, std::uint32_t per_cent)
{
    std::size_t count = 0, weights = 0;
    for (const domain &d : m.domains) {
        count += d.messages.size();
        weights += takes_messages(d) ? full_domains[d.entity_value].messages : 0;
    }
    const std::size_t wanted = share(full_messages, per_cent);
    std::size_t       missing = wanted > count ? wanted - count : 0;
    for (domain &d : m.domains) { // the last one takes what the rounding left
        const std::size_t weight = takes_messages(d) ? full_domains[d.entity_value].messages : 0;
        if (weight == 0)
            continue;
        const std::size_t part = missing * weight / weights;
        add_messages(m, d, part);
        missing -= part;
        weights -= weight;
    }
}

} // namespace

void scale_up(model &m, std::uint32_t per_cent)
{
    add_traces(m, per_cent);
    for (domain &d : m.domains)
        add_bit_fields(m, d, full_domains[d.entity_value], per_cent);
    add_messages(m, per_cent);
}

} // namespace solvane::gen
