#include <fmt/format.h>

#include "byte_source.h"
#include "commands.h"
#include "failure.h"
#include "image_write.h"
#include "json_out.h"
#include "lookup.h"
#include "peer_message.h"
#include "session.h"

namespace solvane::tools {

namespace {

struct encode_options {
    std::string name;
    std::string text;
    bool        isolate = false;
};

/* No codec tells how much it is going to write.  A value of so many characters of JSON stays far below this. */
std::size_t room_for(const std::string &text)
{
    return (std::size_t{1} << 20) + 64 * text.size();
}

json parse(const std::string &text)
{
    try {
        return json::parse(text);
    } catch (const json::parse_error &error) {
        throw failure(exit_usage, fmt::format("octet {} of the value: this is no JSON", error.byte));
    }
}

/* The value itself, or an object as `decode --json` writes it, whose structure must be the one that is wanted. */
json value_of(json given, const std::string &name)
{
    if (!given.is_object() || !given.contains("schema")) {
        return given;
    }
    if (given.value("struct", name) != name) {
        throw failure(exit_usage, fmt::format("the value is a {}, not a {}", given.value("struct", ""), name));
    }
    if (!given.contains("value")) {
        throw failure(exit_usage, "the object has no value");
    }
    return given.at("value");
}

int run(session &work, const encode_options &options)
{
    const std::string  text = options.text == "-" ? whole(byte_source::open("-")) : options.text;
    const tt_peer_row &row = find_peer_row(work, options.name);
    const found_type   described = find_record(work, options.name);
    const json         value = value_of(parse(text), options.name);

    block_store blocks;
    const auto  record = blocks.take(row.size);
    write_value(*described.in, described.use, value, record, blocks);
    const encoded_message made = encode_peer(row, record, room_for(text), options.isolate);
    if (made.died) {
        work.finding(fmt::format("the library died on this {}", options.name));
        return exit_decoder_died;
    }
    if (!work.settings.json) {
        work.line(to_hex(made.message));
        return work.result();
    }
    json out = json_object("encoded");
    out["domain"] = json_enum(described.in->number, described.in->name);
    out["struct"] = options.name;
    out["message"] = to_hex(made.message);
    out["bits"] = made.bits;
    work.line(json_line(out));
    return work.result();
}

} // namespace

command encode_command()
{
    const auto options = std::make_shared<encode_options>();
    return {
        "encode",
        "named values as octets of the air interface",
        "The values are JSON as decode --json prints them: the whole line, or its \"value\".  Members that are not named\n"
        "are 0.  Counts, presence flags and selectors may be left out where they follow from the rest; an enumeration\n"
        "takes a number or the name of a literal, a pointer what it points to.",
        {{"encode mm_peer_lu_rej_struct '{\"hdr\":{\"pro_discr\":5,\"msg_type\":4},\"cause\":{\"value\":2}}'",
          "a message from its values"},
         {"decode --json mm_peer_lu_rej_struct 050402 | solvane-host encode mm_peer_lu_rej_struct -",
          "back to the same octets"}},
        {{"STRUCT", "a structure of the peer table", &options->name},
         {"JSON", "its values, or - for standard input", &options->text}},
        {{"--isolate", "", "try it in a child process first", &options->isolate}},
        [options](session &work) { return run(work, *options); },
    };
}

} // namespace solvane::tools
