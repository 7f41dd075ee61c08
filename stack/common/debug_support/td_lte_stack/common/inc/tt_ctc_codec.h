// Messages of the UE test control protocol, 3GPP TS 36.509 clause 6 and TS 38.509 clause 6, as the air message tables
// code them: counted in octets.
//
// Encoders write the message to `frame`, whose room the caller owes, and its octets to `length`.  Decoders test
// nothing: they take the octets that their message has, set the discriminator and the type to those of the message
// whatever the frame says, and return 0.  They do not look at `length`.
#pragma once

#include <cstdint>

inline constexpr unsigned CTC_MAX_LB_SETUP      = 8; ///< data radio bearers of a test loop
inline constexpr unsigned CTC_NSSAI_PLMN_OCTETS = 3;

struct CTC_MSG_ACTIVATE_TEST_MODE_s {
    std::uint32_t protocol_discriminator;
    std::uint32_t message_type;
    std::uint32_t test_loop_mode;
};
static_assert(sizeof(CTC_MSG_ACTIVATE_TEST_MODE_s) == 12);

struct CTC_MSG_DEACTIVATE_TEST_MODE_s {
    std::uint32_t protocol_discriminator;
    std::uint32_t message_type;
};
static_assert(sizeof(CTC_MSG_DEACTIVATE_TEST_MODE_s) == 8);

struct CTC_MSG_OPEN_UE_TEST_LOOP_s {
    std::uint32_t protocol_discriminator;
    std::uint32_t message_type;
};
static_assert(sizeof(CTC_MSG_OPEN_UE_TEST_LOOP_s) == 8);

struct ctc_lb_setup {
    std::uint16_t uplink_sdu_bits; ///< size of the PDCP SDUs that go back
    std::uint8_t  drb_id;          ///< 1 to 32
};

struct CTC_MSG_CLOSE_UE_TEST_LOOP_s {
    std::uint32_t protocol_discriminator;
    std::uint32_t message_type;
    std::uint32_t mode; ///< selects the case of `loop`
    union {
        struct {
            std::uint32_t length; ///< octets of the list on the air, three an entry
            ctc_lb_setup  entries[CTC_MAX_LB_SETUP];
        } a; ///< mode 0
        struct {
            std::uint32_t ip_pdu_delay; ///< seconds
        } b; ///< mode 1
    } loop;
};
static_assert(sizeof(CTC_MSG_CLOSE_UE_TEST_LOOP_s) == 48);

struct ctc_nssai {
    std::uint8_t  present; ///< 1: the element is there
    std::uint8_t  plmn[CTC_NSSAI_PLMN_OCTETS];
    std::uint32_t access; ///< low octet on the air, behind the second element only
};

struct CTC_MSG_NSSAI_DELETE_REQUEST_s {
    std::uint32_t protocol_discriminator;
    std::uint32_t message_type;
    std::uint32_t nssai_type; ///< 1: `first` follows, 2: `second`
    ctc_nssai     first;
    ctc_nssai     second;
};
static_assert(sizeof(CTC_MSG_NSSAI_DELETE_REQUEST_s) == 28);

#define CTC_CODEC(name)                                                                                              \
    void         name##_encode(const void *value, std::uint8_t *frame, std::uint32_t *length);                       \
    std::int32_t name##_decode(void *value, const std::uint8_t *frame, std::uint32_t *length);
CTC_CODEC(CTC_MSG_ACTIVATE_TEST_MODE_s)
CTC_CODEC(CTC_MSG_DEACTIVATE_TEST_MODE_s)
CTC_CODEC(CTC_MSG_OPEN_UE_TEST_LOOP_s)
CTC_CODEC(CTC_MSG_CLOSE_UE_TEST_LOOP_s)
CTC_CODEC(CTC_MSG_NSSAI_DELETE_REQUEST_s)
#undef CTC_CODEC
