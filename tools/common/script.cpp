#include "script.h"

#include <algorithm>
#include <cstring>

#include <fmt/format.h>

#include "agent_packet.h"
#include "dictionary.h"
#include "failure.h"
#include "times.h"

namespace solvane::tools {

namespace {

/// A line that says nothing we know; `column` counts from 1.
struct bad_line {
    std::size_t column;
    std::string text;
};

struct token {
    std::string text;
    std::size_t column = 0;
    bool        quoted = false;
};

constexpr std::string_view blanks = " \t\r";

int hex_value(char c)
{
    const auto found = std::string_view("0123456789abcdef").find(static_cast<char>(c | 0x20));
    return found == std::string_view::npos ? -1 : static_cast<int>(found);
}

/* Reads behind the opening quote; `at` ends behind the closing one. */
std::string quoted_token(std::string_view line, std::size_t &at)
{
    const std::size_t start = at;
    std::string       out;
    for (; at < line.size() && line[at] != '"'; ++at) {
        if (line[at] != '\\' || at + 1 == line.size()) {
            out += line[at];
            continue;
        }
        switch (line[++at]) {
        case 'n': out += '\n'; break;
        case 't': out += '\t'; break;
        case 'r': out += '\r'; break;
        case 'x':
            if (at + 2 >= line.size() || hex_value(line[at + 1]) < 0 || hex_value(line[at + 2]) < 0) {
                throw bad_line{at + 1, "\\x wants two hex digits"};
            }
            out += static_cast<char>(hex_value(line[at + 1]) << 4 | hex_value(line[at + 2]));
            at += 2;
            break;
        default: out += line[at]; break;
        }
    }
    if (at == line.size()) {
        throw bad_line{start, "a quote without end"};
    }
    ++at;
    return out;
}

std::vector<token> tokens_of(std::string_view line)
{
    std::vector<token> out;
    std::size_t        at = 0;
    while ((at = line.find_first_not_of(blanks, at)) != std::string_view::npos && line[at] != '#') {
        token next;
        next.column = at + 1;
        if (line[at] == '"') {
            next.quoted = true;
            next.text = quoted_token(line, ++at);
        } else {
            const std::size_t end = std::min(line.find_first_of(blanks, at), line.size());
            next.text = line.substr(at, end - at);
            at = end;
        }
        out.push_back(std::move(next));
    }
    return out;
}

octets hex_of(const std::vector<token> &tokens, std::size_t from)
{
    octets out;
    for (std::size_t i = from; i < tokens.size(); ++i) {
        const hex_result part = parse_hex(tokens[i].text);
        if (part.bad_column != 0) {
            throw bad_line{tokens[i].column + part.bad_column - 1, part.complaint};
        }
        out.insert(out.end(), part.value.begin(), part.value.end());
    }
    return out;
}

const tsc_db_mod_struct &module_named(const tsc_db_info_struct &db, const std::string &name, std::size_t column)
{
    suggestions near(name);
    for (std::uint32_t i = 0; i < db.mod_num; ++i) {
        if (name == db.mod_list[i].mod_name) {
            return db.mod_list[i];
        }
        near.offer(db.mod_list[i].mod_name);
    }
    throw bad_line{column, fmt::format("no trace module {}{}", name, near.text())};
}

std::uint32_t id_at_source(const tsc_db_info_struct &db, const std::string &file, std::uint64_t line,
                           std::size_t column)
{
    const tsc_db_item_struct *found = nullptr;
    for (std::uint32_t i = 0; i < db.total; ++i) {
        if (file == db.db[i].file && static_cast<std::int64_t>(line) == db.db[i].line) {
            if (found != nullptr) {
                throw bad_line{column, fmt::format("more than one trace statement at {}:{}", file, line)};
            }
            found = &db.db[i];
        }
    }
    if (found == nullptr) {
        throw bad_line{column, fmt::format("no trace statement at {}:{}", file, line)};
    }
    return found->trace_id;
}

/* 0x80003, SDI+3 or com_tcp.c:153. */
std::uint32_t trace_id_of(const token &word, const plugin_provider &names)
{
    if (const auto number = parse_number(word.text); number && *number <= 0xFFFFFFFFU) {
        return static_cast<std::uint32_t>(*number);
    }
    const std::size_t split = word.text.find_last_of("+:");
    const auto        number = split != std::string::npos ? parse_number(word.text.substr(split + 1)) : std::nullopt;
    if (!number) {
        throw bad_line{word.column, fmt::format("{} is no trace id: number, MODULE+n or file:line", word.text)};
    }
    const tsc_db_info_struct &db = *names().info->tsc_db_get();
    const std::string         head = word.text.substr(0, split);
    return word.text[split] == '+'
               ? module_named(db, head, word.column).start_trace_id + static_cast<std::uint32_t>(*number)
               : id_at_source(db, head, *number, word.column);
}

octets string_trace_of(const std::vector<token> &tokens, std::size_t from, const plugin_provider &names)
{
    std::vector<std::string> texts;
    for (std::size_t i = from + 1; i < tokens.size(); ++i) {
        texts.push_back(tokens[i].text);
    }
    return make_string_trace(trace_id_of(tokens[from], names), texts);
}

/* In the order of octets that our own machine has, which the integer layout is made of. */
octets integer_trace_of(const std::vector<token> &tokens, std::size_t from, const plugin_provider &names)
{
    octets     out;
    const auto put = [&](std::uint32_t word) {
        std::uint8_t stored[sizeof word];
        std::memcpy(stored, &word, sizeof word);
        out.insert(out.end(), stored, stored + sizeof word);
    };
    put(trace_id_of(tokens[from], names));
    for (std::size_t i = from + 1; i < tokens.size(); ++i) {
        const auto word = parse_word(tokens[i].text);
        if (!word) {
            throw bad_line{tokens[i].column, fmt::format("{} is no 32-bit number", tokens[i].text)};
        }
        put(*word);
    }
    return out;
}

/* A number, or a literal of one of the stack domain's enumerations. */
std::uint32_t number_or_literal(const token &word, const std::string &value, std::uint32_t limit,
                                const plugin_provider &names, const char *tt_entity_info::*enumeration)
{
    std::optional<std::uint64_t> number = parse_number(value);
    if (!number && enumeration != nullptr) {
        for (const auto &in : chosen_domains(names(), "stack")) {
            const rw_enum_row *row = find_enum(in, in.row->*enumeration);
            for (std::uint32_t i = 0; row != nullptr && i < row->no_literals; ++i) {
                number =
                    value == row->literals[i].name ? static_cast<std::uint64_t>(row->literals[i].value.num) : number;
            }
        }
    }
    if (!number || *number > limit) {
        throw bad_line{word.column, fmt::format("{}: no number up to {} and no known name", word.text, limit)};
    }
    return static_cast<std::uint32_t>(*number);
}

octets layer_message_of(const std::vector<token> &tokens, std::size_t from, const plugin_provider &names)
{
    layer_message message;
    for (std::size_t i = from; i < tokens.size(); ++i) {
        const std::size_t split = tokens[i].text.find('=');
        const std::string key = tokens[i].text.substr(0, split);
        const std::string value = split == std::string::npos ? "" : tokens[i].text.substr(split + 1);
        const auto number = [&](std::uint32_t limit, const char *tt_entity_info::*enumeration = nullptr) {
            return number_or_literal(tokens[i], value, limit, names, enumeration);
        };
        if (key == "src") {
            message.src_mod_id = static_cast<std::uint8_t>(number(255, &tt_entity_info::module_enum));
        } else if (key == "dest") {
            message.dest_mod_id = static_cast<std::uint8_t>(number(255, &tt_entity_info::module_enum));
        } else if (key == "sap") {
            message.sap_id = static_cast<std::uint8_t>(number(255, &tt_entity_info::sap_enum));
        } else if (key == "msg") {
            message.msg_id = static_cast<std::uint16_t>(number(65535, &tt_entity_info::msg_enum));
        } else if (key == "frame") {
            message.frame_number = number(0xFFFFFFFF);
        } else if (key == "peer" || key == "local") {
            const token hex = {value, tokens[i].column + key.size() + 1, false};
            (key == "peer" ? message.peer : message.local_params) = hex_of({hex}, 0);
        } else {
            throw bad_line{tokens[i].column,
                           fmt::format("{}: src, dest, sap, msg, frame, local and peer are known", key)};
        }
    }
    return make_layer_message(message);
}

void fill(packet &out, const std::vector<token> &tokens, std::size_t at, const plugin_provider &names)
{
    const std::string &kind = tokens[at].text;
    if (at + 1 == tokens.size()) {
        throw bad_line{tokens[at].column, fmt::format("nothing behind {}", kind)};
    }
    if (kind == "trace") {
        out.content = string_trace_of(tokens, at + 1, names);
    } else if (kind == "words") {
        out.kind = packet_kind::integers;
        out.content = integer_trace_of(tokens, at + 1, names);
    } else if (kind == "message") {
        out.content = layer_message_of(tokens, at + 1, names);
    } else if (kind == "packet") {
        out.content = hex_of(tokens, at + 1);
    } else if (kind == "note") {
        out.kind = packet_kind::note;
        out.note = tokens[at + 1].text;
    } else if (kind == "integers") {
        out.kind = packet_kind::integers;
        out.content = hex_of(tokens, at + 1);
    } else {
        throw bad_line{tokens[at].column,
                       fmt::format("{}: trace, words, message, packet, integers and note are known", kind)};
    }
}

/* A line of nothing but hex is a packet with no time; any other begins with a time and a direction. */
packet packet_of(const std::vector<token> &tokens, std::int64_t start, const plugin_provider &names)
{
    packet     out;
    const bool plain = std::all_of(tokens.begin(), tokens.end(), [](const token &t) {
        return !t.quoted && t.text.find_first_not_of("0123456789abcdefABCDEFxX:,") == std::string::npos;
    });
    if (plain) {
        out.content = hex_of(tokens, 0);
        out.way = direction::in;
        return out;
    }
    if (tokens[0].text != "-") {
        const bool before = tokens[0].text[0] == '-';
        const auto time = parse_seconds(std::string_view(tokens[0].text).substr(before ? 1 : 0));
        if (!time) {
            throw bad_line{tokens[0].column, fmt::format("{} is no time in seconds", tokens[0].text)};
        }
        out.time = before ? start - *time : start + *time;
    }
    if (tokens.size() < 3 || (tokens[1].text != "in" && tokens[1].text != "out" && tokens[1].text != "-")) {
        throw bad_line{tokens.size() < 2 ? 1 : tokens[1].column,
                       "behind the time comes in, out or -, then what it is"};
    }
    out.way = tokens[1].text == "in" ? direction::in : tokens[1].text == "out" ? direction::out : direction::unknown;
    fill(out, tokens, 2, names);
    return out;
}

std::string id_text(std::uint32_t id, const plugin *names)
{
    tsc_trace_info info = {};
    if (names == nullptr || names->info->tsc_trace_lookup(id, &info) == 0) {
        return fmt::format("{:#010x}", id);
    }
    const tsc_db_mod_struct &module = names->info->tsc_db_get()->mod_list[info.mod_row];
    return fmt::format("{}+{}", module.mod_name, id - module.start_trace_id);
}

std::string string_trace_text(const octets &content, const plugin *names)
{
    std::string complaint;
    const auto  trace = parse_string_trace(std::span(content).subspan(1), complaint);
    if (!trace) {
        return {};
    }
    const auto  texts = argument_texts(trace->arguments);
    std::string out = "trace " + id_text(trace->id, names);
    for (const auto &text : texts) {
        out += ' ' + quoted(text);
    }
    return make_string_trace(trace->id, texts) == content ? out : "";
}

std::string integer_trace_text(const octets &content, const plugin *names)
{
    if (content.size() % 4 != 0 || content.empty()) {
        return {};
    }
    std::string out = "words";
    for (std::size_t i = 0; i < content.size(); i += 4) {
        std::uint32_t word = 0;
        std::memcpy(&word, content.data() + i, sizeof word);
        out += ' ' + (i == 0 ? id_text(word, names) : fmt::format("{}", static_cast<std::int32_t>(word)));
    }
    return out;
}

std::string message_text(const octets &content)
{
    std::string complaint;
    const auto  message = parse_layer_message(std::span(content).subspan(1), complaint);
    if (!message || make_layer_message(*message) != content) {
        return {};
    }
    std::string out = fmt::format("message src={} dest={} sap={} msg={}", message->src_mod_id, message->dest_mod_id,
                                  message->sap_id, message->msg_id);
    out += message->frame_number != 0 ? fmt::format(" frame={}", message->frame_number) : "";
    out += message->local_params.empty() ? "" : " local=" + to_hex(message->local_params);
    out += message->peer.empty() ? "" : " peer=" + to_hex(message->peer);
    return out;
}

} // namespace

std::optional<packet> script_reader::next()
{
    std::string line;
    while (from_.line(line)) {
        ++line_;
        packet made;
        try {
            const auto tokens = tokens_of(line);
            if (tokens.empty()) {
                continue; /* a blank or a comment */
            }
            if (tokens[0].text == "start" && tokens.size() == 2) {
                const auto start = parse_absolute_time(tokens[1].text);
                if (!start) {
                    throw bad_line{tokens[1].column, "start wants a time like 2026-05-14T08:30:00Z"};
                }
                start_ = *start;
                continue;
            }
            made = packet_of(tokens, start_, names_);
        } catch (const bad_line &bad) {
            made.complaint = fmt::format("{}:{}:{}: {}", from_.name(), line_, bad.column, bad.text);
        }
        made.number = ++count_;
        return made;
    }
    return std::nullopt;
}

std::string script_line(const packet &what, std::int64_t start, const plugin *names)
{
    std::string body;
    if (what.kind == packet_kind::note) {
        body = "note " + quoted(what.note);
    } else if (what.kind == packet_kind::integers) {
        body = integer_trace_text(what.content, names);
        body = body.empty() ? "integers " + to_hex(what.content) : body;
    } else if (!what.content.empty() && what.content[0] == report_trace_id && what.way != direction::out) {
        body = string_trace_text(what.content, names);
    } else if (!what.content.empty() && what.content[0] == report_trace && what.way != direction::out) {
        body = message_text(what.content);
    }
    body = body.empty() ? "packet " + to_hex(what.content) : body;
    const char *way = what.way == direction::in ? "in " : what.way == direction::out ? "out" : "-  ";
    const unsigned digits = what.time && (*what.time - start) % 1000 != 0 ? 9 : 6;
    return fmt::format("{} {} {}", what.time ? seconds(*what.time - start, digits) : "-", way, body);
}

bool looks_like_script(std::string_view head)
{
    return std::all_of(head.begin(), head.end(), [](char c) {
        return static_cast<unsigned char>(c) >= 0x20 || c == '\n' || c == '\t' || c == '\r';
    });
}

} // namespace solvane::tools
