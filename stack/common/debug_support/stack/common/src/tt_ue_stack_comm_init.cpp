// Channels of the UE stack group.  The group defines none: the debug protocol for non-volatile memory goes over
// the channel of the target agent.
#include "tt_ue_stack_comm_init.h"

#include <array>
#include <cstring>

#include "tt_assert.h"
#include "tt_comm_info.h"

namespace {

std::array<com_pch_desc, 8>  pch_descs;
std::array<com_lch_desc, 12> lch_descs;
std::uint32_t                no_pchs;

/// 0 when a channel of this name is on the list, -1 when none is.
std::int32_t find_listed(const comm_info_struct *comm_info, const char *name)
{
    for (std::uint32_t n = 0; n < comm_info->no_of_pch; ++n)
        if (std::strcmp(comm_info->ttcore_pch_list[n].name, name) == 0)
            return 0;
    return -1;
}

} // namespace

void tt_ue_stack_comm_init()
{
    for (com_lch_desc &lch : lch_descs)
        lch.valid = 0;
    no_pchs = 0;
}

void tt_ue_stack_comm_info(comm_info_struct *comm_info)
{
    const char *name = lch_descs[0].pch_name;
    // An empty group has no name to look for and nothing to complain of.
    if (name != nullptr) {
        std::int32_t nvm_pch = tt_find_pch({{pch_descs.data(), no_pchs}, lch_descs}, name);
        if (nvm_pch == -1)
            nvm_pch = find_listed(comm_info, name);
        tt_assert(nvm_pch != -1, "nvm_pch != -1",
                  R"(..\stack\common\debug_support\stack\common\src\tt_ue_stack_comm_init)", __LINE__);
    }
    comm_info->stack_word = -1;
    comm_info->stack_octet = 0;
    comm_info->stack_word_2 = -1;
    comm_info->stack_octet_2 = 0;
    comm_info->stack_octet_3 = 0;
}

void tt_ue_stack_comm_reset() {}
