/* The host's header alone is a whole translation unit of C11: nothing before it, nothing beside it. */
#include "solvane/solvane.h"

const void *header_test_exports(void);

const void *header_test_exports(void)
{
    static const void *exports[3];
    exports[0] = &dll_info;
    exports[1] = &dll_info_version;
    exports[2] = &tt_peer_table;
    return exports;
}
