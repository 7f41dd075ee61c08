// Service messages with the agent: what the host asks for, the messages it puts in, the statistics it gets.
#include "tt_mtastruct.h"

#include "tt_mtastruct_parts.h"

namespace {

constexpr std::uint32_t ral_room        = 30;
constexpr std::uint32_t pdu_room        = 32768;
constexpr std::uint32_t task_stats_step = 32;
constexpr const char   *task_stats_too_long = "..\\sdi\\test\\mta\\msg_codec\\src\\tt_mtastruct_req:"
                                              "length of task_stats will not fit length field with width 16.\n";

} // namespace

// ---------------------------------------------------------------------------------- mta_tt_fun_call_struct

void mta_tt_fun_call_pack(pack_info_struct *cursor, const mta_tt_fun_call_struct *value)
{
    per_put_8(cursor, 8, value->command_code);
    per_put_8(cursor, 8, value->no_ral * 2u);
    tt_put_words(cursor, value->ral, value->no_ral);
    per_put_16(cursor, 16, value->no_message);
    per_put_octets(cursor, value->message, value->no_message);
}

void mta_tt_fun_call_rest(mta_tt_fun_call_struct *value, unpack_info_struct *cursor)
{
    value->command_code       = static_cast<std::uint8_t>(per_get_8_checked(cursor, 8));
    const std::uint32_t words = per_get_8_checked(cursor, 8) >> 1;
    value->no_ral             = tt_fitting<std::uint8_t>(cursor, words, 2);
    tt_grow(&value->ral, &value->ral_size, value->no_ral, 0);
    tt_get_words(cursor, value->ral, value->no_ral);

    const std::uint32_t length = per_get_16_checked(cursor, 16);
    value->no_message          = tt_fitting<std::uint16_t>(cursor, length, 1);
    tt_borrow(cursor, &value->message, value->no_message);
}

void mta_tt_fun_call_init(mta_tt_fun_call_struct *value)
{
    tt_clear(value);
    tt_make_array(&value->ral, &value->ral_size, ral_room);
}

void mta_tt_fun_call_free(mta_tt_fun_call_struct *value)
{
    tt_free_array(&value->ral, &value->ral_size);
}

// ---------------------------------------------------------------------------------- tt_msg_struct

void tt_user_data_pack(pack_info_struct *cursor, const tt_user_data_struct *value)
{
    per_put_8(cursor, 8, value->ref_count);
    per_put_16(cursor, 16, value->no_local_params_ptr);
    per_put_octets(cursor, value->local_params_ptr, value->no_local_params_ptr);
}

void tt_user_data_rest(tt_user_data_struct *value, unpack_info_struct *cursor)
{
    tt_user_data_free(value);
    value->ref_count           = static_cast<std::uint8_t>(per_get_8_checked(cursor, 8));
    const std::uint32_t length = per_get_16_checked(cursor, 16);
    value->no_local_params_ptr = tt_fitting<std::uint16_t>(cursor, length, 1);
    tt_borrow(cursor, &value->local_params_ptr, value->no_local_params_ptr);
}

void tt_user_data_init(tt_user_data_struct *value)
{
    tt_clear(value);
    tt_make_array(&value->local_params_ptr, &value->local_params_ptr_size, pdu_room);
}

void tt_user_data_free(tt_user_data_struct *value)
{
    if (value->local_params_ptr_size != 0)
        tt_free_array(&value->local_params_ptr, &value->local_params_ptr_size);
}

void tt_pdu_data_pack(pack_info_struct *cursor, const tt_pdu_data_struct *value)
{
    per_put_16(cursor, 16, value->no_peer_buff_ptr);
    per_put_octets(cursor, value->peer_buff_ptr, value->no_peer_buff_ptr);
    per_put_32(cursor, 32,
               static_cast<std::uint32_t>(value->ref_count) << 24 |
                   static_cast<std::uint32_t>(value->header_len << 16 | value->tail_len << 8));
}

void tt_pdu_data_rest(tt_pdu_data_struct *value, unpack_info_struct *cursor)
{
    tt_pdu_data_free(value);
    const std::uint32_t length = per_get_16_checked(cursor, 16);
    value->no_peer_buff_ptr    = tt_fitting<std::uint16_t>(cursor, length, 1);
    tt_borrow(cursor, &value->peer_buff_ptr, value->no_peer_buff_ptr);

    const std::uint32_t tail = per_get_32_checked(cursor, 32); // the last octet of it is reserved
    value->ref_count         = static_cast<std::uint8_t>(tail >> 24);
    value->header_len        = static_cast<std::uint8_t>(tail >> 16);
    value->tail_len          = static_cast<std::uint8_t>(tail >> 8);
}

void tt_pdu_data_init(tt_pdu_data_struct *value)
{
    tt_clear(value);
    tt_make_array(&value->peer_buff_ptr, &value->peer_buff_ptr_size, pdu_room);
}

void tt_pdu_data_free(tt_pdu_data_struct *value)
{
    if (value->peer_buff_ptr_size != 0)
        tt_free_array(&value->peer_buff_ptr, &value->peer_buff_ptr_size);
}

