// Peer message classification: nanoseconds a message on a mix such as a trace holds, beside the two-level switch that
// one would write by hand for the very messages of the mix.  Compare the two within one run; the counter `ratio` of
// the second is the switch's time over the library's.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include "solvane/solvane.h"
#include "tt_peermsg.h"

namespace {

// ------------------------------------------------------------------------------------------ the switch

const char *call_control(unsigned msg_id, const std::uint8_t *octets)
{
    if ((octets[0] & 0x0F) != 3)
        return nullptr;
    switch (octets[1]) {
    case 0x01:
        return msg_id == 27 ? "cc_peer_ms_nw_alerting_struct" : "cc_peer_nw_ms_alerting_struct";
    case 0x05:
        return msg_id == 27 ? "cc_peer_setup_ms_nw_struct" : nullptr;
    case 0x07:
        return msg_id == 27 ? "cc_peer_connect_ms_nw_struct" : "cc_peer_connect_nw_ms_struct";
    case 0x0F:
        return "cc_peer_connect_acknowledge_struct";
    case 0x25:
        return msg_id == 27 ? "cc_peer_disconnect_ms_nw_struct" : "cc_peer_disconnect_nw_ms_struct";
    case 0x2A:
        return msg_id == 27 ? "cc_peer_release_complete_ms_nw_struct" : "cc_peer_release_complete_nw_ms_struct";
    case 0x2D:
        return msg_id == 27 ? "cc_peer_release_ms_nw_struct" : "cc_peer_release_nw_ms_struct";
    default:
        return nullptr;
    }
}

const char *mobility(unsigned msg_id, const std::uint8_t *octets)
{
    if ((octets[0] & 0x0F) == 8)
        switch (octets[1] & 0x3F) {
        case 0x01:
            return msg_id == 24 ? "gmm_peer_attach_req_struct" : nullptr;
        case 0x02:
            return msg_id == 21 ? "gmm_peer_attach_acc_struct" : nullptr;
        case 0x03:
            return msg_id == 24 ? "gmm_peer_attach_com_struct" : nullptr;
        case 0x08:
            return msg_id == 24 ? "gmm_peer_rau_req_struct" : nullptr;
        case 0x09:
            return msg_id == 21 ? "gmm_peer_rau_acc_struct" : nullptr;
        case 0x12:
            return msg_id == 21 ? "gmm_peer_auth_cipher_req_struct" : nullptr;
        case 0x13:
            return msg_id == 24 ? "gmm_peer_auth_cipher_rsp_struct" : nullptr;
        default:
            return nullptr;
        }
    if ((octets[0] & 0x0F) != 5)
        return nullptr;
    switch (octets[1] & 0x3F) {
    case 0x02:
        return msg_id == 21 ? "mm_peer_lu_acc_struct" : nullptr;
    case 0x08:
        return msg_id == 24 ? "mm_peer_lu_req_struct" : nullptr;
    case 0x12:
        return msg_id == 21 ? "mm_peer_authentication_req_struct" : nullptr;
    case 0x24:
        return msg_id == 24 ? "mm_peer_cm_service_req_struct" : nullptr;
    case 0x32:
        return msg_id == 21 ? "mm_peer_information_struct" : nullptr;
    default:
        return nullptr;
    }
}

const char *radio_resource(unsigned kind, const std::uint8_t *octets)
{
    switch (kind) {
    case 1:
        if ((octets[0] & 0x0F) != 6)
            return nullptr;
        switch (octets[1]) {
        case 0x29:
            return "rr_peer_assign_comp_struct";
        case 0x32:
            return "rr_peer_cipher_mode_comp_struct";
        default:
            return nullptr;
        }
    case 2:
        return (octets[0] & 0x0F) == 6 && octets[1] == 0x15 ? "rr_peer_meas_report_struct" : nullptr;
    case 3:
        if ((octets[0] & 0x0F) != 6)
            return nullptr;
        switch (octets[1]) {
        case 0x2E:
            return "rr_peer_assign_cmd_struct";
        case 0x35:
            return "rr_peer_cipher_mode_cmd_struct";
        default:
            return nullptr;
        }
    case 5:
        if ((octets[1] & 0x0F) != 6)
            return nullptr;
        switch (octets[2]) {
        case 0x19:
            return "rr_peer_sysinfo_type1_struct";
        case 0x1A:
            return "rr_peer_sysinfo_type2_struct";
        case 0x1B:
            return "rr_peer_sysinfo_type3_struct";
        case 0x1C:
            return "rr_peer_sysinfo_type4_struct";
        default:
            return nullptr;
        }
    case 6:
        if ((octets[1] & 0x0F) != 6)
            return nullptr;
        switch (octets[2]) {
        case 0x21:
            return "rr_peer_paging_type1_struct";
        case 0x3F:
            return "rr_peer_immediate_assign_struct";
        default:
            return nullptr;
        }
    default:
        return nullptr;
    }
}

const char *eps_mobility(unsigned msg_id)
{
    switch (msg_id) {
    case 9556:
        return "emm_peer_attach_req_struct";
    case 9557:
        return "emm_peer_attach_accept_struct";
    case 9558:
        return "emm_peer_attach_complete_struct";
    case 9563:
        return "emm_peer_tau_req_struct";
    case 9564:
        return "emm_peer_tau_accept_struct";
    case 9572:
        return "emm_peer_auth_req_struct";
    case 9573:
        return "emm_peer_auth_rsp_struct";
    case 9587:
        return "emm_peer_service_req_struct";
    default:
        return nullptr;
    }
}

const char *eps_session(unsigned msg_id)
{
    switch (msg_id) {
    case 9588:
        return "activate_default_eps_bearer_context_req_struct";
    case 9589:
        return "activate_default_eps_bearer_context_acc_struct";
    case 9599:
        return "pdn_connectivity_req_struct";
    case 9607:
        return "esm_information_req_struct";
    default:
        return nullptr;
    }
}

__attribute__((noinline)) const char *by_switch(const tt_msg_struct *ilm)
{
    if ((ilm->dest_entity_id != ENTITY_STACK && ilm->dest_entity_id != ENTITY_GSM_STACK) ||
        ilm->peer_buff.no_peer_buff_ptr == 0)
        return nullptr;
    const std::uint8_t *octets = ilm->peer_buff.peer_buff_ptr;
    switch (ilm->sap_id) {
    case 49:
        return ilm->msg_id == 27 || ilm->msg_id == 32 ? call_control(ilm->msg_id, octets) : nullptr;
    case 51:
    case 84:
        return ilm->msg_id >= 21 && ilm->msg_id <= 26 ? mobility(ilm->msg_id, octets) : nullptr;
    case 163:
        return eps_mobility(ilm->msg_id);
    case 166:
        return eps_session(ilm->msg_id);
    case 255:
        return radio_resource(ilm->msg_id, octets);
    default:
        return nullptr;
    }
}

// ------------------------------------------------------------------------------------------ the mix

struct mix_row {
    unsigned     weight;
    std::uint8_t sap_id;
    unsigned     msg_id;
    std::uint8_t octets[3];
};

// A call and an attach among measurement reports and system information; messages between layers without an
// air-interface body are the other half of what a stack says.
constexpr mix_row mix_rows[] = {
    {60, 12, 700, {0, 0, 0}},        {40, 60, 4711, {0, 0, 0}},       {20, 200, 9690, {0, 0, 0}},
    {20, 255, 2, {0x06, 0x15, 0}},   {8, 255, 5, {0x55, 0x06, 0x19}}, {8, 255, 5, {0x59, 0x06, 0x1A}},
    {8, 255, 5, {0x49, 0x06, 0x1B}}, {8, 255, 5, {0x31, 0x06, 0x1C}}, {8, 255, 6, {0x31, 0x06, 0x21}},
    {3, 255, 6, {0x2D, 0x06, 0x3F}}, {2, 255, 3, {0x06, 0x2E, 0}},    {2, 255, 1, {0x06, 0x29, 0}},
    {2, 255, 3, {0x06, 0x35, 0}},    {2, 255, 1, {0x06, 0x32, 0}},    {2, 51, 24, {0x05, 0x08, 0}},
    {2, 51, 21, {0x05, 0x02, 0}},    {2, 51, 21, {0x05, 0x12, 0}},    {2, 51, 24, {0x05, 0x64, 0}},
    {2, 51, 21, {0x05, 0x32, 0}},    {2, 51, 24, {0x08, 0x01, 0}},    {2, 51, 21, {0x08, 0x02, 0}},
    {2, 51, 24, {0x08, 0x03, 0}},    {2, 84, 24, {0x08, 0x08, 0}},    {2, 84, 21, {0x08, 0x09, 0}},
    {2, 51, 21, {0x08, 0x12, 0}},    {2, 51, 24, {0x08, 0x13, 0}},    {2, 49, 27, {0x03, 0x05, 0}},
    {2, 49, 32, {0x83, 0x01, 0}},    {2, 49, 32, {0x83, 0x07, 0}},    {2, 49, 27, {0x03, 0x0F, 0}},
    {2, 49, 27, {0x03, 0x25, 0}},    {2, 49, 32, {0x83, 0x2D, 0}},    {2, 49, 27, {0x03, 0x2A, 0}},
    {3, 163, 9556, {0x07, 0x41, 0}}, {3, 163, 9557, {0x07, 0x42, 0}}, {3, 163, 9558, {0x07, 0x43, 0}},
    {3, 163, 9563, {0x07, 0x48, 0}}, {3, 163, 9564, {0x07, 0x49, 0}}, {3, 163, 9572, {0x07, 0x52, 0}},
    {3, 163, 9573, {0x07, 0x53, 0}}, {6, 163, 9587, {0xC7, 0, 0}},    {3, 166, 9588, {0x02, 0, 0xC1}},
    {3, 166, 9589, {0x02, 0, 0xC2}}, {3, 166, 9599, {0x02, 0, 0xD0}}, {2, 166, 9607, {0x02, 0, 0xD9}},
};

/// 16384 messages, each with a buffer of its own.
struct mix {
    std::vector<std::uint8_t>  octets;
    std::vector<tt_msg_struct> messages;

