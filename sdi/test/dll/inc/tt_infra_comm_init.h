// Channels of the infrastructure group: the target agent's.
#pragma once

#include "solvane/solvane.h"

/// Clears the logical rows of the group and fills those of the target agent.  The first step of init_dll.
void tt_infra_comm_init();
/// Puts the group's channels on the host's list.
void tt_infra_comm_info(comm_info_struct *comm_info);
/// Nothing to do in this group.
void tt_infra_comm_reset();
