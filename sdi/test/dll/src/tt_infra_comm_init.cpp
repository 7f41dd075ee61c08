// Channels of the infrastructure group: one connection to the target agent with a channel in each direction.
//
// The rows are written as the target sees them: it serves, receives the host's commands on the first logical
// channel and sends on the second.
#include "tt_infra_comm_init.h"

#include <array>

#include "tt_assert.h"
#include "tt_comm_info.h"

namespace {

constexpr char unit[] = R"(..\sdi\test\dll\src\tt_infra_comm_init)";

enum { READER_LCH, SENDER_LCH }; // rows of the target agent's two channels

std::array<com_pch_desc, 8> pch_descs;
std::array<com_lch_desc, 6> lch_descs;
std::uint32_t               no_pchs;

tt_comm_group group()
{
    return {{pch_descs.data(), no_pchs}, lch_descs};
}

} // namespace

void tt_infra_comm_init()
{
    for (com_lch_desc &lch : lch_descs)
        lch.valid = 0;

    com_pch_desc &pch = pch_descs[0];
    pch = {};
    pch.name = "MS_MTA_RECV";
    pch.port_var = "MS_MTA_RECV_PORT";
    pch.from_env = 1;
    pch.attr.direction = COM_BOTH;
    pch.attr.driver = COM_DRIVER_TCP;
    pch.attr.u.tcp.server = 1;
    pch.attr.u.tcp.address = "MS_ADDR";
    pch.stack_size = 10000;
    pch.priority = 223;
    no_pchs = 1;

    lch_descs[READER_LCH] = {.pch_name = pch.name, .direction = COM_RECEIVE, .kind = 2, .valid = 1};
    lch_descs[SENDER_LCH] = {.pch_name = pch.name, .direction = COM_TRANSMIT, .kind = 1, .valid = 1};
}

void tt_infra_comm_info(comm_info_struct *comm_info)
{
    const std::int32_t mta_rdr_pch = tt_find_pch(group(), lch_descs[READER_LCH].pch_name);
    tt_assert(mta_rdr_pch != -1, "mta_rdr_pch != -1", unit, __LINE__);
    const std::int32_t mta_pch = tt_find_pch(group(), lch_descs[SENDER_LCH].pch_name);
    tt_assert(mta_pch != -1, "mta_pch != -1", unit, __LINE__);

    tt_comm_info_add(comm_info, group(), mta_rdr_pch, READER_LCH, 1, 0)->lch_ready = 0;
    tt_comm_info_add(comm_info, group(), mta_pch, SENDER_LCH, 1, 0)->lch_ready = 0;
    comm_info->infra_word[0] = 0;
    comm_info->infra_word[1] = 0;
}

void tt_infra_comm_reset() {}
