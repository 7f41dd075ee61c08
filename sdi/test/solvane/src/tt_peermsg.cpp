// Peer message classification: the walk over the index of tt_peermsg_index.h, and the two questions that tables by
// message type cannot answer, UMTS radio resource messages (3GPP TS 25.331 clause 11), which are named by their
// channel.  The tables themselves stand in tt_peermsg_tables.h.
#include "tt_peermsg.h"

#include <cstring>

#include "tt_assert.h"
#include "tt_peermsg_index.h"

using namespace tt_peermsg;

namespace {

constexpr peer_index index = build_index();

bool has_peer_octets(const tt_msg_struct *ilm)
{
    return ilm->peer_buff.no_peer_buff_ptr != 0;
}

// ------------------------------------------------------------------------------------------ by message type

bool carries(const column &tried, const std::uint8_t *octets)
{
    return (octets[tried.discriminator_octet] & tried.discriminator_mask) == tried.discriminator;
}

/// Name of the message in `octets`, which carry one of two protocols.  The octet with the type is read when the
/// discriminator fits, no sooner: it may lie behind the end of a message of another protocol.
const char *name_by_type(unsigned columns, const std::uint8_t *octets)
{
    constexpr unsigned column_mask = (1u << column_bits) - 1;

    const column *found = &index.columns[columns & column_mask];
    if (!carries(*found, octets)) {
        found = &index.columns[columns >> column_bits];
        if (!carries(*found, octets))
            return nullptr;
    }

    const unsigned type = octets[found->type_octet] & found->type_mask;
    const unsigned cell = type - found->first_type; // far above the count for a smaller type
    if (cell >= found->no_cells)
        return nullptr;
    const unsigned name = index.cells[found->first_cell + cell];
    return name != 0 ? &index.names[name] : nullptr;
}

// ------------------------------------------------------------------------------------------ UMTS radio resource

enum rrc_channel { RRC_DCCH, RRC_CCCH, RRC_PCCH, RRC_BCCH_FACH, NO_RRC_CHANNEL };

struct rrc_channel_names {
    const char *uplink;        ///< MSG_ID_RLC_DATA_REQ
    const char *downlink;      ///< MSG_ID_AS_RLC_DATA_IND
    const char *downlink_rrca; ///< MSG_ID_RRCA_AS_RLC_DATA_IND
};

// 3GPP TS 25.331 clause 11.1: the top-level types, by rrc_channel.
constexpr rrc_channel_names rrc_names[NO_RRC_CHANNEL] = {
    {"UL_DCCH_Message", "DL_DCCH_Message",   none},
    {"UL_CCCH_Message", "DL_CCCH_Message",   "DL_CCCH_Message"},
    {none,              "PCCH_Message",      "PCCH_Message"},
    {none,              "BCCH_FACH_Message", none},
};

/// Channel code of the parameter record; a code below 4 is the number of a signalling radio bearer.
rrc_channel channel_of(unsigned code)
{
    if (code < 4)
        return RRC_DCCH;
    switch (code) {
    case 32:
        return RRC_BCCH_FACH;
    case 33:
        return RRC_PCCH;
    case 34:
        return RRC_CCCH;
    default:
        return NO_RRC_CHANNEL;
    }
}

// A block of local parameters is a chain of chunks, padded to a multiple of four octets, without alignment:
//
//     0  offset of a pointer field in the block, which is to hold the address of this chunk's data; little-endian
//     2  octets of data, before padding; little-endian
//     4  data: of the first chunk the parameter record
constexpr unsigned chunk_head_size = 4;

unsigned read_little_endian_16(const std::uint8_t *octets)
{
    return static_cast<unsigned>(octets[0] | octets[1] << 8);
}

/// Octets from the head of a chunk to the head of the next.
unsigned chunk_size(const std::uint8_t *head)
{
    return chunk_head_size + ((read_little_endian_16(head + 2) + 3) & ~3u);
}

/// Sets the pointer fields of a chain and returns the data of its first chunk; null for a chain whose chunks do not
/// end exactly at `length`.
///
/// A pointer field is four octets wide on every build: the low word of the address is stored, so that on a wide
/// build its neighbours stay as they are.  A field or a head that does not lie in the block is left alone.
std::uint8_t *unflatten(std::uint8_t *block, unsigned length)
{
    if (length < chunk_head_size)
        return nullptr;
    unsigned position = chunk_size(block);
    while (position < length && length - position >= chunk_head_size) {
        const std::uint8_t *head  = block + position;
        const unsigned      field = read_little_endian_16(head);
        const auto          address =
            static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(head + chunk_head_size));
        if (field + sizeof address <= length)
            std::memcpy(block + field, &address, sizeof address);
        position += chunk_size(head);
    }
    return position == length ? block + chunk_head_size : nullptr;
}

