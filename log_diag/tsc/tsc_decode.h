// The trace decoders and look-ups over any trace table; tsc_libdb_api.h tells their contracts.
#pragma once

#include <cstdint>

#include "solvane/solvane.h"
#include "tsc_search.h"

/// Characters of a line, the terminating zero included.
inline constexpr std::uint32_t TSC_LINE_SIZE = 1024;

const char *tsc_decode_string_layout(const tsc_table &table, const std::uint8_t *data, tsc_trace_info *info);
const char *tsc_decode_integer_layout(const tsc_table &table, const std::uint8_t *data, std::uint32_t length,
                                      tsc_trace_info *info);

bool tsc_look_up(const tsc_table &table, std::uint32_t trace_id, tsc_trace_info *info);
bool tsc_look_up_full(const tsc_table &table, std::uint32_t trace_id, tsc_trace_full_info *full);
