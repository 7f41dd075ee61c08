// Registration of the peer table, one row at a time: the first row of a name stays.
#include "tt_peer_register.h"

#include <cstdlib>
#include <cstring>

std::uint8_t tt_peer_row_exists(const char *name)
{
    for (std::uint32_t i = 0; i < tt_peer_table.count; i++)
        if (std::strcmp(tt_peer_table.rows[i].name, name) == 0)
            return 1;
    return 0;
}

// The table grows by exactly one row and from the C library's heap: the memory slots belong to the codecs.  There is
// no test of the result; without memory for some kilobytes at start-up the next write may as well fault.
void register_peer_row(const tt_peer_row &row)
{
    if (tt_peer_row_exists(row.name))
        return;
    tt_peer_table.rows = static_cast<tt_peer_row *>(
        std::realloc(tt_peer_table.rows, (tt_peer_table.count + std::size_t{1}) * sizeof(tt_peer_row)));
    tt_peer_table.rows[tt_peer_table.count] = {row.name, row.size, row.pack, row.unpack, 0};
    tt_peer_table.count++;
}

void tt_register_peer_family(tt_peer_family_id family)
{
    const tt_peer_family &rows = tt_peer_families[family];
    for (std::uint32_t i = 0; i < rows.count; i++)
        register_peer_row(rows.rows[i]);
}

void tt_register_target_agent_peers()
{
    tt_register_peer_family(TT_PEER_TARGET_AGENT);
}

// The order of the families decides the order of the rows, and which family a name that several share comes from.
void tt_register_stack_peers()
{
    for (int family = TT_PEER_SM; family <= TT_PEER_UE_POLICY; family++)
        tt_register_peer_family(static_cast<tt_peer_family_id>(family));
}

void tt_register_nr_peers()
{
    tt_register_peer_family(TT_PEER_NR_RRC);
}

const char *tt_print_string()
{
    return "TT_PRINT_STRING";
}
