// The tables of channels: what binds to what, what is counted, and each way in which a wrong call ends the process.
#include <csignal>

#include "loopback.h"

namespace {

/// A client's channel opens without a peer.
std::int32_t add(std::uint32_t direction)
{
    com_pch_attr attr{};
    attr.direction = direction;
    attr.driver = COM_DRIVER_TCP;
    attr.u.tcp.address = "127.0.0.1";
    return com_pch_add(&attr);
}

std::int32_t bind(std::int32_t pch, std::int32_t lch, std::uint32_t direction, std::int32_t lch_domain = domain)
{
    return com_lch_add(lch_domain, lch, pch, direction, nullptr, nullptr);
}

TEST_F(channels, count_what_is_bound)
{
    const std::int32_t pch = add(COM_BOTH);
    const com_pch_info_struct &info = com_pch_info_g[pch];
    EXPECT_EQ(bind(pch, 4, COM_TRANSMIT), 1);
    EXPECT_EQ(bind(pch, 9, COM_RECEIVE), 2);
    EXPECT_EQ(bind(pch, 2, COM_BOTH, 0), 3);
    EXPECT_EQ(info.no_of_lch, 3);
    EXPECT_EQ(info.no_of_tx_lch, 2);
    EXPECT_EQ(info.no_of_rx_lch, 2);
    EXPECT_EQ(info.lch_list[1].lch, 9U);
    EXPECT_EQ(info.lch_list[1].lch_domain_id, 3U);
    EXPECT_EQ(com_lch_info_g[0][2].pch, pch);

    // A logical channel that goes leaves its binding behind; a physical one takes all with it.
    EXPECT_EQ(com_lch_remove(domain, 9), 2);
    EXPECT_EQ(info.no_of_lch, 3);
    EXPECT_EQ(info.lch_used[1], 1);
    com_pch_remove(pch);
    EXPECT_EQ(info.no_of_lch + info.no_of_tx_lch + info.no_of_rx_lch + info.lch_used[1], 0);
    EXPECT_EQ(com_info_g.no_pch, 0);
}

TEST_F(channels, take_the_lowest_free_place)
{
    EXPECT_EQ(add(COM_BOTH), 0);
    EXPECT_EQ(add(COM_BOTH), 1);
    com_pch_remove(0);
    EXPECT_EQ(add(COM_BOTH), 0);
    EXPECT_EQ(com_info_g.no_pch, 2);
}

TEST_F(channels, have_one_transport)
{
    for (std::uint32_t row = 0; row < COM_MAX_DRIVER; ++row)
        EXPECT_EQ(com_driver_table[row].open != nullptr, row == COM_DRIVER_TCP) << row;
}

TEST_F(channels, keep_the_buffer_of_what_is_not_open)
{
    std::uint8_t buffer[1];
    com_lch_set_buffer(domain, 11, buffer);
    EXPECT_EQ(com_lch_info_g[domain][11].buffer, nullptr);
    bind(add(COM_BOTH), 11, COM_RECEIVE);
    com_lch_set_buffer(domain, 11, buffer);
    EXPECT_EQ(com_lch_info_g[domain][11].buffer, buffer);
}

TEST_F(channels, refuse_a_direction_that_does_not_fit)
{
    const std::uint32_t one_way[] = {COM_RECEIVE, COM_TRANSMIT};
    for (const std::uint32_t pch : one_way)
        for (const std::uint32_t lch : {COM_RECEIVE, COM_TRANSMIT, COM_BOTH}) {
            SCOPED_TRACE(testing::Message() << "physical " << pch << " logical " << lch);
            if (pch == lch)
                EXPECT_EQ(bind(add(pch), static_cast<std::int32_t>(pch), lch), static_cast<std::int32_t>(pch) + 1);
            else
                EXPECT_EXIT(bind(add(pch), 1, lch), testing::KilledBySignal(SIGABRT), "^$");
        }
}

void bind_again_and_again(int times)
{
    const std::int32_t pch = add(COM_BOTH);
    for (int n = 0; n < times; ++n) {
        bind(pch, 1, COM_BOTH);
        com_lch_remove(domain, 1);
    }
    std::exit(0);
}

void bind_over_domains(int times)
{
    const std::int32_t pch[] = {add(COM_BOTH), add(COM_BOTH)};
    for (int n = 0; n < times; ++n)
        bind(pch[n % 2], n % COM_MAX_LCH, COM_BOTH, n / 3);
    std::exit(0);
}

void add_channels(int times)
{
    for (int n = 0; n < times; ++n)
        add(COM_BOTH);
    std::exit(0);
}

TEST_F(channels, have_limits)
{
    const struct {
        const char *name;
        void (*fill)(int times);
        int         limit;
        const char *beyond; ///< on standard error
    } limits[] = {
        {"physical channels", add_channels, COM_MAX_PCH, "^$"},
        {"on one physical channel", bind_again_and_again, COM_MAX_LCH, "^$"},
        {"in all domains together", bind_over_domains, COM_MAX_LCH,
         "Assertion failed: com_info_g.no_lch < COM_MAX_LCH"},
    };
    for (const auto &row : limits) {
        SCOPED_TRACE(row.name);
        EXPECT_EXIT(row.fill(row.limit), testing::ExitedWithCode(0), "");
        EXPECT_EXIT(row.fill(row.limit + 1), testing::KilledBySignal(SIGABRT), row.beyond);
    }
}

/// The regular expression that matches `text`.
std::string matching(std::string_view text)
{
    std::string expression;
    for (const char letter : text) {
        if (std::string_view("\\()[]*.").find(letter) != std::string_view::npos)
            expression += '\\';
        expression += letter;
    }
    return expression;
}

void open_and_remove()
{
    bind(add(COM_BOTH), 1, COM_BOTH);
    com_lch_remove(domain, 1);
}

TEST_F(channels, end_the_process_at_a_wrong_call)
{
    constexpr char lch_is_valid[] = "com_lch_info_g[lch_domain_id][lch].lch_valid == OSA_TRUE";
    constexpr char pch_is_valid[] = "com_pch_info_g[pch].pch_valid == OSA_TRUE";
    constexpr char pch_in_table[] = "(pch >= 0) && (pch < COM_MAX_PCH)";
    constexpr char lch_in_table[] = "(lch >= 0) && (lch < COM_MAX_LCH)";
    constexpr char pch_unit[] = R"(common\src\com_pch)";
    constexpr char lch_unit[] = R"(common\src\com_lch)";
    constexpr char tcp_unit[] = R"(tcp\src\com_tcp)";
    const struct {
        const char *name;
        void (*call)();
        const char *expression;
        const char *unit;
    } calls[] = {
        {"second start", com_init, "com_info_g.initialized != OSA_TRUE", pch_unit},
        {"logical number too high", [] { bind(add(COM_BOTH), 20, COM_BOTH); }, "lch < COM_MAX_LCH", lch_unit},
        {"logical number below 0", [] { bind(add(COM_BOTH), -1, COM_BOTH); }, lch_in_table, pch_unit},
        {"physical number below 0", [] { bind(-1, 1, COM_BOTH); }, pch_in_table, pch_unit},
        {"physical number too high", [] { bind(8, 1, COM_BOTH); }, pch_in_table, pch_unit},
        {"no physical channel", [] { bind(2, 1, COM_BOTH); }, pch_is_valid, pch_unit},
        {"remove twice", [] { open_and_remove(), com_lch_remove(domain, 1); }, lch_is_valid, lch_unit},
        {"connect what is not there", [] { com_lch_connect(domain, 1); }, lch_is_valid, lch_unit},
        {"write to what is gone", [] { open_and_remove(), com_lch_write(domain, 1, nullptr, 0); }, lch_is_valid,
         pch_unit},
        {"write where no connection is", [] { com_lch_write(domain, 1, nullptr, 0); }, pch_is_valid, pch_unit},
        {"connect a free record", [] { com_tcp_connect(0); }, "com_tcp_channels_g[ ch_desc ].ch_attr_p != NULL",
         tcp_unit},
        {"write nothing", [] { com_tcp_write(0, nullptr, 0); }, "(int)write_len > 0", tcp_unit},
        {"read a negative size", [] { com_tcp_read(0, nullptr, 0x80000000); }, "(int)read_len >= 0", tcp_unit},
    };
    for (const auto &row : calls) {
        std::string report = "^";
        report += matching(std::string("Assertion failed: ") + row.expression);
        report += matching(std::string(R"(, file ms_code\ps\sdi\conn\)") + row.unit);
        report += ", line [0-9]+\n$";
        EXPECT_EXIT(row.call(), testing::KilledBySignal(SIGABRT), report) << row.name;
    }
}

// A transfer that failed is the one error that the process survives.
TEST_F(channels, end_the_process_at_an_error)
{
    for (const com_error_code code : {COM_ERROR_MUTEX, COM_ERROR_NO_CHANNEL, COM_ERROR_TOO_MANY_LCH,
                                      COM_ERROR_DIRECTION, COM_ERROR_SOCKET})
        EXPECT_EXIT(com_error(code), testing::KilledBySignal(SIGABRT), "^$") << code;
    com_error(COM_ERROR_TRANSFER);
}

} // namespace
