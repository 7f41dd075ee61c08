// The trace decoders over the table of this build.
#include "tsc_libdb_api.h"

#include "tsc_decode.h"
#include "tt_stack_build.h"

namespace {

constexpr tsc_table table = {&tsc_db_info, tsc_mod_first_item};

} // namespace

const char *tsc_trace_text(const std::uint8_t *data)
{
    return tsc_trace_text_info(data, nullptr);
}

const char *tsc_trace_text_int(const std::uint8_t *data, std::uint32_t length)
{
    tsc_trace_info scratch;
    return tsc_trace_text_int_info(data, length, &scratch);
}

const char *tsc_trace_text_info(const std::uint8_t *data, tsc_trace_info *info)
{
    return tsc_decode_string_layout(table, data, info);
}

const char *tsc_trace_text_int_info(const std::uint8_t *data, std::uint32_t length, tsc_trace_info *info)
{
    return tsc_decode_integer_layout(table, data, length, info);
}

tt_bool tsc_trace_lookup(std::uint32_t trace_id, tsc_trace_info *info)
{
    return tsc_look_up(table, trace_id, info) ? 1 : 0;
}

tt_bool tsc_trace_lookup_full(std::uint32_t trace_id, tsc_trace_full_info *full)
{
    return tsc_look_up_full(table, trace_id, full) ? 1 : 0;
}

const tsc_db_info_struct *tsc_db_get(void)
{
    return &tsc_db_info;
}

std::uint32_t tsc_db_total(void)
{
    return tsc_db_info.total;
}

std::uint32_t tsc_db_mod_num(void)
{
    return tsc_db_info.mod_num;
}
