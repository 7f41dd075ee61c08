// Mobility management and test control, TS 24.008 clauses 9.2 and 9.4, TS 34.109, TS 36.509: messages written down
// from the tables of the standards, and what becomes of elements that are doubled, misplaced, unknown or too long.
#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "peer_message.h"
#include "reference.h"

namespace solvane::test {
namespace {

using namespace solvane::tools;

/// A message, members to look at, and how it is packed again ("" : as it came).
struct message_case {
    const char                                        *name, *structure, *hex;
    std::vector<std::pair<const char *, const char *>> members;  ///< octets as hexadecimal digits, numbers as decimal ones
    std::size_t                                        bits = 0; ///< understood; 0: all
    bool                                               must_understand = false;
    const char                                        *again = "";
};

std::string text_of(const std::vector<leaf> &leaves, const std::string &path)
{
    const auto found = std::ranges::find(leaves, path, &leaf::path);
    if (found == leaves.end())
        return "absent";
    return found->is_octets ? to_hex(found->bytes) : std::to_string(found->number);
}

std::vector<leaf> read_leaves(const std::string &structure, std::span<const std::uint8_t> memory)
{
    for (const domain &d : domains_of(loaded_plugin())) {
        if (const std::optional<type_use> use = find_type(d, structure))
            return leaves_of(read_value(loaded_plugin(), d, *use, memory, memory::live));
    }
    return {};
}

void check(const message_case &c)
{
    SCOPED_TRACE(c.name);
    const tt_peer_row *row = peer_row(loaded_plugin(), c.structure);
    ASSERT_NE(row, nullptr) << c.structure;
    const octets           message = parse_hex(c.hex).value;
    decoded_message        found = decode_peer(*row, message, false);
    const std::vector<leaf> leaves = read_leaves(c.structure, found.memory(*row));
    for (const auto &[path, wanted] : c.members)
        EXPECT_EQ(text_of(leaves, path), wanted) << path;
    EXPECT_EQ(found.octets_used * 8, c.bits != 0 ? c.bits : message.size() * 8);
    const auto *error = reinterpret_cast<const std::uint32_t *>(&found.error);
    EXPECT_EQ(error[3], c.must_understand ? 1U : 0U);
    const encoded_message again = encode_peer(*row, found.memory(*row), 4096, false);
    EXPECT_EQ(to_hex(again.message), *c.again != '\0' ? c.again : c.hex);
    release_memory();
}

TEST(mobility_messages, come_back_member_by_member)
{
    const message_case cases[] = {
        {"location updating request, IMSI of 15 digits", "mm_peer_lu_req_struct",
         "0508"  "25"  "62f220" "1234"  "57"  "08" "2926240000000010"  "3303575886" "c2",
         {{"hdr.msg_type", "8"}, {"lu_type.value", "1"}, {"lu_type.follow_on", "0"}, {"cksn.key_sequence", "2"},
          {"lai.plmn_id.mcc", "020602"}, {"lai.plmn_id.mnc", "00020f"}, {"lai.lac", "4660"},
          {"classmark1.rf_power_cap", "7"}, {"mobile_id.id.imsi.digits", "020602040200000000000000000001"},
          {"classmark2.ss_screening", "1"}, {"classmark2.cm3", "1"}, {"add_update.csmo", "1"},
          {"device.low_priority", "absent"}}},
        {"location updating accept, all elements", "mm_peer_lu_acc_struct",
         "0502"  "62f220" "1234"  "1705f401020304" "a1" "a2" "4a0362f230" "3403021f11" "35012b" "d1",
         {}, 0, false, ""},
        {"a second network in the list", "mm_peer_lu_acc_struct", "0502" "62f220" "1234" "4a0662f23062f240",
         {{"equi_plmns[1].mnc", "00040f"}}},
        {"an empty list of networks", "mm_peer_lu_acc_struct", "0502" "62f220" "1234" "4a00",
         {{"no_equi_plmns", "0"}, {"equi_plmns_present", "1"}}},
        {"reject with a timer", "mm_peer_lu_rej_struct", "0504" "16" "360145",
         {{"cause.value", "22"}, {"t3246.unit", "2"}, {"t3246.value", "5"}}},
        {"send sequence number", "mm_peer_authentication_rsp_struct", "05d4" "01020304" "2104aabbccdd",
         {{"hdr.send_seq", "3"}, {"hdr.msg_type", "20"}, {"res.res", "01020304"}, {"ext_res.res", "aabbccdd"}}},
        {"IMEISV of 16 digits", "mm_peer_identity_rsp_struct", "0519" "09" "3321436587092143f5",
         {}, 0, false, ""},
        {"no identity", "mm_peer_identity_rsp_struct", "0519" "03" "f00000",
         {{"mobile_id.id_type", "0"}, {"mobile_id.rest", "0000"}}},
        {"an identity of an unknown type", "mm_peer_identity_rsp_struct", "0519" "03" "070102",
         {{"mobile_id.id_type", "7"}, {"mobile_id.rest", "070102"}}},
        {"a group's identity with session", "mm_peer_identity_rsp_struct", "0519" "08" "35" "010203" "62f220" "44",
         {{"mobile_id.id.tmgi.mbms_service_id", "66051"}, {"mobile_id.id.tmgi.plmn.mcc", "020602"},
          {"mobile_id.id.tmgi.session_id", "68"}}},
        {"MM information", "mm_peer_information_struct", "0532" "430483c8329b" "4608" "4742309101020308" "490102",
         {{"full_name.no_spare_bits", "3"}, {"full_name.text", "c8329b"}, {"local_time_zone.value", "8"},
          {"time.time.year_tens", "2"}, {"time.time.year_ones", "4"}, {"daylight_saving.value", "2"}}},
        {"attach request, capability that ends early", "gmm_peer_attach_req_struct",
         "0801" "01e5" "71" "0a00" "05f401020304" "62f220123405" "051341000000",
         {}, 0, false, ""},
        {"routing area update complete, an odd number of entries", "gmm_peer_rau_com_struct", "080a" "26055126347480",
         {}, 0, false, ""},
        {"detach by the network", "gmm_peer_detach_req_ntoms_struct", "0805" "12" "250f",
         {{"detach_type.value", "2"}, {"force_to_standby.value", "1"}, {"cause.value", "15"}}},
        {"spare bits survive", "gmm_peer_detach_req_ntoms_struct", "0805" "9a",
         {{"detach_type.value", "2"}, {"force_to_standby.value", "1"}}},
        {"service request", "gmm_peer_service_request_struct", "080c" "10" "05f401020304" "32022001" "36022002" "d1",
         {{"service_type.value", "1"}, {"pdp_status.nsapi_5", "1"}, {"pdp_status.nsapi_8", "1"},
          {"uplink_data.nsapi_9", "1"}, {"device.low_priority", "1"}}},
        {"test loop of UMTS, two bearers", "tc_close_ue_test_loop_struct", "0f40" "00" "06" "012c05" "025803",
         {{"no_loop_back_setup_list", "2"}, {"loop_back_setup_list[0].ul_sdu_size", "300"},
          {"loop_back_setup_list[1].rb_id", "3"}}},
        {"test loop without a list", "tc_close_ue_test_loop_struct", "0f80" "00" "00", {{"no_loop_back_setup_list", "0"}}},
        {"test loop mode B", "tc_close_ue_test_loop_struct", "0f80" "01" "55", {{"ip_pdu_delay", "85"}}},
        {"test loop mode D", "tc_close_ue_test_loop_struct", "0f80" "03" "0005" "01" "aa01" "bb00",
         {{"no_app_codes", "2"}, {"app_codes[0].code_high", "1"}, {"announce", "1"}}},
        {"test loop mode G", "tc_close_ue_test_loop_struct", "0f80" "06" "aabb",
         {{"srb_loopback", "1"}, {"repetitions", "42"}, {"ul_data_delay", "187"}}},
    };
    for (const message_case &c : cases)
        check(c);
}

/// What the loop over optional elements makes of messages that do not go by the table.
TEST(mobility_messages, optional_elements_out_of_line)
{
    const message_case cases[] = {
        {"twice: read once", "mm_peer_lu_acc_struct", "0502" "62f2201234" "350141" "350142",
         {{"t3212.value", "1"}}, 80, false, "0502" "62f2201234" "350141"},
        {"out of order: skipped", "mm_peer_lu_acc_struct", "0502" "62f2201234" "350141" "4a0362f230",
         {{"t3212.value", "1"}, {"equi_plmns_present", "0"}}, 80, false, "0502" "62f2201234" "350141"},
        {"unknown, to be understood", "mm_peer_lu_rej_struct", "0504" "02" "0f01aa", {}, 24, true, "0504" "02"},
        {"unknown, not to be understood", "mm_peer_lu_rej_struct", "0504" "02" "7f01aa", {}, 24, false, "0504" "02"},
        {"unknown of one octet", "mm_peer_lu_rej_struct", "0504" "02" "91" "360141", {{"t3246.value", "1"}}, 48, false,
         "0504" "02" "360141"},
        {"a length beyond the frame: unread, and looked at as an identifier", "mm_peer_lu_rej_struct",
         "0504" "02" "36ff", {{"t3246_present", "1"}}, 32, false, "0504" "02" "360100"},
    };
    for (const message_case &c : cases)
        check(c);
}

} // namespace
} // namespace solvane::test