/// Parameter record of a message, in a copy of the local parameters from the `alloc` slot.
std::uint8_t *copy_parameter_record(const tt_msg_struct *ilm)
{
    const unsigned length = ilm->local_params.no_local_params_ptr;
    auto *block           = static_cast<std::uint8_t *>(dll_info_version.alloc(length, 0, 0, 0));
    dll_info_version.memcpy(block, ilm->local_params.local_params_ptr, length);
    return unflatten(block, length);
}

void free_parameter_record(std::uint8_t *record)
{
    dll_info_version.free(record - chunk_head_size, 0, 0, 0);
}

/// Channel code of a parameter record.  There is no test for a broken chain, whose record is null: no answer could
/// be right, and the fault of this very read is how a host learns of it.
unsigned channel_code(const std::uint8_t *record)
{
    const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(record) + 1;
    return *reinterpret_cast<const volatile std::uint8_t *>(address);
}

/// Name of a UMTS radio resource message.  The copy of the local parameters is freed only where the direction has
/// no such channel.  On all other paths one block a message stays allocated, with or without a name: the operation
/// has always worked so, and a host that watches the memory slots sees the calls that it knows.
const char *name_by_channel(const tt_msg_struct *ilm)
{
    if (!has_peer_octets(ilm) || ilm->local_params.local_params_ptr == nullptr)
        return nullptr;

    const bool        uplink  = ilm->msg_id == MSG_ID_RLC_DATA_REQ;
    std::uint8_t     *record  = copy_parameter_record(ilm);
    const rrc_channel channel = channel_of(channel_code(record));
    if (channel == NO_RRC_CHANNEL || (uplink && rrc_names[channel].uplink == none)) {
        free_parameter_record(record);
        return nullptr;
    }
    if (uplink)
        return rrc_names[channel].uplink;
    return ilm->msg_id == MSG_ID_AS_RLC_DATA_IND ? rrc_names[channel].downlink : rrc_names[channel].downlink_rrca;
}

// ------------------------------------------------------------------------------------------ by entity

unsigned message_number(unsigned msg_id)
{
    return index.slots[index.pages[msg_id / page_size]][msg_id % page_size];
}

const char *stack_peer_name(const tt_msg_struct *ilm)
{
    const unsigned answer  = index.answers[index.groups[ilm->sap_id]][message_number(ilm->msg_id)];
    const unsigned payload = answer & ((1u << payload_bits) - 1);
    const auto    *octets  = ilm->peer_buff.peer_buff_ptr;

    switch (answer >> payload_bits) {
    case BY_TYPE:
        return payload != 0 && has_peer_octets(ilm) && octets != nullptr ? name_by_type(payload, octets) : nullptr;
    case BY_MESSAGE:
        return has_peer_octets(ilm) ? &index.names[payload] : nullptr;
    case DELIVER:
        return octets != nullptr ? &index.names[payload] : nullptr;
    default: // RRC
        return name_by_channel(ilm);
    }
}

