#include <fmt/format.h>

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

struct classify_options {
    std::string file;
    std::string read;
    std::string entity = "stack";
    std::string sap;
    std::string msg;
    std::string peer;
    std::string local;
    std::string times = "relative";
    bool        decode = false;
};

json describe(session &work, const domain &in, const layer_message &message, const verdict &found)
{
    const tt_peer_row *row = peer_row(work.started(), found.name);
    json               out = json_object("classification");
    out["domain"] = json_enum(in.number, in.name);
    out["sap"] = json_enum(message.sap_id, literal_text(in, &tt_entity_info::sap_enum, message.sap_id));
    out["message"] = json_enum(message.msg_id, literal_text(in, &tt_entity_info::msg_enum, message.msg_id));
    out["peer"] = to_hex(message.peer);
    out["struct"] = found.name.empty() ? json(nullptr) : json(found.name);
    out["octets"] = row != nullptr ? json(row->size) : json(nullptr);
    return out;
}

std::string number_and_name(std::uint32_t number, const std::string &name)
{
    return name.empty() ? std::to_string(number) : fmt::format("{} {}", number, name);
}

std::string line_of(session &work, const domain &in, const layer_message &message, const verdict &found)
{
    const tt_peer_row *row = peer_row(work.started(), found.name);
    std::string        out =
        work.paint(ink::module, in.name) + "  sap " +
        number_and_name(message.sap_id, literal_text(in, &tt_entity_info::sap_enum, message.sap_id)) + "  msg " +
        number_and_name(message.msg_id, literal_text(in, &tt_entity_info::msg_enum, message.msg_id)) + "  ";
    if (found.name.empty()) {
        return out + work.paint(ink::note, "no peer structure");
    }
    return out + work.paint(ink::type, found.name) + "  " +
           work.paint(ink::note, row != nullptr ? fmt::format("({})", counted(row->size, "octet")) : "(no codec)");
}

/* The classification as a line or an object, and with --decode what the octets say in that structure. */
void show(session &work, const domain &in, const layer_message &message, const verdict &found, bool decode,
          const packet *from, const std::string &time)
{
    const bool         coded = decode && !found.name.empty() && peer_row(work.started(), found.name) != nullptr;
    const message_tree body = coded ? tree_of(work, found.name, message.peer, false) : message_tree();
    if (!work.settings.json) {
        work.line(time + line_of(work, in, message, found) +
                  (body.remarks.empty() ? "" : "  " + work.paint(ink::bad, body.remarks)));
        if (body.read) {
            print_value(work, brief(body.value));
        }
    } else {
        json out = describe(work, in, message, found);
        if (from != nullptr) {
            out["packet"] = from->number;
        }
        if (from != nullptr && from->time) {
            out["time_ns"] = *from->time;
        }
        if (body.read) {
            out["value"] = json_value(body.value);
        }
        work.line(json_line(out));
    }
    if (!body.remarks.empty()) {
        work.note_finding();
    }
}

/* The arguments of one message. */
layer_message message_of(const classify_options &options, const domain &in)
{
    const auto hex = [](const char *what, const std::string &text) {
        hex_result read = parse_hex(text);
        if (read.bad_column != 0) {
            throw failure(exit_usage, fmt::format("column {} of {}: {}", read.bad_column, what, read.complaint));
        }
        if (read.value.size() > 0xFFFF) {
            throw failure(exit_usage, fmt::format("{} is too long", what));
        }
        return std::move(read.value);
    };
    layer_message message;
    message.sap_id = static_cast<std::uint8_t>(number_or_literal(in, &tt_entity_info::sap_enum, options.sap, 255));
    message.msg_id = static_cast<std::uint16_t>(number_or_literal(in, &tt_entity_info::msg_enum, options.msg, 65535));
    message.peer = hex("--peer", options.peer);
    message.local_params = hex("--local", options.local);
    return message;
}

int run_one(session &work, const classify_options &options, const domain &in)
{
    const layer_message message = message_of(options, in);
    const verdict       found = classify(work.started(), message, static_cast<std::uint8_t>(in.number));
    if (found.died) {
        throw failure(exit_decoder_died, "the library died on this message");
    }
    show(work, in, message, found, options.decode, nullptr, "");
    if (found.name.empty()) {
        work.note_finding();
    }
    return work.result();
}

int run_recording(session &work, const classify_options &options, const domain &in)
{
    const std::string path = options.read.empty() ? options.file : options.read;
    const auto        source = open_recording(path, [&work]() -> const plugin & { return work.started(); });
    time_format       times(options.times);
    bool              died = false;
    work.out.set_line_flush(work.settings.line_flush || source->is_live());
    while (const auto next = source->next()) {
        times.pass(next->time);
        std::string complaint = next->complaint;
        const auto  message = complaint.empty() && carries_message(*next)
                                  ? parse_layer_message(std::span(next->content).subspan(1), complaint)
                                  : std::nullopt;
        if (!complaint.empty()) {
            work.finding(fmt::format("packet {}: {}", next->number, complaint));
            continue;
        }
        if (!message) {
            continue;
        }
        const verdict found = classify(work.started(), *message, static_cast<std::uint8_t>(in.number));
        if (found.died) {
            work.finding(fmt::format("packet {}: the library died on this message", next->number));
            died = true;
            continue;
        }
        show(work, in, *message, found, options.decode, &*next, times.text(next->time));
    }
    return died ? exit_decoder_died : work.result();
}

int run(session &work, const classify_options &options)
{
    lend_memory(*work.loaded().version);
    const std::string entity = work.settings.domain.empty() ? options.entity : work.settings.domain;
    const auto        chosen = chosen_domains(work.started(), entity);
    if (!options.file.empty() || !options.read.empty()) {
        return run_recording(work, options, chosen[0]);
    }
    if (options.sap.empty() || options.msg.empty()) {
        throw failure(exit_usage, "give --sap and --msg, or a recording");
    }
    return run_one(work, options, chosen[0]);
}

} // namespace

command classify_command()
{
    const auto options = std::make_shared<classify_options>();
    return {
        "classify",
        "which structure the octets of an inter-layer message hold",
        "The receiving entity is the domain: stack unless --domain or --entity says otherwise; recordings do not tell\n"
        "it.  UMTS radio resource messages need their local parameters too.  Exit code 1 when no structure applies.",
        {{"classify --sap MM_CC_SAP --msg 27 --peer 0305", "a call control message to the network"},
         {"classify --sap 126 --msg 3 --peer 10 --local 000008000022000000000000",
          "a UMTS message: the channel is a parameter"},
         {"classify --sap MM_CC_SAP --msg 27 --peer 0305 --decode", "with what the octets say"},
         {"classify run.pcapng", "every inter-layer message of a recording"}},
        {{"FILE", "a recording, - for standard input", &options->file, false, completes::file}},
        {{"--entity", "D", "receiving entity, as --domain", &options->entity, {}, completes::domain_name},
         {"--sap", "SAP", "service access point: number or name", &options->sap},
         {"--msg", "MSG", "message id: number or name", &options->msg},
         {"--peer", "HEX", "octets of the air interface", &options->peer},
         {"--local", "HEX", "flattened local parameters", &options->local},
         {"--decode", "", "show the decoded octets as well", &options->decode},
         {"-r,--read", "FILE", "the same as FILE", &options->read, {}, completes::file},
         {"-t,--time", "FORMAT", "relative, delta, absolute, epoch or none", &options->times}},
        [options](session &work) { return run(work, *options); },
    };
}

} // namespace solvane::tools
