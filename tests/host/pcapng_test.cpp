#include "pcapng.h"

#include <gtest/gtest.h>

#include "failure.h"
#include "recording.h"
#include "text.h"
#include "upper_pdu.h"

namespace solvane::tools {
namespace {

std::string bytes(const char *hex)
{
    const auto read = parse_hex(hex);
    EXPECT_EQ(read.bad_column, 0U) << hex;
    return {read.value.begin(), read.value.end()};
}

/// A file by hand, so that reader and writer are not only tested against each other.
const char *const little_section = "0a0d0d0a 1c000000 4d3c2b1a 0100 0000 ffffffffffffffff 1c000000";
const char *const big_section = "0a0d0d0a 0000001c 1a2b3c4d 0001 0000 ffffffffffffffff 0000001c";

std::vector<pcapng_packet> read_all(const std::string &file)
{
    byte_source                source = byte_source::from_memory(file);
    pcapng_reader              reader(source);
    std::vector<pcapng_packet> out;
    while (auto next = reader.next()) {
        out.push_back(std::move(*next));
    }
    return out;
}

std::string written()
{
    std::string   file;
    pcapng_writer writer([&](std::string_view block) { file += block; });
    writer.section("tool 1", "baseline X");
    writer.interface(147, "agent", "");
    writer.interface(148, "integers", "");
    const octets one = {0x12, 1, 2, 3, 4};
    writer.packet(0, 1'700'000'000'000'000'123, direction::in, one);
    writer.packet(1, 5, direction::unknown, {});
    return file;
}

TEST(pcapng, writes_blocks_as_the_format_lays_them_out)
{
    std::string   file;
    pcapng_writer writer([&](std::string_view block) { file += block; });
    writer.section("", "");
    writer.interface(147, "", "");
    const octets one = {0x12};
    writer.packet(0, 0x100000002, direction::out, one);
    const std::string expected = bytes("0a0d0d0a 20000000 4d3c2b1a 0100 0000 ffffffffffffffff 0000 0000 20000000"
                                       "01000000 20000000 9300 0000 00000000 0900 0100 09000000 0000 0000 20000000"
                                       "06000000 30000000 00000000 01000000 02000000 01000000 01000000 12000000"
                                       "0200 0400 02000000 0000 0000 30000000");
    EXPECT_EQ(to_hex({reinterpret_cast<const std::uint8_t *>(file.data()), file.size()}),
              to_hex({reinterpret_cast<const std::uint8_t *>(expected.data()), expected.size()}));
}

TEST(pcapng, reads_what_it_writes)
{
    const auto packets = read_all(written());
    ASSERT_EQ(packets.size(), 2U);
    EXPECT_EQ(packets[0].link_type, 147);
    EXPECT_EQ(packets[0].time, 1'700'000'000'000'000'123);
    EXPECT_EQ(packets[0].way, direction::in);
    EXPECT_EQ(to_hex(packets[0].octets), "1201020304");
    EXPECT_EQ(packets[1].link_type, 148);
    EXPECT_TRUE(packets[1].octets.empty());
}

TEST(pcapng, reads_the_other_byte_order_and_resolutions)
{
    struct row {
        const char  *resolution_option;
        std::int64_t time; ///< of 0x00000003_40000000 units
    };
    const row rows[] = {
        {"", 13'958'643'712'000},                      /* microseconds unless told */
        {"0009 0001 03000000", 13'958'643'712'000'000}, /* milliseconds */
        {"0009 0001 9e000000", 13'000'000'000},        /* 2^-30 s */
        {"0009 0001 a0000000", 3'250'000'000},         /* 2^-32 s */
    };
    for (const auto &row : rows) {
        const std::string option = bytes(row.resolution_option);
        const std::string length = option.empty() ? "00000014" : "0000001c";
        const std::string file = bytes(big_section) + bytes(("00000001" + length + "0093 0000 00000000").c_str()) +
                                 option + bytes(length.c_str()) +
                                 bytes("00000006 00000024 00000000 00000003 40000000 00000002 00000002 12340000 00000024");
        const auto packets = read_all(file);
        ASSERT_EQ(packets.size(), 1U) << row.resolution_option;
        EXPECT_EQ(packets[0].time, row.time) << row.resolution_option;
        EXPECT_EQ(to_hex(packets[0].octets), "1234");
    }
}

TEST(pcapng, passes_over_unknown_blocks_and_starts_anew_at_a_section)
{
    const std::string unknown = bytes("ad0b0000 10000000 01020304 10000000");
    const std::string interface = bytes("01000000 14000000 9300 0000 00000000 14000000");
    const std::string simple = bytes("03000000 14000000 03000000 12345600 14000000");
    const std::string file = bytes(little_section) + unknown + interface + simple;
    const auto        packets = read_all(file + file);
    ASSERT_EQ(packets.size(), 2U);
    EXPECT_EQ(to_hex(packets[1].octets), "123456");
    EXPECT_FALSE(packets[1].time);
    /* Interfaces do not live on into the next section. */
    EXPECT_THROW(read_all(file + bytes(little_section) + simple), pcapng_error);
}

TEST(pcapng, names_the_offset_of_every_fault)
{
    const std::string interface = "01000000 14000000 9300 0000 00000000 14000000";
    struct row {
        const char *name;
        std::string tail; ///< behind a section header of 28 octets
        const char *message;
    };
    const row rows[] = {
        {"length too small", "05000000 08000000 08000000", "offset 32: a block of 8 octets cannot be"},
        {"length not of words", "05000000 0d000000 00000000", "offset 32: a block of 13 octets cannot be"},
        {"huge", "05000000 00000070 00000000", "offset 32: a block of 1879048192 octets cannot be"},
        {"lengths differ", "05000000 10000000 00000000 14000000", "offset 40: the two lengths of a block differ"},
        {"cut head", "05000000 1000", "offset 28: the file ends inside a block (6 octets of it)"},
        {"cut body", "05000000 10000000 00000000", "offset 28: the file ends inside a block (12 of 16 octets)"},
        {"no interface", "03000000 10000000 00000000 10000000",
         "offset 36: a packet of interface 0, which is not described"},
        {"packet too long", interface + "06000000 20000000 00000000 00000000 00000000 05000000 05000000 20000000",
         "offset 48: a packet reaches beyond its block"},
        {"option too long", "01000000 18000000 9300 0000 00000000 0200 0900 18000000",
         "offset 44: an option reaches beyond its block"},
    };
    for (const auto &row : rows) {
        try {
            read_all(bytes(little_section) + bytes(row.tail.c_str()));
            ADD_FAILURE() << row.name << ": nothing thrown";
        } catch (const pcapng_error &error) {
            EXPECT_STREQ(error.what(), row.message) << row.name;
        }
    }
}

TEST(pcapng, survives_every_cut)
{
    const std::string file = written();
    for (std::size_t cut = 1; cut < file.size(); ++cut) {
        try {
            EXPECT_LE(read_all(file.substr(0, cut)).size(), 1U) << cut;
        } catch (const pcapng_error &) {
        }
    }
}

TEST(recording, finds_out_what_it_is)
{
    const auto none = []() -> const plugin & { throw std::logic_error("no plug-in wanted"); };
    const auto first = [&](std::string file) {
        const auto packet = read_recording(byte_source::from_memory(std::move(file)), none)->next();
        return packet ? to_hex(packet->content) : "none";
    };
    EXPECT_EQ(first(written()), "1201020304");
    EXPECT_EQ(first("# a script\n0.5 in packet 12 34\n"), "1234");
    EXPECT_EQ(first("12 34\n"), "1234");
    EXPECT_EQ(first(bytes("02000000 1234 01000000 56")), "1234"); /* .logel, lengths in our byte order */
    EXPECT_EQ(first(""), "none");
    EXPECT_THROW(first(bytes("00000000 01")), failure);
    EXPECT_THROW(first(bytes("ffffff7f 00")), failure);
}

TEST(upper_pdu, names_the_dissector_ahead_of_the_octets)
{
    const octets message = {0x05, 0x08};
    EXPECT_EQ(to_hex(upper_pdu("nas-eps", message)), "000c0008" "6e61732d65707300" "00000000" "0508");

    trace_line line;
    line.module = "a_module_with_a_long_name";
    line.file = "mm_cs.c";
    line.line = 258;
    line.text = "LU\n";
    EXPECT_EQ(to_hex(log_record(line, 3'000'002'000)),
              "000e000c" "67736d7461702e7479706500" "00200004" "00000010" "00000000"
              "00000003" "00000002" "74617267657400000000000000000000" "00000000" "01" "000000"
              "615f6d6f64756c655f776974685f6100" "6d6d5f63732e6300000000000000000000000000000000000000000000000000"
              "00000102" "4c55");
}

TEST(upper_pdu, finds_the_dissector_of_a_structure)
{
    const struct {
        const char *structure, *dissector;
    } rows[] = {
        {"Lte_DL_DCCH_Message", "lte_rrc.dl_dcch"},  {"DL_DCCH_Message", "rrc.dl.dcch"},
        {"Nr_UL_CCCH1_Message", "nr-rrc.ul.ccch1"},  {"mm_peer_lu_req_struct", "gsm_a_dtap"},
        {"gmm_peer_rau_req_struct", "gsm_a_dtap"},   {"activate_pdp_context_req_struct", "gsm_a_dtap"},
        {"emm_peer_tau_req_struct", "nas-eps"},      {"activate_default_eps_bearer_context_acc_struct", "nas-eps"},
        {"rr_peer_sysinfo_type3_struct", "gsm_a_ccch"}, {"rr_peer_sysinfo_type5_struct", "gsm_a_sacch"},
        {"rr_peer_handover_cmd_struct", "gsm_a_dtap"},  {"mta_string_struct", ""},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(dissector_of(row.structure), row.dissector) << row.structure;
    }
}

} // namespace
} // namespace solvane::tools
