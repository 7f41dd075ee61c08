#include <fmt/format.h>

#include "asn1_text.h"
#include "byte_source.h"
#include "commands.h"
#include "failure.h"
#include "json_out.h"
#include "lookup.h"
#include "message_tree.h"
#include "peer_message.h"
#include "print.h"
#include "session.h"
#include "times.h"

namespace solvane::tools {

namespace {

struct decode_options {
    std::string              name;
    std::vector<std::string> words;
    std::string              read;
    std::string              times = "relative";
    bool                     isolate = false;
    bool                     all = false;
    bool                     asn1 = false;
    std::vector<std::string> open;
};

/// A message that is to be shown: where it comes from and what it holds.
struct subject {
    std::string        name;
    octets             message;
    const packet      *from = nullptr; ///< of a recording, or null
};

const char *error_word(const PerError &error)
{
    return error.code == 0 ? "none" : error.code == 1 ? "soft" : "hard";
}

void show(session &work, const subject &about, const message_tree &found, const decode_options &options, time_format &times)
{
    if (!work.settings.json) {
        work.line((about.from != nullptr ? times.text(about.from->time) : "") + work.paint(ink::type, about.name) +
                  " " +
                  work.paint(ink::note, fmt::format("/* {}, {} */", found.in->name,
                                                    counted(about.message.size(), "octet"))) +
                  (found.remarks.empty() ? "" : "  " + work.paint(ink::bad, found.remarks)));
        if (options.asn1) {
            work.line(asn1_text(found.value));
        } else {
            print_value(work, options.all ? found.value : brief(found.value));
        }
        return;
    }
    json out = json_object("decoded");
    if (about.from != nullptr) {
        out["packet"] = about.from->number;
    }
    if (about.from != nullptr && about.from->time) {
        out["time_ns"] = *about.from->time;
    }
    out["domain"] = json_enum(found.in->number, found.in->name);
    out["struct"] = about.name;
    out["message"] = to_hex(about.message);
    out["octets_used"] = found.octets_used;
    out["error"] = json_enum(found.error.code, error_word(found.error));
    out["must_understand"] = found.error.must_understand != 0;
    out["value"] = json_value(found.value);
    work.line(json_line(out));
}

/* False when the library died on it. */
bool decode(session &work, const subject &about, const decode_options &options, time_format &times)
{
    message_tree found = tree_of(work, about.name, about.message, options.isolate);
    if (found.in == nullptr) {
        work.finding(fmt::format("{} is in no dictionary", about.name));
        return true;
    }
    if (found.died) {
        work.finding(fmt::format("the library died on a {}: {}", about.name, to_hex(about.message)));
        return false;
    }
    if (!found.remarks.empty()) {
        work.note_finding();
    }
    for (const auto &each : options.open) {
        open_containers(work, found.value, each, options.isolate);
    }
    show(work, about, found, options, times);
    return true;
}

/* A message with no name, or of a name with no codec, is told in a line and passed over. */
bool decode_packet(session &work, const packet &what, std::uint8_t entity, const decode_options &options,
                   time_format &times)
{
    std::string complaint = what.complaint;
    const auto  message = complaint.empty() && carries_message(what)
                              ? parse_layer_message(std::span(what.content).subspan(1), complaint)
                              : std::nullopt;
    if (!complaint.empty()) {
        work.finding(fmt::format("packet {}: {}", what.number, complaint));
    }
    if (!message) {
        return true;
    }
    const verdict found = classify(work.started(), *message, entity);
    if (found.died) {
        work.finding(fmt::format("packet {}: the library died on this message", what.number));
        return false;
    }
    if (found.name.empty()) {
        return true;
    }
    if (peer_row(work.started(), found.name) == nullptr) {
        work.finding(fmt::format("packet {}: no codec for {}", what.number, found.name));
        return true;
    }
    return decode(work, {found.name, message->peer, &what}, options, times);
}

int run_recording(session &work, const decode_options &options)
{
    const auto entity =
        static_cast<std::uint8_t>(work.settings.domain.empty() ? ENTITY_STACK : work.domains()[0].number);
    const auto source = open_recording(options.read, [&work]() -> const plugin & { return work.started(); });
    time_format times(options.times);
    bool        died = false;
    work.out.set_line_flush(work.settings.line_flush || source->is_live());
    while (const auto next = source->next()) {
        times.pass(next->time);
        died = !decode_packet(work, *next, entity, options, times) || died;
    }
    return died ? exit_decoder_died : work.result();
}

int run(session &work, const decode_options &options)
{
    lend_memory(*work.loaded().version);
    if (!options.read.empty()) {
        return run_recording(work, options);
    }
    if (options.name.empty()) {
        throw failure(exit_usage, "give a structure and its octets, or -r and a recording");
    }
    find_peer_row(work, options.name);
    time_format   times("none");
    const subject about = {options.name, hex_words(options.words, "the message")};
    return decode(work, about, options, times) ? work.result() : exit_decoder_died;
}

} // namespace

command decode_command()
{
    const auto options = std::make_shared<decode_options>();
    return {
        "decode",
        "octets of the air interface as named values",
        "The octets are unpacked by the library's codec for the structure and shown through the dictionary; pointers are\n"
        "followed.  Of a recording every inter-layer message with a codec is decoded.  Octets left over, values out of\n"
        "range and messages broken off are findings.",
        {{"decode mm_peer_lu_rej_struct 050402", "octets of a message whose structure is known"},
         {"decode Lte_PCCH_Message - --asn1 < page.hex", "in ASN.1 value notation"},
         {"decode Lte_UL_DCCH_Message - --open dedicatedInfoNAS=emm_peer_attach_req_struct < up.hex",
          "the message that an octet string holds as well"},
         {"decode -r run.pcapng", "all messages of a recording"},
         {"decode -r run.pcapng --json --isolate", "for programs, each message tried in a child process first"}},
        {{"STRUCT", "a structure of the peer table", &options->name, false},
         {"HEX", "octets of the message, or - for hex on standard input", &options->words, false}},
        {{"-r,--read", "FILE", "decode the messages of a recording", &options->read, {}, completes::file},
         {"-t,--time", "FORMAT", "relative, delta, absolute, epoch or none", &options->times},
         {"--asn1", "", "in ASN.1 value notation", &options->asn1},
         {"--open", "MEMBER=STRUCT", "decode octet strings of that member too", &options->open},
         {"--all", "", "also what is absent, counts, capacities and flags", &options->all},
         {"--isolate", "", "try every message in a child process first", &options->isolate}},
        [options](session &work) { return run(work, *options); },
    };
}

} // namespace solvane::tools