// The stacks of these two domains may name the messages at their own access point; in this build they name none.
const char *td_lte_peer_name(std::uint16_t, const std::uint8_t *, std::uint16_t)
{
    return nullptr;
}

const char *nr_peer_name(std::uint16_t, const std::uint8_t *, std::uint16_t)
{
    return nullptr;
}

} // namespace

const char *tt_peer_struct_name(const tt_msg_struct *ilm)
{
    const tt_pdu_data_struct &peer = ilm->peer_buff;

    switch (ilm->dest_entity_id) {
    case ENTITY_STACK:
    case ENTITY_GSM_STACK:
        return stack_peer_name(ilm);
    case ENTITY_TD_LTE_STACK:
        if (ilm->sap_id == TD_LTE_SAP && has_peer_octets(ilm))
            return td_lte_peer_name(ilm->msg_id, peer.peer_buff_ptr, peer.no_peer_buff_ptr);
        return nullptr;
    case ENTITY_NR_STACK:
        if (ilm->sap_id == NR_SAP && has_peer_octets(ilm))
            return nr_peer_name(ilm->msg_id, peer.peer_buff_ptr, peer.no_peer_buff_ptr);
        return nullptr;
    case ENTITY_DEFAULT:
        tt_assert_failed("ilm->dest_entity_id != ENTITY_DEFAULT", "..\\sdi\\test\\solvane\\src\\tt_peermsg", 32);
    default:
        return nullptr;
    }
}

// ------------------------------------------------------------------------------------------ UMTS message types

