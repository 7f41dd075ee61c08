// Channels of the UE stack group: none in this build.
#pragma once

#include "solvane/solvane.h"

/// Clears the group's rows and their count.
void tt_ue_stack_comm_init();
/// Puts the group's channels on the host's list; with none of its own it shares the target agent's.
void tt_ue_stack_comm_info(comm_info_struct *comm_info);
/// Nothing to do in this group.
void tt_ue_stack_comm_reset();
