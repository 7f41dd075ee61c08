// Layer-3 codecs: nanoseconds to unpack a message and release what it took, and to pack it again, for messages that come
// often; beside them, as the floor, what one would write by hand to take the fields of one of them out of its octets.
// Compare within one run.  `octets` counts octets of air interface a second.
#include <cstdint>
#include <cstring>
#include <iterator>

#include <benchmark/benchmark.h>

#include "cc_msg_def_codec.h"
#include "emm_eps_msg_def_codec.h"
#include "mm_cs_msg_def_codec.h"
#include "ngsm_msg_def_codec.h"
#include "solvane/solvane.h"

namespace {

constexpr std::size_t room_behind = 64;

template <typename Value> struct message {
    void (*pack)(pack_info_struct *stream, const Value *value);
    void (*unpack)(Value *value, unpack_info_struct *stream);
    void (*release)(Value *value); ///< null: it owns nothing
    const char *octets;            ///< hex
};

struct frame {
    explicit frame(const char *hex)
    {
        for (size = 0; hex[2 * size] != '\0'; ++size) {
            octets[size] = static_cast<std::uint8_t>(digit(hex[2 * size]) << 4U | digit(hex[2 * size + 1]));
        }
    }
    static unsigned digit(char c) { return static_cast<unsigned>(c <= '9' ? c - '0' : c - 'a' + 10); }

    std::uint8_t octets[512 + room_behind] = {};
    std::size_t  size = 0;
};

void count_octets(benchmark::State &state, std::size_t size)
{
    state.counters["octets"] = benchmark::Counter(static_cast<double>(size) * static_cast<double>(state.iterations()),
                                                  benchmark::Counter::kIsRate);
}

template <typename Value> void unpack(benchmark::State &state, const message<Value> &of)
{
    frame in(of.octets);
    Value value = {};
    for (auto unused : state) {
        (void)unused;
        PerError           error = {};
        unpack_info_struct stream = {in.octets, 0, static_cast<std::int32_t>(in.size), &error};
        of.unpack(&value, &stream);
        if (of.release != nullptr) {
            of.release(&value);
        }
        benchmark::DoNotOptimize(value);
    }
    count_octets(state, in.size);
}

template <typename Value> void pack(benchmark::State &state, const message<Value> &of)
{
    frame              in(of.octets);
    Value              value = {};
    PerError           error = {};
    unpack_info_struct source = {in.octets, 0, static_cast<std::int32_t>(in.size), &error};
    of.unpack(&value, &source);
    std::uint8_t out[512] = {};
    for (auto unused : state) {
        (void)unused;
        pack_info_struct stream = {out, 0};
        of.pack(&stream, &value);
        benchmark::DoNotOptimize(out);
    }
    if (std::memcmp(out, in.octets, in.size) != 0) {
        state.SkipWithError("packs to other octets");
    }
    if (of.release != nullptr) {
        of.release(&value);
    }
    count_octets(state, in.size);
}

/* The fields of a LOCATION UPDATING REQUEST (TS 24.008 §9.2.15) with a TMSI, each by its octet. */
struct lu_request {
    std::uint8_t  skip_ind, pro_discr, type, update_type, key_sequence, mcc[3], mnc[3], classmark, id_type;
    std::uint16_t lac;
    std::uint32_t tmsi;
};

void by_hand(benchmark::State &state)
{
    frame      in("05087000f11000013305f40000002a");
    lu_request value = {};
    for (auto unused : state) {
        (void)unused;
        benchmark::DoNotOptimize(in);
        const std::uint8_t *o = in.octets;
        value = {static_cast<std::uint8_t>(o[0] >> 4), static_cast<std::uint8_t>(o[0] & 15), o[1],
                 static_cast<std::uint8_t>(o[2] & 3), static_cast<std::uint8_t>(o[2] >> 4 & 7),
                 {static_cast<std::uint8_t>(o[3] & 15), static_cast<std::uint8_t>(o[3] >> 4), static_cast<std::uint8_t>(o[4] & 15)},
                 {static_cast<std::uint8_t>(o[5] & 15), static_cast<std::uint8_t>(o[5] >> 4), static_cast<std::uint8_t>(o[4] >> 4)},
                 o[8], 0, static_cast<std::uint16_t>(o[6] << 8 | o[7]), 0};
        if (o[9] <= in.size - 10 && (o[10] & 7) == 4) {
            value.id_type = 4;
            value.tmsi = static_cast<std::uint32_t>(o[11]) << 24 | static_cast<std::uint32_t>(o[12] << 16) |
                         static_cast<std::uint32_t>(o[13] << 8) | o[14];
        }
        benchmark::DoNotOptimize(value);
    }
    count_octets(state, in.size);
}
BENCHMARK(by_hand);

#define MESSAGE(name, release, octets)                                                                                 \
    const message<name##_struct> name = {name##_pack, name##_unpack, release, octets};                                 \
    void unpack_##name(benchmark::State &state) { unpack(state, name); }                                               \
    void pack_##name(benchmark::State &state) { pack(state, name); }                                                   \
    BENCHMARK(unpack_##name);                                                                                          \
    BENCHMARK(pack_##name)

MESSAGE(mm_peer_lu_req, nullptr, "05087000f11000013305f40000002a");
MESSAGE(mm_peer_lu_acc, mm_peer_lu_acc_release, "050200f11000011705f40000002b");
MESSAGE(emm_peer_attach_req, emm_peer_attach_req_release, "0741710bf600f110800101c000002a02e0e000040201d011");
MESSAGE(emm_peer_attach_accept, emm_peer_attach_accept_release,
        "07420149060000f110000100115201c1010905047465737405010a000001500bf600f110800101c000002b");
MESSAGE(emm_peer_auth_req, nullptr, "075200a0a1a2a3a4a5a6a7a8a9aaabacadaeaf10b0b1b2b3b4b58000b8b9babbbcbdbebf");
MESSAGE(emm_peer_auth_rsp, nullptr, "075308c0c1c2c3c4c5c6c7");
MESSAGE(emm_peer_tau_req, emm_peer_tau_req_release, "0748080bf600f110800101c000002a5200f11000015c0a005702200031040000c010");
MESSAGE(emm_peer_smc, emm_peer_smc_release, "075d210002e0e0");
MESSAGE(cc_peer_setup_ms_nw, cc_peer_setup_ms_nw_release, "030504066004020005815e0481515510");
MESSAGE(pdu_session_establishment_accept, pdu_session_establishment_accept_release,
        "2e0101c211000901000631310101ff01060600640600642905010a000001");

} // namespace
