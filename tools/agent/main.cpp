// solvane-agent: stands in for the agent of a target and plays a session to the host that connects.
#include "agent.h"

int main(int argc, char **argv)
{
    return solvane::tools::run_tool(solvane::tools::agent_tool(), argc, argv);
}
