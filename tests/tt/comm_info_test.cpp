// The list of channels against the environment, and the parsers of serial settings.
//
// The list is built once a process, so each case that builds it runs in a child.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <unistd.h>

#include "tt_comm_info.h"
#include "tt_infra_comm_init.h"
#include "tt_ue_stack_comm_init.h"

namespace {

struct parser_case {
    const char *name;
    std::uint32_t (*parse)(const char *text);
    const char   *text;
    std::uint32_t index;
    const char   *message; ///< on standard output
};

const parser_case parser_cases[] = {
    {"lowest baud rate",     parse_baud_rate,    "50",       0,  ""},
    {"highest baud rate",    parse_baud_rate,    "256000",   21, ""},
    {"digits decide",        parse_baud_rate,    "9600x",    12, ""},
    {"22 is not a rate",     parse_baud_rate,    "22",       23, "Invalid baud rate 22\n"},
    {"no digits",            parse_baud_rate,    "fast",     23, "Invalid baud rate fast\n"},
    {"parity in capitals",   parse_parity,       "EVEN",     2,  ""},
    {"last parity",          parse_parity,       "space",    4,  ""},
    {"bad parity",           parse_parity,       "none",     5,  "Invalid parity none\nValid values are : no, odd, even, mark, space\n"},
    {"stop bits",            parse_stop_bits,    "1_5",      1,  ""},
    {"stop bits as offered", parse_stop_bits,    "1.5",      3,  "Invalid stop bits 1.5\nValid values are : 1, 1.5, 2\n"},
    {"flow control",         parse_flow_control, "HwDtrDsr", 3,  ""},
    {"bad flow control",     parse_flow_control, "",         4,  "Invalid flow control \nValid values are : no, sw, hwctsrts, hwdtrdsr\n"},
    {"input mode",           parse_input_mode,   "noncan",   1,  ""},
    {"bad input mode",       parse_input_mode,   "raw",      2,  "Invalid input mode raw\nValid values are : can, noncan\n"},
    {"char size",            parse_char_size,    "8",        4,  ""},
    {"bad char size",        parse_char_size,    "9",        5,  "Invalid char size 9\n"},
};

TEST(serial_settings, give_an_index_or_say_what_is_wrong)
{
    for (const parser_case &row : parser_cases) {
        SCOPED_TRACE(row.name);
        testing::internal::CaptureStdout();
        const std::uint32_t index = row.parse(row.text);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), row.message);
        EXPECT_EQ(index, row.index);
    }
}