namespace {

// 3GPP TS 25.331 clause 11.1: the message type choices, in their order.
constexpr const char *pcch_types[2] = {
    "pagingType1",
    "spare",
};

constexpr const char *bcch_fach_types[4] = {
    "systemInformation",
    "systemInformationChangeIndication",
    "spare2",
    "spare1",
};

constexpr const char *ul_ccch_types[4] = {
    "cellUpdate",
    "rrcConnectionRequest",
    "uraUpdate",
    "spare",
};

constexpr const char *dl_ccch_types[8] = {
    "cellUpdateConfirm",
    "rrcConnectionReject",
    "rrcConnectionRelease",
    "rrcConnectionSetup",
    "uraUpdateConfirm",
    "spare3",
    "spare2",
    "spare1",
};

constexpr const char *ul_dcch_types[32] = {
    "activeSetUpdateComplete",
    "activeSetUpdateFailure",
    "cellChangeOrderFromUTRANFailure",
    "counterCheckResponse",
    "handoverToUTRANComplete",
    "initialDirectTransfer",
    "handoverFromUTRANFailure",
    "measurementControlFailure",
    "measurementReport",
    "physicalChannelReconfigurationComplete",
    "physicalChannelReconfigurationFailure",
    "radioBearerReconfigurationComplete",
    "radioBearerReconfigurationFailure",
    "radioBearerReleaseComplete",
    "radioBearerReleaseFailure",
    "radioBearerSetupComplete",
    "radioBearerSetupFailure",
    "rrcConnectionReleaseComplete",
    "rrcConnectionSetupComplete",
    "rrcStatus",
    "securityModeComplete",
    "securityModeFailure",
    "signallingConnectionReleaseIndication",
    "transportChannelReconfigurationComplete",
    "transportChannelReconfigurationFailure",
    "transportFormatCombinationControlFailure",
    "ueCapabilityInformation",
    "uplinkDirectTransfer",
    "utranMobilityInformationConfirm",
    "utranMobilityInformationFailure",
    "spare2",
    "spare1",
};

constexpr const char *dl_dcch_types[32] = {
    "activeSetUpdate",
    "assistanceDataDelivery",
    "cellChangeOrderFromUTRAN",
    "cellUpdateConfirm",
    "counterCheck",
    "downlinkDirectTransfer",
    "handoverFromUTRANCommand_GSM",
    "handoverFromUTRANCommand_CDMA2000",
    "measurementControl",
    "pagingType2",
    "physicalChannelReconfiguration",
    "physicalSharedChannelAllocation",
    "radioBearerReconfiguration",
    "radioBearerRelease",
    "radioBearerSetup",
    "rrcConnectionRelease",
    "securityModeCommand",
    "signallingConnectionRelease",
    "transportChannelReconfiguration",
    "transportFormatCombinationControl",
    "ueCapabilityEnquiry",
    "ueCapabilityInformationConfirm",
    "uplinkPhysicalChannelControl",
    "uraUpdateConfirm",
    "utranMobilityInformation",
    "spare7",
    "spare6",
    "spare5",
    "spare4",
    "spare3",
    "spare2",
    "spare1",
};

/// Where the message type of a channel lies and how its values are called.
struct rrc_type_field {
    unsigned           bit;       ///< from the most significant bit of octet 0
    unsigned           width;     ///< bits; the field spans two octets at most
    bool               protected_; ///< the integrity check info stands ahead of it when the top bit of octet 0 is set
    const char *const *texts;     ///< one for each value
};

// DIFFERS 3GPP TS 25.331 clause 11.3: the integrity check info takes 37 bits with its presence bit; the type is
// looked for 44 bits from the start, as it always has been.
constexpr rrc_type_field dl_dcch_field   = {5 * 8 + 4, 5, true, dl_dcch_types};
constexpr rrc_type_field ul_dcch_field   = {5 * 8 + 4, 5, true, ul_dcch_types};
constexpr rrc_type_field dl_ccch_field   = {5 * 8 + 4, 3, true, dl_ccch_types};
constexpr rrc_type_field ul_ccch_field   = {5 * 8 + 4, 2, true, ul_ccch_types};
constexpr rrc_type_field bcch_fach_field = {0, 2, false, bcch_fach_types};
constexpr rrc_type_field pcch_field      = {0, 1, false, pcch_types};

/// Any channel without a code of its own counts as dedicated here; on uplink that is all but the common one.
const rrc_type_field &type_field_of(rrc_channel channel, bool uplink)
{
    if (uplink)
        return channel == RRC_CCCH ? ul_ccch_field : ul_dcch_field;
    switch (channel) {
    case RRC_CCCH:
        return dl_ccch_field;
    case RRC_PCCH:
        return pcch_field;
    case RRC_BCCH_FACH:
        return bcch_fach_field;
    default:
        return dl_dcch_field;
    }
}

/// `width` bits from bit `bit` of `octet` on, counted from its top, which may run into the next octet.
unsigned read_bits(const std::uint8_t *octet, unsigned bit, unsigned width)
{
    unsigned two = static_cast<unsigned>(octet[0] << 8);
    if (bit + width > 8)
        two |= octet[1];
    return two >> (16 - bit - width) & ((1u << width) - 1);
}

} // namespace

const char *tt_peer_rrc_msg_name(const tt_msg_struct *ilm)
{
    const bool uplink = ilm->msg_id == MSG_ID_RLC_DATA_REQ;
    if ((!uplink && ilm->msg_id != MSG_ID_AS_RLC_DATA_IND) || !has_peer_octets(ilm) ||
        ilm->local_params.local_params_ptr == nullptr)
        return nullptr;

    std::uint8_t     *record  = copy_parameter_record(ilm);
    const rrc_channel channel = channel_of(channel_code(record));
    free_parameter_record(record);

    const rrc_type_field &field  = type_field_of(channel, uplink);
    const std::uint8_t   *octets = ilm->peer_buff.peer_buff_ptr;
    if (field.bit + field.width > 8u * ilm->peer_buff.no_peer_buff_ptr)
        return nullptr;
    if (field.protected_ && (octets[0] & 0x80) == 0)
        return nullptr; // without the integrity check info the place of the type is not known here
    return field.texts[read_bits(octets + field.bit / 8, field.bit % 8, field.width)];
}
