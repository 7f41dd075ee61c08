// Service messages between the host and the agent on the target: what the library itself packs and restores.
//
// Integers are unsigned, most significant octet first; a stream stands on an octet boundary throughout.  A count
// `no_x` is the number of elements now held, `x_size` the capacity of the array beside it.
//
// Ownership.  `init` clears a structure and gives it arrays of a size that spares growing; `rest` wants a structure
// that was initialised or cleared, and grows its arrays where they are too small; `free` releases the arrays and
// nothing else.  Large bodies (`message`, `local_params_ptr`, `peer_buff_ptr`) are not copied by `rest`: they point
// into the received octets, are good only as long as those live, and are never released.
//
// Errors.  A pack function cannot fail; the caller owes the room.  A restore does not pass the end of its frame: what
// does not fit in it is left out, with a count of 0, and a hard error stands in the cursor's error record.
#pragma once

#include <cstdint>

#include "mta_service_def.h"
#include "solvane/solvane.h"

SOLVANE_ILP32_SIZE(mta_string_struct, 8);
SOLVANE_ILP32_SIZE(mta_tt_fun_call_struct, 16);
SOLVANE_ILP32_SIZE(mta_tt_fun_call_resp_struct, 12);
SOLVANE_ILP32_SIZE(mta_tt_offsize_resp_struct, 28);

/* mta_string_struct: a length octet, the octets. */
void mta_string_pack(pack_info_struct *cursor, const mta_string_struct *value);
void mta_string_rest(mta_string_struct *value, unpack_info_struct *cursor);
void mta_string_init(mta_string_struct *value);
void mta_string_free(mta_string_struct *value);

/* mta_tt_fun_call_struct: command, octets of `ral` in one octet, `ral`, `message` behind its length.  Up to 127 words
 * of `ral` can be told; a count of octets that is odd is rounded down, and the next field is read from there. */
void mta_tt_fun_call_pack(pack_info_struct *cursor, const mta_tt_fun_call_struct *value);
void mta_tt_fun_call_rest(mta_tt_fun_call_struct *value, unpack_info_struct *cursor);
void mta_tt_fun_call_init(mta_tt_fun_call_struct *value);
void mta_tt_fun_call_free(mta_tt_fun_call_struct *value);

/* mta_tt_fun_call_resp_struct: report, a reserved octet, `message` behind its length. */
void mta_tt_fun_call_resp_pack(pack_info_struct *cursor, const mta_tt_fun_call_resp_struct *value);
void mta_tt_fun_call_resp_rest(mta_tt_fun_call_resp_struct *value, unpack_info_struct *cursor);
void mta_tt_fun_call_resp_init(mta_tt_fun_call_resp_struct *value);
void mta_tt_fun_call_resp_free(mta_tt_fun_call_resp_struct *value);

/* mta_tt_offsize_resp_struct: a piece of the layout tables of a domain.  `response` and `seg_id` go out as octets and
 * come back cut to four bits. */
void mta_tt_offsize_resp_pack(pack_info_struct *cursor, const mta_tt_offsize_resp_struct *value);
void mta_tt_offsize_resp_rest(mta_tt_offsize_resp_struct *value, unpack_info_struct *cursor);
void mta_tt_offsize_resp_init(mta_tt_offsize_resp_struct *value);
void mta_tt_offsize_resp_free(mta_tt_offsize_resp_struct *value);

/* The place of one bit-field in 15 octets, all its octets told, used or not. */
void mta_bit_map_pack(pack_info_struct *cursor, const mta_bit_map_struct *value);
void mta_bit_map_rest(mta_bit_map_struct *value, unpack_info_struct *cursor);

/* tt_msg_struct, an inter-layer message, without its two entity ids: a restore leaves those as they were.  The arrays
 * that `tt_msg_init` makes are for a message that is to be put together; a restore releases them.  A capacity of 0
 * marks octets that belong to someone else. */
void tt_msg_pack(pack_info_struct *cursor, const tt_msg_struct *value);
void tt_msg_rest(tt_msg_struct *value, unpack_info_struct *cursor);
void tt_msg_init(tt_msg_struct *value);
void tt_msg_free(tt_msg_struct *value);
/// Bits that tt_msg_pack writes, for the allocation of the buffer.
std::uint32_t tt_msg_size(const tt_msg_struct *value);

void tt_user_data_pack(pack_info_struct *cursor, const tt_user_data_struct *value);
void tt_user_data_rest(tt_user_data_struct *value, unpack_info_struct *cursor);
void tt_user_data_init(tt_user_data_struct *value);
void tt_user_data_free(tt_user_data_struct *value);

void tt_pdu_data_pack(pack_info_struct *cursor, const tt_pdu_data_struct *value);
void tt_pdu_data_rest(tt_pdu_data_struct *value, unpack_info_struct *cursor);
void tt_pdu_data_init(tt_pdu_data_struct *value);
void tt_pdu_data_free(tt_pdu_data_struct *value);

/* mta_tt_task_profiling_stats: report, length of a tick, the tasks. */
void mta_tt_task_profiling_stats_pack(pack_info_struct *cursor, const mta_tt_task_profiling_stats *value);
void mta_tt_task_profiling_stats_rest(mta_tt_task_profiling_stats *value, unpack_info_struct *cursor);
void mta_tt_task_profiling_stats_init(mta_tt_task_profiling_stats *value);
void mta_tt_task_profiling_stats_free(mta_tt_task_profiling_stats *value);

void mta_tt_task_stats_pack(pack_info_struct *cursor, const mta_tt_task_stats *value);
void mta_tt_task_stats_rest(mta_tt_task_stats *value, unpack_info_struct *cursor);
void mta_tt_task_stats_init(mta_tt_task_stats *value);
void mta_tt_task_stats_free(mta_tt_task_stats *value);
