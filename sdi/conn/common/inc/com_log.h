// The recorder: keeps a copy of every packet that the host sends, in a `.logel` file.
//
// On only when the process's setting "LogelDebug" begins with `1`; "LogelDir" names the folder, "LogelProgram" a word
// for the file's name.  A record is the packet's length, 4 octets in the host's order, and the packet without framing.
// Silent in every failure.  Runs on the thread that writes, one at a time.
#pragma once

#include <cstdint>

#include "pf_system.h"

/// Records one packet; decides at its first call whether there is a recording at all.
void com_log_packet(const std::uint8_t *data, std::uint32_t length);

/// The present time in UTC with the precision of the performance counter.
void com_log_time(pf_date_time *out);

/// False when the setting "EnableTrace" begins with `0`.
bool com_log_trace_enabled();
