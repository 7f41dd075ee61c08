// Peer message classification: which air-interface structure the octets of an inter-layer message are.
//
// Looks at the entity, the service access point, the message identifier and the first octets of the peer buffer;
// nothing is unpacked.  Both operations keep no state and are safe from any thread.  A name is constant data.
#pragma once

#include "solvane/solvane.h"

/// Name of the structure in the peer buffer of `ilm`, or null when none applies; slot 8 of `dll_info`.
///
/// The buffer is read up to octet 3 whatever its length, as long as that is not 0: a caller pads short messages.
/// A UMTS radio resource message takes its name from the local parameters, a copy of which is taken from the
/// `alloc` slot; on the paths that name a message the copy is not released.  A block of local parameters whose
/// chunks do not add up to its length ends in a fault.  A message to ENTITY_DEFAULT ends in an assertion.
const char *tt_peer_struct_name(const tt_msg_struct *ilm);

/// Text of the message type of a UMTS radio resource message, MSG_ID_RLC_DATA_REQ or MSG_ID_AS_RLC_DATA_IND, by the
/// type order of 3GPP TS 25.331; null for any other message, for one without peer octets or local parameters, and
/// for one whose type field does not lie in the buffer.  Nothing in the library calls it: it fixes the vocabulary.
const char *tt_peer_rrc_msg_name(const tt_msg_struct *ilm);
