// The trace table and its decoders, as the host calls them: slots 46 and 54 to 61 of `dll_info`.
//
// The target sends a trace statement's id and its arguments; the text was kept back when the stack was built and
// stands in the trace table.  Two layouts exist, and the host knows which one it was sent:
//
//   string layout    0  trace id, 32 bits, big-endian
//                    4  number of argument octets, 32 bits, big-endian
//                    8  argument texts, each ended by an octet 0x01; the last may go without
//   integer layout   0  trace id, 32 bits, in the host's octet order
//                    4  one such word an argument
//
// The decoders answer a zero-terminated text: either constant, or in the one text buffer that they share and that
// stays as it is until the next decoding.  So one thread at a time decodes.  `data` need not be aligned, and holds
// all the octets that its count or `length` tells.  Failures come as text too:
//
//   "ERROR: can not find in tsc_db!!!"            unknown id; the info record gets the values of an unknown id
//   "ERROR: invalid trace id integer data!!!"     a length of 0 or not a multiple of 4; the same
//   " -- ERROR: arg_num is not match!!! -- "      behind a line that wanted more arguments; each missing one is a
//                                                 `?` in the line.  Arguments too many are passed over in silence
//
// A line of 1024 or more characters, a conversion text of 129 or more, and a table of fewer than two items end
// the process.  The look-ups and the accessors read constant data only: any thread may call them.
#pragma once

#include <cstdint>

#include "solvane/solvane.h"

/// Line of a trace in string layout.  Each conversion of the format takes one argument text, whatever its letter;
/// flags, width and precision have no effect.  `info`, when not null, gets what is known of the id.
const char *tsc_trace_text_info(const std::uint8_t *data, tsc_trace_info *info);

/// Line of a trace in integer layout of `length` octets.  Each conversion formats one word as the C library's
/// printf does with a 32-bit `int` or `long`; `s` is not a conversion letter here.  `info` as above.
const char *tsc_trace_text_int_info(const std::uint8_t *data, std::uint32_t length, tsc_trace_info *info);

/// The older pair: the same without an info record.
const char *tsc_trace_text(const std::uint8_t *data);
const char *tsc_trace_text_int(const std::uint8_t *data, std::uint32_t length);

/// Whether the table has an id.  The record, when not null, gets what is known of it, or at a miss the values of
/// an unknown id.
tt_bool tsc_trace_lookup(std::uint32_t trace_id, tsc_trace_info *info);
tt_bool tsc_trace_lookup_full(std::uint32_t trace_id, tsc_trace_full_info *full);

/// The table itself, its number of items (the closing one included) and of modules.
const tsc_db_info_struct *tsc_db_get(void);
std::uint32_t             tsc_db_total(void);
std::uint32_t             tsc_db_mod_num(void);