void tt_msg_pack(pack_info_struct *cursor, const tt_msg_struct *value)
{
    per_put_24(cursor, 24,
               static_cast<std::uint32_t>(value->src_mod_id << 16 | value->dest_mod_id << 8 | value->sap_id));
    per_put_16(cursor, 16, value->msg_id);
    tt_user_data_pack(cursor, &value->local_params);
    tt_pdu_data_pack(cursor, &value->peer_buff);
}

void tt_msg_rest(tt_msg_struct *value, unpack_info_struct *cursor)
{
    const std::uint32_t head = per_get_24_checked(cursor, 24);
    value->src_mod_id        = static_cast<std::uint8_t>(head >> 16);
    value->dest_mod_id       = static_cast<std::uint8_t>(head >> 8);
    value->sap_id            = static_cast<std::uint8_t>(head);
    value->msg_id            = static_cast<std::uint16_t>(per_get_16_checked(cursor, 16));
    tt_user_data_rest(&value->local_params, cursor);
    tt_pdu_data_rest(&value->peer_buff, cursor);
}

void tt_msg_init(tt_msg_struct *value)
{
    tt_clear(value);
    tt_user_data_init(&value->local_params);
    tt_pdu_data_init(&value->peer_buff);
}

void tt_msg_free(tt_msg_struct *value)
{
    tt_user_data_free(&value->local_params);
    tt_pdu_data_free(&value->peer_buff);
}

std::uint32_t tt_msg_size(const tt_msg_struct *value)
{
    constexpr std::uint32_t head = 40, user_data = 24, pdu_data = 48;
    return head + user_data + 8u * value->local_params.no_local_params_ptr + pdu_data +
           8u * value->peer_buff.no_peer_buff_ptr;
}

// ---------------------------------------------------------------------------------- mta_tt_task_profiling_stats

void mta_tt_task_stats_pack(pack_info_struct *cursor, const mta_tt_task_stats *value)
{
    per_put_8(cursor, 8, value->no_task_name);
    per_put_octets(cursor, value->task_name, value->no_task_name);
    per_put_32(cursor, 32, value->num_ticks);
}

void mta_tt_task_stats_rest(mta_tt_task_stats *value, unpack_info_struct *cursor)
{
    const std::uint32_t length = per_get_8_checked(cursor, 8);
    value->no_task_name        = tt_fitting<std::uint8_t>(cursor, length, 1);
    tt_grow(&value->task_name, &value->task_name_size, value->no_task_name, 0);
    per_get_octets(cursor, value->task_name, value->no_task_name);
    value->num_ticks = per_get_32_checked(cursor, 32);
}

void mta_tt_task_stats_init(mta_tt_task_stats *value)
{
    tt_clear(value);
}

void mta_tt_task_stats_free(mta_tt_task_stats *value)
{
    tt_free_array(&value->task_name, &value->task_name_size);
}

void mta_tt_task_profiling_stats_pack(pack_info_struct *cursor, const mta_tt_task_profiling_stats *value)
{
    per_put_8(cursor, 8, value->response);
    per_put_32(cursor, 32, static_cast<std::uint32_t>(value->time_per_tickN) << 16 | value->time_per_tickD);
    const tt_list_place count = tt_open_list(cursor);
    for (std::uint32_t i = 0; i < value->no_task_stats; i++)
        mta_tt_task_stats_pack(cursor, &value->task_stats[i]);
    tt_close_list(cursor, count, task_stats_too_long);
}

/// The entry behind those that are held, grown when needed.  All entries within the capacity are initialised: one
/// that was used before brings its name's array along.
static mta_tt_task_stats *next_task(mta_tt_task_profiling_stats *value)
{
    const std::int32_t before =
        tt_grow(&value->task_stats, &value->task_stats_size, value->no_task_stats + 1u, task_stats_step);
    if (before >= 0)
        for (std::uint32_t i = static_cast<std::uint32_t>(before); i < value->task_stats_size; i++)
            mta_tt_task_stats_init(&value->task_stats[i]);
    return &value->task_stats[value->no_task_stats];
}

void mta_tt_task_profiling_stats_rest(mta_tt_task_profiling_stats *value, unpack_info_struct *cursor)
{
    value->response            = static_cast<std::uint8_t>(per_get_8_checked(cursor, 8));
    const std::uint32_t tick   = per_get_32_checked(cursor, 32);
    value->time_per_tickN      = static_cast<std::uint16_t>(tick >> 16);
    value->time_per_tickD      = static_cast<std::uint16_t>(tick);
    const std::uint32_t octets = per_get_16_checked(cursor, 16);
    const std::uint32_t end    = cursor->bits + octets * 8;

    value->no_task_stats = 0;
    while (cursor->bits < end && tt_has_octets(cursor, 1)) {
        mta_tt_task_stats_rest(next_task(value), cursor);
        value->no_task_stats++;
    }
}

void mta_tt_task_profiling_stats_init(mta_tt_task_profiling_stats *value)
{
    tt_clear(value);
}

void mta_tt_task_profiling_stats_free(mta_tt_task_profiling_stats *value)
{
    for (std::uint32_t i = 0; i < value->task_stats_size; i++)
        mta_tt_task_stats_free(&value->task_stats[i]);
    tt_free_array(&value->task_stats, &value->task_stats_size);
}
