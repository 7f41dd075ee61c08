// solvane-host: walks the dictionary of a Solvane plug-in, shows what a target sends, live or recorded.
#include "commands.h"

int main(int argc, char **argv)
{
    return solvane::tools::run_tool(solvane::tools::host_tool(), argc, argv);
}