/// Inside a child: ends it, saying so, when something does not hold.
#define REQUIRE(condition)                                                                                            \
    do {                                                                                                              \
        if (!(condition)) {                                                                                           \
            std::fprintf(stderr, "does not hold: %s\n", #condition);                                                  \
            std::exit(1);                                                                                             \
        }                                                                                                             \
    } while (false)

/// Runs start-up and builds the list, with the variables as given (null: not set).  Standard output goes to
/// standard error, where a death test looks.
comm_info_struct *built_with(const char *port, const char *address)
{
    dup2(2, 1);
    port == nullptr ? unsetenv("MS_MTA_RECV_PORT") : setenv("MS_MTA_RECV_PORT", port, 1);
    address == nullptr ? unsetenv("MS_ADDR") : setenv("MS_ADDR", address, 1);
    tt_infra_comm_init();
    tt_ue_stack_comm_init();
    return tt_comm_info_get();
}

void expect_the_agent_turned_round()
{
    const comm_info_struct *info = built_with("4600", "127.0.0.1");
    REQUIRE(info->no_of_pch == 1);
    const ttcore_pch &pch = info->ttcore_pch_list[0];
    REQUIRE(std::string_view(pch.name) == "MS_MTA_RECV");
    REQUIRE(pch.attr->direction == COM_BOTH && pch.attr->driver == COM_DRIVER_TCP);
    REQUIRE(pch.attr->u.tcp.server == 0 && pch.attr->u.tcp.port == 4600);
    REQUIRE(std::string_view(pch.attr->u.tcp.address) == "127.0.0.1");
    REQUIRE(pch.no_of_lch == 2);
    REQUIRE(pch.lch_list[0].direction == COM_TRANSMIT && pch.lch_list[1].direction == COM_RECEIVE);
    REQUIRE(pch.lch_list[0].lch_flag == 1 && pch.lch_list[1].lch_flag == 1 && pch.lch_list[1].lch_word == 0);
    REQUIRE(info->stack_word == -1 && info->stack_word_2 == -1 && info->infra_word[1] == 0);
    REQUIRE(tt_comm_info_get() == info && tt_comm_info_reset() == 1 && tt_comm_info_free() == 1);
    std::exit(0);
}

void expect_port(const char *text, std::uint16_t port)
{
    REQUIRE(built_with(text, "x")->ttcore_pch_list[0].attr->u.tcp.port == port);
    std::exit(0);
}

void build_after_release()
{
    built_with("1", "x");
    tt_comm_info_free();
    tt_comm_info_get();
}

TEST(comm_info_death, turns_the_agents_channel_round)
{
    EXPECT_EXIT(expect_the_agent_turned_round(), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(expect_port("abc", 0), testing::ExitedWithCode(0), "");
}

TEST(comm_info_death, ends_the_process_when_a_setting_is_missing)
{
    EXPECT_EXIT(built_with(nullptr, "x"), testing::ExitedWithCode(255),
                "^Environment variable MS_MTA_RECV_PORT not set\n$");
    EXPECT_EXIT(built_with("1", nullptr), testing::ExitedWithCode(255),
                "^Environment variable for server address \\(MS_ADDR\\) not set\n$");
}

TEST(comm_info_death, is_not_built_a_second_time)
{
    EXPECT_DEATH(build_after_release(), "Assertion failed: comm_info != 0");
}

/// Puts one channel of `driver` on a list of its own.  No group of this build has these transports.
const com_pch_desc &listed(std::uint32_t driver)
{
    static com_pch_desc     pch;
    static com_lch_desc     lch;
    static comm_info_struct info;
    static ttcore_pch       list[5];
    dup2(2, 1);
    info.ttcore_pch_list = list;
    pch.name = "LINE";
    pch.port_var = "LINE_PORT";
    pch.from_env = 1;
    pch.com_port = 7;
    pch.attr.driver = driver;
    if (driver == COM_DRIVER_SOCKET)
        pch.attr.u.tcp.address = "LINE_ADDR";
    lch = {.pch_name = pch.name, .direction = COM_BOTH, .kind = 0, .valid = 1};
    tt_comm_info_add(&info, {{&pch, 1}, {&lch, 1}}, 0, 0, 0, 0);
    REQUIRE(info.no_of_pch == 1 && list[0].lch_list[0].direction == COM_BOTH);
    return pch;
}

void expect_serial_line(const char *parity)
{
    setenv("COM7_BAUD_RATE", "115200", 1);
    setenv("COM7_PARITY", parity, 1);
    setenv("COM7_STOP_BITS", "2", 1);
    setenv("COM7_FLOW_CONTROL", "sw", 1);
    setenv("COM7_INPUT_MODE", "noncan", 1);
    setenv("COM7_CHAR_SIZE", "8", 1);
    const com_pch_desc    &pch = listed(COM_DRIVER_SERIAL);
    const com_serial_attr &line = pch.attr.u.serial;
    REQUIRE(line.baud_rate == 18 && line.parity == 1 && line.stop_bits == 2 && line.flow_control == 1);
    REQUIRE(line.input_mode == 1 && line.char_size == 4 && pch.from_env == 1);
    std::exit(0);
}

void expect_second_socket()
{
    setenv("LINE_PORT", "99", 1);
    const com_pch_desc &pch = listed(COM_DRIVER_SOCKET);
    REQUIRE(pch.attr.u.tcp.port == 99 && pch.attr.u.tcp.server == 1 && pch.from_env == 0);
    std::exit(0);
}

TEST(comm_info_death, resolves_the_other_transports)
{
    EXPECT_EXIT(expect_serial_line("odd"), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(expect_serial_line("uneven"), testing::ExitedWithCode(255), "Invalid parity uneven");
    EXPECT_EXIT(listed(COM_DRIVER_SERIAL), testing::ExitedWithCode(255),
                "^Environment variable for baud rate\\(COM7_BAUD_RATE\\) not set\n$");
    EXPECT_EXIT(expect_second_socket(), testing::ExitedWithCode(0), "LINE_ADDR\\) not set");
}

} // namespace
