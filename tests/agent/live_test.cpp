// Agent and host against each other over loopback, each on its own process and a port that the system gives.
#include <csignal>
#include <memory>
#include <regex>
#include <sstream>

#include <gtest/gtest.h>

#include "run_tool.h"

namespace solvane::tools::test {
namespace {

using words = std::vector<std::string>;

words operator+(words one, const words &other)
{
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

/// An agent that listens; its port as text.
struct agent {
    running_tool tool;
    std::string  port;

    explicit agent(const words &options) : tool(SOLVANE_AGENT_TOOL, words{"--lib", SOLVANE_PLUGIN} + options)
    {
        const std::string line = tool.line();
        port = line.substr(line.rfind(':') + 1);
        EXPECT_EQ(line, "listening on 127.0.0.1:" + port);
    }
};

words host_words(const std::string &command, const agent &at, const words &more)
{
    return words{"--lib", SOLVANE_PLUGIN, command, "--port", at.port} + more;
}

tool_result host(const std::string &command, const agent &at, const words &more)
{
    return run_tool(host_words(command, at, more));
}

tool_result offline(const words &more)
{
    return run_tool(words{"--lib", SOLVANE_PLUGIN} + more);
}

words lines_of(const std::string &text)
{
    words              out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        out.push_back(line);
    }
    return out;
}

/* Every line in turn has to match its pattern, and no line may be over. */
void expect_lines(const std::string &text, const words &patterns)
{
    const words lines = lines_of(text);
    EXPECT_EQ(lines.size(), patterns.size()) << text;
    for (std::size_t i = 0; i < lines.size() && i < patterns.size(); ++i) {
        EXPECT_TRUE(std::regex_match(lines[i], std::regex(patterns[i]))) << lines[i] << "\nagainst " << patterns[i];
    }
}

TEST(live, shows_all_that_is_played_and_the_recording_shows_the_same)
{
    for (const char *rate : {"2000", "0"}) { /* apart, and as many at once as fit into a read */
        agent          target({"--seed", "5", "-c", "300", "--rate", rate, "--once"});
        temporary_file recording;
        const auto     live = host("connect", target, {"--once", "--record", recording.path()});
        EXPECT_EQ(live.code, 0) << live.out;
        const words shown = lines_of(live.out);
        EXPECT_EQ(shown.size(), 300U + 4U) << "with the question for the build, its answer, and two notes";
        EXPECT_NE(live.out.find("cc_peer_setup_ms_nw_struct"), std::string::npos);
        EXPECT_NE(live.out.find("MTA_TT_PRINT  MTA_CH_"), std::string::npos);
        EXPECT_NE(live.out.find("MTA_TT_STACK_VERSION_RESP  str=\"SOLVANE_V2"), std::string::npos);
        EXPECT_EQ(live.err, "");
        const auto again = offline({"show", recording.path()});
        EXPECT_EQ(again.out, live.out);
        EXPECT_EQ(target.tool.end().code, 0);
    }
}

TEST(live, plays_a_recording_as_it_was)
{
    const std::string script = "start 2026-05-14T08:30:00Z\n"
                               "1.000 in  trace com_tcp.c:153 3 5\n"
                               "1.001 in  words com_tcp.c:153 4 6\n"
                               "1.002 out packet 2121\n"
                               "1.003 in  message src=MOD_CC dest=MOD_MM sap=MM_CC_SAP msg=27 peer=0305\n"
                               "1.004 in  packet 0303000000ff\n";
    temporary_file run(script);
    agent          target({"-r", run.path(), "--once"});
    const auto     live = host("connect", target, {"--once", "--silent", "-t", "none", "--not-grep", "127.0.0.1"});
    EXPECT_EQ(live.code, 0);
    EXPECT_EQ(live.out, "SDI       commlib: waiting connect, connected_num(3),support client_num(5)  (com_tcp.c:153)\n"
                        "SDI       commlib: waiting connect, connected_num(4),support client_num(6)  (com_tcp.c:153)\n"
                        "MOD_CC    > MOD_MM  MSG_ID_MMCC_DATA_REQ  cc_peer_setup_ms_nw_struct  0305\n"
                        "agent     MTA_TT_RESPONSE  ret_val=255\n");
}

TEST(live, filters_by_kind_module_level_text_and_structure)
{
    struct row {
        const char *name;
        words       options;
        const char *every_line;
    };
    const row rows[] = {
        {"kind", {"--only", "messages"}, ".* > MOD_.*"},
        {"module of a trace", {"--module", "RRCA"}, "RRCA  .*"},
        {"module of a message", {"--module", "MOD_CC", "--not-module", "MOD_RRM"}, "MOD_.*MOD_CC .*|MOD_CC .*"},
        {"level", {"--only", "prints", "--level", "1"}, ".* level [01] .*|.*MTA_TT_LOG.*"},
        {"text", {"--grep", "^MTA_TT_PRINT"}, ".*MTA_TT_PRINT.*"},
        {"structure", {"--peer", "cc_peer_*"}, ".*  cc_peer_.*"},
    };
    for (const auto &row : rows) {
        agent      target({"--seed", "8", "-c", "400", "--rate", "0", "--loop"});
        const auto live = host("connect", target, words{"-t", "none", "-q", "-c", "5"} + row.options);
        EXPECT_EQ(lines_of(live.out).size(), 5U) << row.name;
        expect_lines(live.out, words(5, row.every_line));
    }
}

TEST(live, comes_back_after_a_loss)
{
    agent      target({"--seed", "6", "--rate", "1000", "--loop", "--drop-after", "20"});
    const auto live = host("connect", target, {"--only", "link", "-t", "none", "-c", "7"});
    const std::string lost = "link      lost 127.0.0.1:\\d+: the agent closed the connection";
    const std::string ended = "link      the channel dropped something: the connection ended in a packet(, behind .*)?";
    const std::string back = "link      back at 127.0.0.1:\\d+ after \\d+\\.\\d s";
    expect_lines(live.out, {"link      connected to 127.0.0.1:\\d+", ended, lost, back, ended, lost, back});
    EXPECT_EQ(live.code, 1) << "half a packet was lost";
    EXPECT_EQ(target.tool.end(SIGTERM).code, 130);
}

TEST(live, survives_a_restart_of_the_target)
{
    auto         first = std::make_unique<agent>(words{"--seed", "6", "--rate", "100", "--loop"});
    const auto   port = first->port;
    running_tool live(SOLVANE_HOST_TOOL, host_words("connect", *first, {"--only", "link", "-t", "none", "-c", "3"}));
    EXPECT_EQ(live.line(), "link      connected to 127.0.0.1:" + port);
    first.reset(); /* killed: the port refuses for a while */
    EXPECT_EQ(live.line(), "link      lost 127.0.0.1:" + port + ": the agent closed the connection");
    agent second({"--seed", "6", "--rate", "100", "--loop", "--port", port});
    EXPECT_TRUE(std::regex_match(live.line(), std::regex("link      back at 127.0.0.1:\\d+ after \\d+\\.\\d s")));
    EXPECT_EQ(live.end().code, 0);
}

TEST(live, damage_costs_lines_and_never_the_run)
{
    for (const char *seed : {"1", "2", "3"}) {
        agent          target({"--seed", seed, "-c", "600", "--rate", "2000", "--once", "--corrupt", "4"});
        temporary_file recording;
        const auto     live = host("connect", target, {"--once", "--silent", "--record", recording.path()});
        EXPECT_EQ(live.code, 1) << "seed " << seed << "\n" << live.err;
        const words shown = lines_of(live.out);
        EXPECT_GT(shown.size(), 200U) << "seed " << seed << ": the run goes on";
        EXPECT_NE(shown.back().find("lost"), std::string::npos) << shown.back();
        EXPECT_EQ(offline({"show", recording.path()}).out, live.out) << "seed " << seed;
    }
}

TEST(live, tells_loudly_of_another_build)
{
    agent      target({"-c", "20", "--rate", "1000", "--once", "--baseline", "OTHER_V9"});
    const auto live = host("connect", target, {"--once"});
    EXPECT_EQ(live.code, 4);
    EXPECT_NE(live.err.find("WARNING: the target is of build OTHER_V9, the plug-in of build SOLVANE_V2"),
              std::string::npos) << live.err;
}

TEST(live, ends_cleanly_at_an_interrupt)
{
    agent          target({"--seed", "4", "--rate", "500", "--loop"});
    temporary_file recording;
    running_tool   live(SOLVANE_HOST_TOOL, host_words("connect", target, {"--record", recording.path(), "-q"}));
    for (int i = 0; i < 10; ++i) {
        EXPECT_NE(live.line(), "");
    }
    EXPECT_EQ(live.end(SIGINT).code, 130);
    EXPECT_EQ(offline({"show", recording.path()}).code, 0) << "the recording is whole";
    EXPECT_EQ(target.tool.end(SIGINT).code, 130);
}

TEST(commands, are_answered)
{
    struct row {
        const char *send;
        std::string answer;
    };
    const row rows[] = {
        {"MTA_TT_VERSION_REQ", R"(agent     MTA_TT_VERSION_RESP  str="solvane-agent 1.0.0")"},
        {"packet 21", R"(agent     MTA_TT_VERSION_RESP  str="solvane-agent 1.0.0")"},
        {R"(MTA_TT_CALL_FUNC_REQ {"ral":[3,1],"message":"010203"})",
         "agent     MTA_TT_CALL_FUNC_RESP  message=010203"},
        {R"(MTA_TT_SET_VAR_REQ {"from":1,"size":2,"value":"7d7e","ral":[2,5]})",
         "agent     MTA_TT_SET_VAR_RESP  ret_val=0"},
        {R"(MTA_TT_GET_VAR_REQ {"from":1,"ral_info":[{"size":2,"ral":[2,5]}]})",
         R"(agent     MTA_TT_GET_VAR_RESP  var_info=[{dref=0 var_id=0 var="}~"}])"},
        {"MTA_TT_PROF_STATS_REQ", "agent     MTA_TT_PROF_STATS_RESP  time_per_tickN=1 time_per_tickD=32 task_stats="
                                  R"([{task_name="MTA" num_ticks=400} {task_name="NAS" num_ticks=200} )"
                                  R"({task_name="LRRC" num_ticks=100} {task_name="NRRC" num_ticks=50}])"},
        {"MTA_TT_SET_LOG {\"level\":3}", "agent     MTA_TT_RESPONSE  ret_val=0"},
        {"packet 0102", "agent     MTA_TT_ERROR  ret_val=1"},
        {"packet c8c8", "agent     MTA_TT_ERROR  ret_val=200"},
    };
    words       sends;
    std::string expected;
    for (const auto &row : rows) {
        sends = sends + words{"--send", row.send};
        expected += row.answer + "\n";
    }
    agent      target({"--seed", "3", "-c", "1"}); /* a trace */
    const auto live = host("connect", target,
                           words{"-t", "none", "-q", "--silent", "--only", "reports", "-c",
                                 std::to_string(std::size(rows))} + sends);
    EXPECT_EQ(live.out, expected);
    EXPECT_EQ(live.code, 0);
    const auto injected = host("connect", target,
                               {"-t", "none", "--silent", "--only", "messages", "-c", "1", "--send",
                                "MTA_TT_INJECT_MESG {\"message\":\"080731001b01000000020305010000 00\"}"});
    EXPECT_NE(injected.out.find("cc_peer_setup_ms_nw_struct"), std::string::npos) << injected.out << injected.err;
}

TEST(commands, that_make_no_sense_are_refused_before_anything_is_sent)
{
    struct row {
        const char *send;
        const char *err;
    };
    const row rows[] = {
        {"MTA_TT_VERSON_REQ", "no command MTA_TT_VERSON_REQ; did you mean MTA_TT_VERSION_REQ"},
        {"MTA_TT_SET_LOG {\"lewel\":1}", "no member lewel in mta_tt_log_settings_struct; did you mean level?"},
        {"MTA_TT_SET_LOG [1]", "the values are no JSON object"},
        {"packet 0", "a packet is octets in hex"},
        {"99", "no command has the code 99"},
    };
    for (const auto &row : rows) {
        const auto result = offline({"connect", "--port", "9", "--send", row.send});
        EXPECT_EQ(result.code, 2) << row.send;
        EXPECT_NE(result.err.find(row.err), std::string::npos) << result.err;
    }
}

TEST(layout, stands_side_by_side)
{
    agent      same({"-c", "5"});
    const auto nothing = host("layout", same, {});
    EXPECT_EQ(nothing.code, 0);
    EXPECT_EQ(nothing.out, "");

    agent          other({"-c", "5", "--alter", "mta_bit_map_struct.no_bits=8", "--alter", "mta_bit_map_struct=18"});
    temporary_file recording;
    const auto     listed = host("layout", other, {"--domain", "stack", "--record", recording.path()});
    EXPECT_EQ(listed.code, 1);
    EXPECT_EQ(listed.out, "stack          mta_bit_map_struct  18 octets, here 16  no_bits\n");
    const std::string beside = R"(/* stack */
  struct mta_bit_map_struct       target         tool
  no_touple                      0     1      0     1
  offset                         2     2      2     2
! no_bits                        8     2      4     2
  touple                         6    10      6    10
! (size)                              18           16
)";
    EXPECT_EQ(host("layout", other, {"mta_bit_map_struct", "--domain", "stack"}).out, beside);
    EXPECT_EQ(offline({"layout", "mta_bit_map_struct", "--domain", "stack", "-r", recording.path()}).out, beside);
}

