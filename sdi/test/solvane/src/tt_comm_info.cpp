// The host's list of channels: resolving descriptors against the environment, turning them round, and the
// parsers of serial settings.  Messages go to standard output; a missing setting ends the process.
#include "tt_comm_info.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include "tt_assert.h"
#include "tt_infra_comm_init.h"
#include "tt_ue_stack_comm_init.h"

namespace {

constexpr char unit[] = R"(..\sdi\test\solvane\src\tt_comm_info)";

// Rows that the lists hold; the groups together stay below them.
constexpr std::uint32_t max_pchs = 5;
constexpr std::uint32_t max_lchs = 5;

comm_info_struct *comm_info;
bool              first_call = true;

// ------------------------------------------------------------------------------------------ serial settings

/// Index of the word that equals `text` without regard to case; the number of words, after `complaint`, if none.
template <std::size_t count>
std::uint32_t parse_word(const char *text, const std::array<const char *, count> &words, const char *complaint)
{
    for (std::uint32_t n = 0; n < count; ++n)
        if (strcasecmp(text, words[n]) == 0)
            return n;
    std::printf(complaint, text);
    return count;
}

/// Index of the number that `text` begins with; `invalid`, after `complaint`, if it is none of them.
template <std::size_t count>
std::uint32_t parse_number(const char *text, const std::array<int, count> &numbers, std::uint32_t invalid,
                           const char *complaint)
{
    const int number = std::atoi(text);
    for (std::uint32_t n = 0; n < count; ++n)
        if (numbers[n] == number)
            return n;
    std::printf(complaint, text);
    return invalid;
}

/// A setting of a serial line, read from the environment.
struct serial_setting {
    const char *variable; ///< with the port's number for %u
    const char *missing;  ///< what is printed when it is not set
    std::uint32_t (*parse)(const char *text);
    std::uint32_t invalid; ///< what `parse` answers at a bad text
    std::uint32_t com_serial_attr::*field;
};

constexpr serial_setting serial_settings[] = {
    {"COM%u_BAUD_RATE",    "Environment variable for baud rate(%s) not set\n",    parse_baud_rate,    23, &com_serial_attr::baud_rate},
    {"COM%u_PARITY",       "Environment variable for parity(%s) not set\n",       parse_parity,       5,  &com_serial_attr::parity},
    {"COM%u_STOP_BITS",    "Environment variable for stop bits(%s) not set\n",    parse_stop_bits,    3,  &com_serial_attr::stop_bits},
    {"COM%u_FLOW_CONTROL", "Environment variable for flow control(%s) not set\n", parse_flow_control, 4,  &com_serial_attr::flow_control},
    {"COM%u_INPUT_MODE",   "Environment variable for input mode(%s) not set\n",   parse_input_mode,   2,  &com_serial_attr::input_mode},
    {"COM%u_CHAR_SIZE",    "Environment variable for char size(%s) not set\n",    parse_char_size,    5,  &com_serial_attr::char_size},
};

// ------------------------------------------------------------------------------------------ resolving

/// Text of an environment variable; prints `missing` with its name and ends the process when it is not set.
const char *required_setting(const char *variable, const char *missing)
{
    const char *text = std::getenv(variable);
    if (text == nullptr) {
        std::printf(missing, variable);
        std::exit(-1);
    }
    return text;
}

void resolve_serial(com_pch_desc &desc)
{
    if (desc.from_env != 1)
        return;
    for (const serial_setting &setting : serial_settings) {
        char variable[32];
        std::snprintf(variable, sizeof variable, setting.variable, unsigned{desc.com_port});
        const std::uint32_t value = setting.parse(required_setting(variable, setting.missing));
        if (value == setting.invalid)
            std::exit(-1);
        desc.attr.u.serial.*setting.field = value;
    }
}

/// Both socket transports; they differ in whether the process can go on without an address.
void resolve_socket(com_pch_desc &desc)
{
    constexpr char no_address[] = "Environment variable for server address (%s) not set\n";
    com_tcp_attr  &tcp = desc.attr.u.tcp;
    if (desc.from_env == 1) {
        desc.port_var = required_setting(desc.port_var, "Environment variable %s not set\n");
        if (desc.attr.driver == COM_DRIVER_TCP)
            tcp.address = required_setting(tcp.address, no_address);
        else if (const char *address = std::getenv(tcp.address))
            tcp.address = address;
        else
            std::printf(no_address, tcp.address);
        desc.from_env = 0;
    }
    tcp.port = static_cast<std::uint16_t>(std::atoi(desc.port_var));
    tcp.server = tcp.server != 1; // the host is the other end
}

void resolve(com_pch_desc &desc)
{
    switch (desc.attr.driver) {
    case COM_DRIVER_SERIAL:
        return resolve_serial(desc);
    case COM_DRIVER_TCP:
    case COM_DRIVER_SOCKET:
        return resolve_socket(desc);
    default:
        return;
    }
}

/// The other end's direction; a channel of both directions stays one.
std::uint32_t turn_round(std::uint32_t direction)
{
    switch (direction) {
    case COM_RECEIVE:
        return COM_TRANSMIT;
    case COM_TRANSMIT:
        return COM_RECEIVE;
    default:
        return direction;
    }
}

// ------------------------------------------------------------------------------------------ the list

ttcore_pch *find_listed(const comm_info_struct *list, const char *name)
{
    for (std::uint32_t n = 0; n < list->no_of_pch; ++n)
        if (std::strcmp(list->ttcore_pch_list[n].name, name) == 0)
            return &list->ttcore_pch_list[n];
    return nullptr;
}

ttcore_pch *list_pch(comm_info_struct *list, com_pch_desc &desc, std::uint32_t index)
{
    tt_assert(list->no_of_pch < max_pchs, "comm_info->no_of_pch < max_pchs", unit, __LINE__);
    ttcore_pch *pch = &list->ttcore_pch_list[list->no_of_pch++];
    pch->name = desc.name;
    pch->pch_desc_index = index;
    pch->no_of_lch = 0;
    pch->lch_list = static_cast<ttcore_lch *>(std::calloc(max_lchs, sizeof(ttcore_lch)));
    tt_assert(pch->lch_list != nullptr, "pch->lch_list != 0", unit, __LINE__);
    resolve(desc);
    desc.attr.direction = turn_round(desc.attr.direction);
    pch->attr = &desc.attr;
    return pch;
}

void build_comm_info()
{
    comm_info = static_cast<comm_info_struct *>(std::calloc(1, sizeof *comm_info));
    tt_assert(comm_info != nullptr, "comm_info != 0", unit, __LINE__);
    comm_info->ttcore_pch_list = static_cast<ttcore_pch *>(std::calloc(max_pchs, sizeof(ttcore_pch)));
    tt_assert(comm_info->ttcore_pch_list != nullptr, "comm_info->ttcore_pch_list != 0", unit, __LINE__);
    comm_info->no_of_pch = 0;
    tt_infra_comm_info(comm_info);
    tt_ue_stack_comm_info(comm_info);
}

} // namespace

