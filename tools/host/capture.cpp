#include "capture.h"

#include <fmt/format.h>

#include "peer_message.h"
#include "upper_pdu.h"

namespace solvane::tools {

std::string baseline_of(const plugin &loaded)
{
    const auto  all = domains_of(loaded);
    const char *baseline = all.empty() ? nullptr : all[0].row->uuid;
    return baseline != nullptr ? baseline : "";
}

recording_writer recording_to(pcapng_writer::sink to, session &work)
{
    const plugin &loaded = work.started();
    return {std::move(to), fmt::format("{} {}", running_tool().name, tool_version),
            fmt::format("plug-in interface {}, baseline {}", loaded.version->version_text, baseline_of(loaded))};
}

std::optional<octets> decoded_record(session &work, const packet &what)
{
    if (const auto line = decode_trace(work.started(), what)) {
        return line->known ? std::optional(log_record(*line, what.time)) : std::nullopt;
    }
    std::string complaint;
    const auto  message = carries_message(what)
                              ? parse_layer_message(std::span(what.content).subspan(1), complaint)
                              : std::nullopt;
    if (!message) {
        return std::nullopt;
    }
    const auto entity =
        static_cast<std::uint8_t>(work.settings.domain.empty() ? ENTITY_STACK : work.domains()[0].number);
    const auto dissector = dissector_of(classify(work.started(), *message, entity).name);
    return dissector.empty() ? std::nullopt : std::optional(upper_pdu(dissector, message->peer));
}

} // namespace solvane::tools
