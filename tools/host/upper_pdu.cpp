#include "upper_pdu.h"

#include <algorithm>
#include <string>

namespace solvane::tools {

namespace {

enum tag : std::uint16_t { tag_end = 0, tag_dissector = 12, tag_table = 14, tag_table_value = 32 };

constexpr std::uint32_t log_type = 16; /* GSMTAP_TYPE of a log record */
constexpr std::uint8_t  log_level = 1; /* debug */
constexpr std::size_t   name_room = 16, file_room = 32;

struct dissector_row {
    const char      *structures; ///< a pattern of `matches`; the first row that fits is taken
    std::string_view dissector;
};

constexpr dissector_row dissectors[] = {
    {"Lte_BCCH_BCH_Message", "lte_rrc.bcch_bch"},
    {"Lte_BCCH_DL_SCH_Message", "lte_rrc.bcch_dl_sch"},
    {"Lte_PCCH_Message", "lte_rrc.pcch"},
    {"Lte_MCCH_Message", "lte_rrc.mcch"},
    {"Lte_DL_CCCH_Message", "lte_rrc.dl_ccch"},
    {"Lte_DL_DCCH_Message", "lte_rrc.dl_dcch"},
    {"Lte_UL_CCCH_Message", "lte_rrc.ul_ccch"},
    {"Lte_UL_DCCH_Message", "lte_rrc.ul_dcch"},
    {"Lte_UE_EUTRA_Capability", "lte-rrc.ue_eutra_cap"},
    {"Lte_RRCConnectionReconfiguration", "lte-rrc.rrc_conn_reconf"},
    {"Nr_BCCH_BCH_Message", "nr-rrc.bcch.bch"},
    {"Nr_BCCH_DL_SCH_Message", "nr-rrc.bcch.dl.sch"},
    {"Nr_PCCH_Message", "nr-rrc.pcch"},
    {"Nr_DL_CCCH_Message", "nr-rrc.dl.ccch"},
    {"Nr_DL_DCCH_Message", "nr-rrc.dl.dcch"},
    {"Nr_UL_CCCH_Message", "nr-rrc.ul.ccch"},
    {"Nr_UL_CCCH1_Message", "nr-rrc.ul.ccch1"},
    {"Nr_UL_DCCH_Message", "nr-rrc.ul.dcch"},
    {"Nr_RRCReconfiguration", "nr-rrc.rrc_reconf"},
    {"Nr_RadioBearerConfig", "nr-rrc.radiobearerconfig"},
    {"Nr_UE_NR_Capability", "nr-rrc.ue_nr_cap"},
    {"Nr_UE_MRDC_Capability", "nr-rrc.ue_mrdc_cap"},
    {"BCCH_BCH_Message", "rrc.bcch.bch"},
    {"BCCH_FACH_Message", "rrc.bcch.fach"},
    {"PCCH_Message", "rrc.pcch"},
    {"DL_CCCH_Message", "rrc.dl.ccch"},
    {"DL_DCCH_Message", "rrc.dl.dcch"},
    {"UL_CCCH_Message", "rrc.ul.ccch"},
    {"UL_DCCH_Message", "rrc.ul.dcch"},
    {"rr_peer_sysinfo_type5*", "gsm_a_sacch"},
    {"rr_peer_sysinfo_type6*", "gsm_a_sacch"},
    {"rr_peer_sysinfo_*", "gsm_a_ccch"},
    {"rr_peer_paging_type*", "gsm_a_ccch"},
    {"rr_peer_immediate_assign*", "gsm_a_ccch"},
    {"rr_peer_*", "gsm_a_dtap"},
    {"nas_peer_paging_rsp_struct", "gsm_a_dtap"},
    {"mm_peer_*", "gsm_a_dtap"},
    {"gmm_peer_*", "gsm_a_dtap"},
    {"cc_peer_*_struct", "gsm_a_dtap"},
    {"ciss_peer_*", "gsm_a_dtap"},
    {"sms_cp_*", "gsm_a_dtap"},
    {"*_pdp_context_*", "gsm_a_dtap"},
    {"sm_status_struct", "gsm_a_dtap"},
    {"sm_notification_struct", "gsm_a_dtap"},
    {"mnm_sms_*", "gsm_sms"},
    {"emm_peer_*", "nas-eps"},
    {"*_eps_bearer_context_*", "nas-eps"},
    {"pdn_*", "nas-eps"},
    {"bearer_resource_*", "nas-eps"},
    {"esm_*", "nas-eps"},
    {"ngmm_peer_*", "nas-5gs"},
    {"pdu_session_*", "nas-5gs"},
    {"ngsm_status_struct", "nas-5gs"},
};

void put(octets &into, std::uint32_t number, unsigned size)
{
    while (size-- > 0) {
        into.push_back(static_cast<std::uint8_t>(number >> (8 * size)));
    }
}

/* Text in a field of its own width, zero octets behind it and at least one. */
void put_text(octets &into, std::string_view text, std::size_t room)
{
    const std::size_t length = std::min(text.size(), room - 1);
    into.insert(into.end(), text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length));
    into.resize(into.size() + room - length);
}

void put_tag(octets &into, tag which, std::string_view value)
{
    const std::size_t padded = (value.size() + 3) / 4 * 4;
    put(into, which, 2);
    put(into, static_cast<std::uint32_t>(padded), 2);
    into.insert(into.end(), value.begin(), value.end());
    into.resize(into.size() + padded - value.size());
}

} // namespace

std::string_view dissector_of(std::string_view structure)
{
    for (const auto &row : dissectors) {
        const std::string pattern = row.structures;
        const bool        whole = pattern.find('*') == std::string::npos;
        if (whole ? structure == pattern : matches(structure, pattern)) {
            return row.dissector;
        }
    }
    return {};
}

octets upper_pdu(std::string_view dissector, std::span<const std::uint8_t> message)
{
    octets out;
    put_tag(out, tag_dissector, dissector);
    put_tag(out, tag_end, {});
    out.insert(out.end(), message.begin(), message.end());
    return out;
}

octets log_record(const trace_line &line, std::optional<std::int64_t> time)
{
    constexpr std::int64_t second = 1'000'000'000;
    octets                 out;
    octets                 value;
    put(value, log_type, 4);
    put_tag(out, tag_table, "gsmtap.type");
    put_tag(out, tag_table_value, {reinterpret_cast<const char *>(value.data()), value.size()});
    put_tag(out, tag_end, {});
    put(out, static_cast<std::uint32_t>(time.value_or(0) / second), 4);
    put(out, static_cast<std::uint32_t>(time.value_or(0) % second / 1000), 4);
    put_text(out, "target", name_room);
    put(out, 0, 4); /* process */
    put(out, log_level, 1);
    put(out, 0, 3);
    put_text(out, line.module, name_room);
    put_text(out, line.file, file_room);
    put(out, static_cast<std::uint32_t>(line.line), 4);
    const std::string_view text(line.text.data(), std::min(line.text.find_last_not_of("\r\n") + 1, line.text.size()));
    out.insert(out.end(), text.begin(), text.end());
    return out;
}

} // namespace solvane::tools
