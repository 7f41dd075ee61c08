#include "order.h"

#include <fmt/format.h>

#include "agent_packet.h"
#include "failure.h"
#include "image_write.h"
#include "lookup.h"
#include "peer_message.h"
#include "wire_form.h"

namespace solvane::tools {

namespace {

constexpr std::size_t room = 65536; /* octets that a command may take */

[[noreturn]] void refuse(const std::string &what)
{
    throw failure(exit_usage, what);
}

std::uint8_t code_of(session &work, const std::string &word)
{
    if (const auto number = parse_number(word); number && *number <= 255) {
        return static_cast<std::uint8_t>(*number);
    }
    suggestions near(word);
    for (const auto &in : domains_of(work.started())) {
        const rw_enum_row *row = find_enum(in, "mta_tt_command_enum");
        for (std::uint32_t i = 0; row != nullptr && i < row->no_literals; ++i) {
            if (word == row->literals[i].name) {
                return static_cast<std::uint8_t>(row->literals[i].value.num);
            }
            near.offer(row->literals[i].name);
        }
    }
    refuse(fmt::format("no command {}{}", word, near.text()));
}

wire_record record_of(const wire_form &form, const json &values);

wire_value value_of(const wire_field &field, const json &value)
{
    std::vector<std::uint64_t> numbers;
    std::vector<wire_record>   records;
    if (!field.is_array && field.inside.empty() && value.is_number()) {
        return value.get<std::uint64_t>();
    }
    if (field.size == 1 && value.is_string()) { /* octets in hex, as they are printed */
        const hex_result read = parse_hex(value.get<std::string>());
        if (read.bad_column != 0) {
            refuse(fmt::format("{}: column {}: {}", field.row->name, read.bad_column, read.complaint));
        }
        return std::vector<std::uint64_t>(read.value.begin(), read.value.end());
    }
    for (const auto &element : value.is_array() ? value : json::array({value})) {
        if (!field.inside.empty() && element.is_object()) {
            records.push_back(record_of(field.inside.front(), element));
        } else if (field.inside.empty() && element.is_number()) {
            numbers.push_back(element.get<std::uint64_t>());
        } else {
            refuse(fmt::format("{} cannot be {}", field.row->name, element.dump()));
        }
    }
    return field.inside.empty() ? wire_value(std::move(numbers)) : wire_value(std::move(records));
}

wire_record record_of(const wire_form &form, const json &values)
{
    wire_record out;
    for (const auto &[name, value] : values.items()) {
        suggestions       near(name);
        const wire_field *field = nullptr;
        for (const auto &each : form.fields) {
            near.offer(each.row->name);
            field = name == each.row->name ? &each : field;
        }
        if (field == nullptr) {
            refuse(fmt::format("no member {} in {}{}", name, form.name, near.text()));
        }
        out.insert({name, value_of(*field, value)});
    }
    return out;
}

octets body_by_codec(const tt_peer_row &row, const found_type &described, const json &values)
{
    block_store blocks;
    const auto  record = blocks.take(row.size);
    write_value(*described.in, described.use, values, record, blocks);
    return encode_peer(row, record, room, false).message;
}

octets body_of(session &work, std::uint8_t code, json values)
{
    const char *structure = command_struct(code);
    if (structure == nullptr) {
        refuse(fmt::format("no command has the code {}: send it as a packet", code));
    }
    const auto described = describing_type(work, structure);
    const auto form = described ? wire_form_of(*described->in, structure) : std::nullopt;
    if (!form) {
        refuse(fmt::format("the plug-in does not describe {}", structure));
    }
    if (form->fields.front().row->name == std::string_view("command_code")) {
        values["command_code"] = code;
    }
    const tt_peer_row *row = peer_row(work.started(), structure);
    return row != nullptr ? body_by_codec(*row, *described, values) : write_wire(*form, record_of(*form, values));
}

} // namespace

octets bare_order(std::uint8_t code)
{
    return {code, code}; /* the structure of a bare command is its code */
}

octets order_of(session &work, const std::string &words)
{
    const std::size_t split = words.find(' ');
    const std::string head = words.substr(0, split);
    const std::string rest = split == std::string::npos ? "" : words.substr(split + 1);
    if (head == "packet") {
        hex_result read = parse_hex(rest);
        if (read.bad_column != 0 || read.value.empty()) {
            refuse(fmt::format("{}: a packet is octets in hex", words));
        }
        return read.value;
    }
    const json values = json::parse(rest.empty() ? "{}" : rest, nullptr, false);
    if (!values.is_object()) {
        refuse(fmt::format("{}: the values are no JSON object", words));
    }
    const std::uint8_t code = code_of(work, head);
    octets             packet = {code};
    const octets       body = body_of(work, code, values);
    packet.insert(packet.end(), body.begin(), body.end());
    return packet;
}

} // namespace solvane::tools