std::int32_t tt_find_pch(const tt_comm_group &group, const char *name)
{
    if (name != nullptr)
        for (std::size_t n = 0; n < group.pchs.size(); ++n)
            if (std::strcmp(group.pchs[n].name, name) == 0)
                return static_cast<std::int32_t>(n);
    return -1;
}

ttcore_lch *tt_comm_info_add(comm_info_struct *list, const tt_comm_group &group, std::int32_t pch_row,
                             std::uint32_t lch_row, std::uint8_t lch_flag, std::uint32_t lch_word)
{
    com_pch_desc &desc = group.pchs[static_cast<std::size_t>(pch_row)];
    ttcore_pch   *pch = find_listed(list, desc.name);
    if (pch == nullptr)
        pch = list_pch(list, desc, static_cast<std::uint32_t>(pch_row));

    tt_assert(pch->no_of_lch < max_lchs, "pch->no_of_lch < max_lchs", unit, __LINE__);
    ttcore_lch *lch = &pch->lch_list[pch->no_of_lch++];
    lch->lch_desc_index = lch_row;
    lch->direction = turn_round(group.lchs[lch_row].direction);
    lch->lch_flag = lch_flag;
    lch->lch_word = lch_word;
    return lch;
}

std::uint32_t parse_baud_rate(const char *text)
{
    // 22 stands for no rate: the index of an invalid text is 23.
    static constexpr std::array rates = {50,   75,   110,  134,   150,   200,   300,   600,    1200,   1800,   2400,
                                         4800, 9600, 14400, 19200, 38400, 56000, 57600, 115200, 128000, 230400, 256000};
    return parse_number(text, rates, 23, "Invalid baud rate %s\n");
}

std::uint32_t parse_parity(const char *text)
{
    static constexpr std::array words = {"no", "odd", "even", "mark", "space"};
    return parse_word(text, words, "Invalid parity %s\nValid values are : no, odd, even, mark, space\n");
}

std::uint32_t parse_stop_bits(const char *text)
{
    // The word is "1_5", as an environment file can hold it; the message has always offered "1.5".
    static constexpr std::array words = {"1", "1_5", "2"};
    return parse_word(text, words, "Invalid stop bits %s\nValid values are : 1, 1.5, 2\n");
}

std::uint32_t parse_flow_control(const char *text)
{
    static constexpr std::array words = {"no", "sw", "hwctsrts", "hwdtrdsr"};
    return parse_word(text, words, "Invalid flow control %s\nValid values are : no, sw, hwctsrts, hwdtrdsr\n");
}

std::uint32_t parse_input_mode(const char *text)
{
    static constexpr std::array words = {"can", "noncan"};
    return parse_word(text, words, "Invalid input mode %s\nValid values are : can, noncan\n");
}

std::uint32_t parse_char_size(const char *text)
{
    static constexpr std::array sizes = {4, 5, 6, 7, 8};
    return parse_number(text, sizes, 5, "Invalid char size %s\n");
}

comm_info_struct *tt_comm_info_get()
{
    if (first_call) {
        build_comm_info();
        first_call = false;
    }
    tt_assert(comm_info != nullptr, "comm_info != 0", unit, __LINE__);
    return comm_info;
}

tt_bool tt_comm_info_free()
{
    if (comm_info != nullptr) {
        for (std::uint32_t n = 0; n < comm_info->no_of_pch; ++n)
            std::free(comm_info->ttcore_pch_list[n].lch_list);
        std::free(comm_info->ttcore_pch_list);
        std::free(comm_info);
        comm_info = nullptr; // the list is not built a second time
    }
    return 1;
}

tt_bool tt_comm_info_reset()
{
    tt_infra_comm_reset();
    tt_ue_stack_comm_reset();
    return 1;
}

std::uintptr_t tt_comm_info_hook(std::uintptr_t value)
{
    return value; // no stack of this build hooks the channel start
}
