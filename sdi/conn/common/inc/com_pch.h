// Physical channels: connections to the target, each driven by a transport.
//
// This build registers no transport: a channel cannot be added, and every other operation finds none.
#pragma once

#include <cstdint>

#include "solvane/solvane.h"

void com_init();
/// Index of the new channel, or -1 when there is none to be had.
std::int32_t com_pch_add(const com_pch_attr *attr);
void com_pch_start(std::int32_t pch, std::uint32_t entry, std::uint32_t priority, std::uint32_t stack_size);
void com_pch_stop(std::int32_t pch);
void com_pch_remove(std::int32_t pch);