    mix()
    {
        constexpr std::size_t count = 16384;
        std::vector<unsigned> weights;
        for (const mix_row &row : mix_rows)
            weights.push_back(row.weight);
        std::mt19937                            random(1);
        std::discrete_distribution<std::size_t> draw(weights.begin(), weights.end());

        octets.resize(count * 4);
        messages.resize(count);
        for (std::size_t i = 0; i < count; i++)
            fill(i, mix_rows[draw(random)]);
    }

    void fill(std::size_t i, const mix_row &row)
    {
        tt_msg_struct &ilm = messages[i];
        std::memcpy(&octets[i * 4], row.octets, 3);
        ilm.dest_entity_id             = row.sap_id == 255 ? ENTITY_GSM_STACK : ENTITY_STACK;
        ilm.sap_id                     = row.sap_id;
        ilm.msg_id                     = static_cast<std::uint16_t>(row.msg_id);
        ilm.peer_buff.no_peer_buff_ptr = row.octets[0] + row.octets[1] + row.octets[2] != 0 ? 3 : 0;
        ilm.peer_buff.peer_buff_ptr    = &octets[i * 4];
        check(ilm);
    }

    /// The two ways must give the same names, or the comparison means nothing.
    static void check(const tt_msg_struct &ilm)
    {
        const char *one = tt_peer_struct_name(&ilm), *other = by_switch(&ilm);
        if (one != nullptr && other != nullptr ? std::strcmp(one, other) != 0 : one != other) {
            std::fprintf(stderr, "sap %u msg %u: %s, by switch %s\n", ilm.sap_id, ilm.msg_id, one ? one : "-",
                         other ? other : "-");
            std::exit(1);
        }
    }
};

const mix &the_mix()
{
    static const mix messages;
    return messages;
}

template <const char *(*Classify)(const tt_msg_struct *)> double nanoseconds_a_message()
{
    const auto start = std::chrono::steady_clock::now();
    for (const tt_msg_struct &ilm : the_mix().messages)
        benchmark::DoNotOptimize(Classify(&ilm));
    const std::chrono::duration<double, std::nano> passed = std::chrono::steady_clock::now() - start;
    return passed.count() / static_cast<double>(the_mix().messages.size());
}

// The two take turns, and the smallest of many rounds counts: the machine is not ours alone.
void classify_mix(benchmark::State &state)
{
    the_mix();
    double library = 1e9, by_hand = 1e9;
    for (auto _ : state) {
        library = std::min(library, nanoseconds_a_message<tt_peer_struct_name>());
        by_hand = std::min(by_hand, nanoseconds_a_message<by_switch>());
    }
    state.counters["library_ns"] = library;
    state.counters["switch_ns"]  = by_hand;
    state.counters["ratio"]      = by_hand / library;
}
BENCHMARK(classify_mix)->Iterations(2000)->Unit(benchmark::kMicrosecond);

// A UMTS radio resource message on a channel without a name: the copy, its chain, its release.
void classify_by_channel(benchmark::State &state)
{
    std::uint8_t  local[8] = {0, 0, 4, 0, 0, 40, 0, 0}, peer[4] = {};
    tt_msg_struct ilm      = {};
    ilm.dest_entity_id     = ENTITY_STACK;
    ilm.sap_id             = 126;
    ilm.msg_id             = 3;
    ilm.local_params       = {0, sizeof local, sizeof local, local};
    ilm.peer_buff          = {0, 0, 0, sizeof peer, sizeof peer, peer};
    for (auto _ : state)
        benchmark::DoNotOptimize(tt_peer_struct_name(&ilm));
}
BENCHMARK(classify_by_channel);

} // namespace
