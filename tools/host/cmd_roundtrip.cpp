#include <algorithm>

#include <fmt/format.h>

#include "byte_source.h"
#include "commands.h"
#include "failure.h"
#include "json_out.h"
#include "lookup.h"
#include "peer_message.h"
#include "session.h"

namespace solvane::tools {

namespace {

struct roundtrip_options {
    std::string              name;
    std::vector<std::string> words;
    bool                     isolate = false;
};

/* The first bit in which two messages differ, counted from 0; the length of the shorter one when it is a prefix. */
std::size_t first_difference(const octets &one, const octets &other)
{
    const auto [at, there] = std::mismatch(one.begin(), one.end(), other.begin(), other.end());
    const auto octet = static_cast<std::size_t>(at - one.begin());
    if (at == one.end() || there == other.end()) {
        return octet * 8;
    }
    return octet * 8 + static_cast<std::size_t>(__builtin_clz(static_cast<unsigned>(*at ^ *there))) - 24;
}

void show(session &work, const std::string &name, const octets &message, const encoded_message &made)
{
    const bool        same = made.message == message;
    const std::size_t at = first_difference(message, made.message);
    if (!same) {
        work.note_finding();
    }
    if (work.settings.json) {
        json out = json_object("roundtrip");
        out["struct"] = name;
        out["message"] = to_hex(message);
        out["again"] = to_hex(made.message);
        out["same"] = same;
        out["first_difference_bit"] = same ? json() : json(at);
        work.line(json_line(out));
        return;
    }
    work.line(work.paint(ink::type, name) + (same ? fmt::format("  same, {} bits", made.bits) : ""));
    if (!same) {
        work.line(work.paint(ink::bad, fmt::format("differs from octet {}, bit {} on", at / 8, 7 - at % 8)));
        work.line(fmt::format("  given  {}", to_hex(message)));
        work.line(fmt::format("  again  {}", to_hex(made.message)));
    }
}

int run(session &work, const roundtrip_options &options)
{
    lend_memory(*work.loaded().version);
    const octets       message = hex_words(options.words, "the message");
    const tt_peer_row &row = find_peer_row(work, options.name);
    decoded_message    found = decode_peer(row, message, options.isolate);
    encoded_message    made;
    if (!found.died) {
        /* What a decoder makes of octets that go on and on is bounded by them, and so is what is made of that. */
        made = encode_peer(row, found.memory(row), (std::size_t{1} << 20) + 64 * message.size(), options.isolate);
    }
    if (found.died || made.died) {
        work.finding(fmt::format("the library died on a {}: {}", options.name, to_hex(message)));
        return exit_decoder_died;
    }
    if (found.error.code != 0) {
        work.finding(found.error.code == 1 ? "a value outside its range" : "broken off");
    }
    show(work, options.name, message, made);
    return work.result();
}

} // namespace

command roundtrip_command()
{
    const auto options = std::make_shared<roundtrip_options>();
    return {
        "roundtrip",
        "octets decoded and encoded again, and where the two differ",
        "Exit code 1 when they differ: the message holds what the codec does not know or writes in another way.",
        {{"roundtrip mm_peer_lu_rej_struct 050402", "\"same, 24 bits\""},
         {"roundtrip Lte_PCCH_Message - < page.hex", "hex on standard input"}},
        {{"STRUCT", "a structure of the peer table", &options->name},
         {"HEX", "octets of the message, or - for hex on standard input", &options->words}},
        {{"--isolate", "", "try it in a child process first", &options->isolate}},
        [options](session &work) { return run(work, *options); },
    };
}

} // namespace solvane::tools