TEST(layout, is_refused_where_it_is_not_told)
{
    temporary_file run("0.1 in trace com_tcp.c:153 1 2\n0.2 in packet 0707000100\n");
    const auto     result = offline({"layout", "-r", run.path()});
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.err.find("does not tell the target's layout of infrastructure, stack"), std::string::npos)
        << result.err;
}

TEST(agent_tool, is_refused_with_one_line)
{
    agent taken({"-c", "1"});
    struct row {
        const char *name;
        words       options;
        int         code;
        std::string err;
    };
    const row rows[] = {
        {"a port that is taken", {"--port", taken.port}, 3,
         "solvane-agent: cannot listen on 127.0.0.1:" + taken.port + ": Address already in use\n"},
        {"no port", {"--port", "70000"}, 2, "solvane-agent: 70000 is no port\n"},
        {"no recording", {"-r", "/nonexistent"}, 3, ""},
        {"an alteration of nothing", {"--alter", "no_struct.x=1"}, 2,
         "solvane-agent: no_struct.x=1: no structure has such a member\n"},
        {"no option", {"--speed", "1"}, 2, ""},
    };
    for (const auto &row : rows) {
        running_tool tool(SOLVANE_AGENT_TOOL, words{"--lib", SOLVANE_PLUGIN} + row.options);
        const auto   result = tool.end();
        EXPECT_EQ(result.code, row.code) << row.name;
        EXPECT_TRUE(row.err.empty() || result.err == row.err) << row.name << ": " << result.err;
        EXPECT_EQ(result.out, "") << row.name;
    }
}

TEST(agent_tool, has_help_completion_and_manual_of_its_own)
{
    const auto text_of = [](const words &options) { return running_tool(SOLVANE_AGENT_TOOL, options).end().out; };
    EXPECT_NE(text_of({"--help"}).find("Examples:\n  solvane-agent\n"), std::string::npos);
    EXPECT_NE(text_of({"completion", "bash"}).find("complete -F _solvane_agent solvane-agent"), std::string::npos);
    EXPECT_NE(text_of({"man"}).find("drop\\-after"), std::string::npos);
}

} // namespace
} // namespace solvane::tools::test
