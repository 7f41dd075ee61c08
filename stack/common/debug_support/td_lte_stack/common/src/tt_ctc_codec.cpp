// Messages of the UE test control protocol, 3GPP TS 36.509 clause 6 and TS 38.509 clause 6.
#include "tt_ctc_codec.h"

#include <cstring>

namespace {

constexpr std::uint8_t discriminator = 15; ///< 3GPP TS 24.007 clause 11.2.3.1.1; the skip indicator above it is 0

// Message types.
constexpr std::uint8_t close_ue_test_loop   = 128;
constexpr std::uint8_t open_ue_test_loop    = 130;
constexpr std::uint8_t activate_test_mode   = 132;
constexpr std::uint8_t deactivate_test_mode = 134;
constexpr std::uint8_t nssai_delete_request = 166;

constexpr unsigned     lb_setup_octets = 3;
constexpr std::uint8_t drb_id_mask     = 31;

std::uint8_t low_octet(std::uint32_t value)
{
    return static_cast<std::uint8_t>(value);
}

void put_header(std::uint8_t *frame, std::uint8_t type)
{
    frame[0] = discriminator;
    frame[1] = type;
}

template <class Message> Message *with_header(void *value, std::uint8_t type)
{
    auto *message                   = static_cast<Message *>(value);
    message->protocol_discriminator = discriminator;
    message->message_type           = type;
    return message;
}

/// Whole entries in a list of that many octets, as far as the structure has room for them.
unsigned no_entries(std::uint32_t list_octets)
{
    const unsigned count = list_octets / lb_setup_octets;
    return count < CTC_MAX_LB_SETUP ? count : CTC_MAX_LB_SETUP;
}

} // namespace

void CTC_MSG_ACTIVATE_TEST_MODE_s_encode(const void *value, std::uint8_t *frame, std::uint32_t *length)
{
    put_header(frame, activate_test_mode);
    frame[2] = low_octet(static_cast<const CTC_MSG_ACTIVATE_TEST_MODE_s *>(value)->test_loop_mode);
    *length  = 3;
}

std::int32_t CTC_MSG_ACTIVATE_TEST_MODE_s_decode(void *value, const std::uint8_t *frame, std::uint32_t *)
{
    with_header<CTC_MSG_ACTIVATE_TEST_MODE_s>(value, activate_test_mode)->test_loop_mode = frame[2];
    return 0;
}

void CTC_MSG_DEACTIVATE_TEST_MODE_s_encode(const void *, std::uint8_t *frame, std::uint32_t *length)
{
    put_header(frame, deactivate_test_mode);
    *length = 2;
}

std::int32_t CTC_MSG_DEACTIVATE_TEST_MODE_s_decode(void *value, const std::uint8_t *, std::uint32_t *)
{
    with_header<CTC_MSG_DEACTIVATE_TEST_MODE_s>(value, deactivate_test_mode);
    return 0;
}

void CTC_MSG_OPEN_UE_TEST_LOOP_s_encode(const void *, std::uint8_t *frame, std::uint32_t *length)
{
    put_header(frame, open_ue_test_loop);
    *length = 2;
}

std::int32_t CTC_MSG_OPEN_UE_TEST_LOOP_s_decode(void *value, const std::uint8_t *, std::uint32_t *)
{
    with_header<CTC_MSG_OPEN_UE_TEST_LOOP_s>(value, open_ue_test_loop);
    return 0;
}

// DIFFERS 3GPP TS 36.509 clause 6.1: an entry goes out with the low octet of its size less the low four bits, then
// the low four bits alone, where the size should stand in 16 bits as the decoder reads it.  Test equipment works with
// what these two octets have always been, so the two directions do not invert each other.
void CTC_MSG_CLOSE_UE_TEST_LOOP_s_encode(const void *value, std::uint8_t *frame, std::uint32_t *length)
{
    const auto *message = static_cast<const CTC_MSG_CLOSE_UE_TEST_LOOP_s *>(value);

    put_header(frame, close_ue_test_loop);
    frame[2] = low_octet(message->mode);
    if (message->mode == 0) {
        const auto &list = message->loop.a;
        frame[3]         = low_octet(list.length);
        for (unsigned i = 0; i < no_entries(list.length); i++) {
            const ctc_lb_setup &entry = list.entries[i];
            std::uint8_t       *octet = frame + 4 + i * lb_setup_octets;
            octet[0]                  = low_octet(entry.uplink_sdu_bits & 0xF0u);
            octet[1]                  = low_octet(entry.uplink_sdu_bits & 0x0Fu);
            octet[2]                  = low_octet(entry.drb_id - 1u);
        }
        *length = list.length + 4;
    } else if (message->mode == 1) {
        frame[3] = low_octet(message->loop.b.ip_pdu_delay);
        *length  = 4;
    }
}

std::int32_t CTC_MSG_CLOSE_UE_TEST_LOOP_s_decode(void *value, const std::uint8_t *frame, std::uint32_t *)
{
    auto *message = with_header<CTC_MSG_CLOSE_UE_TEST_LOOP_s>(value, close_ue_test_loop);

    message->mode = frame[2];
    if (message->mode == 0) {
        auto &list  = message->loop.a;
        list.length = frame[3];
        for (unsigned i = 0; i < no_entries(list.length); i++) {
            const std::uint8_t *octet       = frame + 4 + i * lb_setup_octets;
            list.entries[i].uplink_sdu_bits = static_cast<std::uint16_t>(octet[0] << 8 | octet[1]);
            list.entries[i].drb_id          = static_cast<std::uint8_t>((octet[2] & drb_id_mask) + 1);
        }
    } else if (message->mode == 1) {
        message->loop.b.ip_pdu_delay = frame[3];
    }
    return 0;
}

void CTC_MSG_NSSAI_DELETE_REQUEST_s_encode(const void *value, std::uint8_t *frame, std::uint32_t *length)
{
    const auto *message = static_cast<const CTC_MSG_NSSAI_DELETE_REQUEST_s *>(value);

    put_header(frame, nssai_delete_request);
    frame[2] = low_octet(message->nssai_type);
    *length  = 3;
    if (message->nssai_type == 1 && message->first.present == 1) {
        std::memcpy(frame + 3, message->first.plmn, CTC_NSSAI_PLMN_OCTETS);
        *length = 6;
    } else if (message->nssai_type == 2 && message->second.present == 1) {
        std::memcpy(frame + 3, message->second.plmn, CTC_NSSAI_PLMN_OCTETS);
        frame[6] = low_octet(message->second.access);
        *length  = 7;
    }
}

/// Sets no more than the header: what is to be deleted is for the receiver to read.
std::int32_t CTC_MSG_NSSAI_DELETE_REQUEST_s_decode(void *value, const std::uint8_t *, std::uint32_t *)
{
    with_header<CTC_MSG_NSSAI_DELETE_REQUEST_s>(value, nssai_delete_request);
    return 0;
}
