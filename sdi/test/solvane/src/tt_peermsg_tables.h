// What an inter-layer message carries: the tables of the peer message classification, kept by hand.
//
// Two questions lead to a name.  `sap_rows`, `route_rows` and the tables by message identifier answer which
// protocol a message of the stack carries and in which direction; the type tables name its messages as the
// standard named over each of them lists them.  Only tt_peermsg_index.h reads these tables, at compile time.
#pragma once

#include <cstdint>
#include <span>

namespace tt_peermsg {

// ------------------------------------------------------------------------------------------ the stack's numbers

/// Service access points that carry peer messages; literals of stack_sap_enum.
enum sap_id : std::uint8_t {
    GMM_SM_SAP    = 44,
    MM_CC_SAP     = 49,
    MNSMS_SAP     = 50,
    GMM_AS_SAP    = 51,
    MM_SS_SAP     = 54,
    MM_SMS_SAP    = 55,
    LLC_GMM_SAP   = 84,
    LLC_SMS_SAP   = 90,
    RLC_RRC_SAP   = 126,
    RLC_APP_SAP   = 127,
    RLC_RRCA_SAP  = 154,
    RRC_RRCA_SAP  = 158,
    LTE_EMM_SAP   = 163,
    LTE_ESM_SAP   = 166,
    NGMM_NGSM_SAP = 197,
    NR_NGMM_SAP   = 200,
    UPM_NGMM_SAP  = 204,
    NR_SAP        = 249,
    TD_LTE_SAP    = 252,
    GSM_CMN_SAP   = 255
};

/// Message identifiers that are told apart; literals of stack_msg_enum.
enum msg_id : std::uint16_t {
    MSG_ID_RLC_DATA_REQ            = 2,
    MSG_ID_AS_RLC_DATA_IND         = 3,
    MSG_ID_GMMAS_DATA_IND          = 21,
    MSG_ID_GMM_AS_GPRS_SIG_EST_REQ = 22,
    MSG_ID_GMM_AS_GPRS_DATA_REQ    = 23,
    MSG_ID_GMM_AS_3G_SIG_EST_REQ   = 24,
    MSG_ID_GMM_AS_3G_DATA_REQ      = 25,
    MSG_ID_LLGMM_UNITDATA_IND      = 26,
    MSG_ID_MMCC_DATA_REQ           = 27,
    MSG_ID_MMSS_DATA_REQ           = 28,
    MSG_ID_MMSMS_DATA_REQ          = 29,
    MSG_ID_GMMSM_UNITDATA_REQ      = 30,
    MSG_ID_MMCC_DATA_IND           = 32,
    MSG_ID_MMSS_DATA_IND           = 33,
    MSG_ID_MMSMS_DATA_IND          = 35,
    MSG_ID_GMMSM_UNITDATA_IND      = 36,
    MSG_ID_LLGMM_UNITDATA_REQ      = 37,
    MSG_ID_SMS_DELIVER             = 3111,
    MSG_ID_UPM_NGMM_DATA_REQ       = 9750,
    MSG_ID_NGMM_NGSM_DATA_REQ      = 9812,
    MSG_ID_UPM_NGMM_DATA_IND       = 9837,
    MSG_ID_MMCC_EST_IND            = 10268,
    MSG_ID_MMCC_PROMPT_IND         = 10271,
    MSG_ID_MMSS_EST_IND            = 11273,
    MSG_ID_LLSMS_UNITDATA_IND      = 12291,
    MSG_ID_MMSMS_EST_IND           = 12296,
    MSG_ID_SMS_SUBMIT              = 12307,
    MSG_ID_SMS_COMMAND             = 12308,
    MSG_ID_SMS_DELIVER_REPORT_ACK  = 12309,
    MSG_ID_SMS_DELIVER_REPORT_NACK = 12310,
    MSG_ID_NGMM_NGSM_DATA_IND      = 13389,
    MSG_ID_LLSMS_UNITDATA_REQ      = 17410,
    MSG_ID_RRCA_AS_RLC_DATA_IND    = 24779
};

/// Under GSM_CMN_SAP the message identifier is the kind of channel.
enum gsm_channel_kind : std::uint16_t {
    UPLINK_DEDICATED       = 1,
    UPLINK_MEASUREMENT     = 2,
    DOWNLINK_DEDICATED     = 3,
    DOWNLINK_PHYSICAL_INFO = 4,
    BROADCAST              = 5,
    COMMON_CONTROL         = 6
};

// ------------------------------------------------------------------------------------------ messages by type

inline constexpr const char *none = nullptr;

/// The names of a message type in the columns of its table; a column that is left out has no name.
struct type_row {
    std::uint8_t type;
    const char  *names[3];
};

// 3GPP TS 24.008 table 10.3: call control.  Sequence number bits stay in the type, see `protocol_rows`.
inline constexpr type_row cc_types[] = {
    // MSG_ID_MMCC_DATA_REQ                              MSG_ID_MMCC_DATA_IND
    {0x01, {"cc_peer_ms_nw_alerting_struct",             "cc_peer_nw_ms_alerting_struct"}},
    {0x02, {"cc_peer_call_proceeding_struct",            "cc_peer_call_proceeding_struct"}},
    {0x03, {none,                                        "cc_peer_progress_struct"}},
    {0x04, {none,                                        "cc_peer_cc_establishment_nw_ms_struct"}},
    {0x05, {"cc_peer_setup_ms_nw_struct",                none}},
    {0x06, {"cc_peer_cc_establishment_cnf_ms_nw_struct", none}},
    {0x07, {"cc_peer_connect_ms_nw_struct",              "cc_peer_connect_nw_ms_struct"}},
    {0x08, {"cc_peer_call_confirmed_struct",             "cc_peer_call_confirmed_struct"}},
    {0x09, {"cc_peer_start_cc_struct",                   none}},
    {0x0B, {none,                                        "cc_peer_recall_nw_ms_struct"}},
    {0x0E, {"cc_peer_emergency_setup_struct",            none}},
    {0x0F, {"cc_peer_connect_acknowledge_struct",        "cc_peer_connect_acknowledge_struct"}},
    {0x10, {"cc_peer_user_user_struct",                  "cc_peer_user_user_struct"}},
    {0x13, {"cc_peer_modify_reject_struct",              "cc_peer_modify_reject_struct"}},
    {0x17, {"cc_peer_modify_struct",                     "cc_peer_modify_struct"}},
    {0x18, {"cc_peer_hold_ms_nw_struct",                 none}},
    {0x19, {none,                                        "cc_peer_hold_acknowledge_nw_ms_struct"}},
    {0x1A, {none,                                        "cc_peer_hold_reject_nw_ms_struct"}},
    {0x1C, {"cc_peer_retrieve_ms_nw_struct",             none}},
    {0x1D, {none,                                        "cc_peer_retrieve_acknowledge_nw_ms_struct"}},
    {0x1E, {none,                                        "cc_peer_retrieve_reject_nw_ms_struct"}},
    {0x1F, {"cc_peer_modify_complete_struct",            "cc_peer_modify_complete_struct"}},
    {0x25, {"cc_peer_disconnect_ms_nw_struct",           "cc_peer_disconnect_nw_ms_struct"}},
    {0x2A, {"cc_peer_release_complete_ms_nw_struct",     "cc_peer_release_complete_nw_ms_struct"}},
    {0x2D, {"cc_peer_release_ms_nw_struct",              "cc_peer_release_nw_ms_struct"}},
    {0x31, {"cc_peer_stop_dtmf_struct",                  none}},
    {0x32, {none,                                        "cc_peer_stop_dtmf_acknowledge_struct"}},
    {0x34, {none,                                        "cc_peer_status_enq_struct"}},
    {0x35, {"cc_peer_start_dtmf_struct",                 none}},
    {0x36, {none,                                        "cc_peer_start_dtmf_acknowledge_struct"}},
    {0x37, {none,                                        "cc_peer_start_dtmf_reject_struct"}},
    {0x39, {none,                                        "cc_peer_congestion_control_struct"}},
    {0x3A, {"cc_peer_facility_ms_nw_struct",             "cc_peer_facility_nw_ms_struct"}},
    {0x3D, {"cc_peer_status_struct",                     "cc_peer_status_struct"}},
    {0x3E, {"cc_peer_notify_struct",                     "cc_peer_notify_struct"}},
};

// The one message that MSG_ID_MMCC_EST_IND brings.
inline constexpr type_row cc_establishment_types[] = {
    {0x05, {"cc_peer_setup_nw_ms_struct"}},
};

// 3GPP TS 24.080 clause 3.4: call-independent supplementary services.
inline constexpr type_row ciss_types[] = {
    // MSG_ID_MMSS_DATA_REQ                      MSG_ID_MMSS_DATA_IND
    {0x2A, {"ciss_peer_release_complete_struct", "ciss_peer_release_complete_struct"}},
    {0x3A, {"ciss_peer_facility_struct",         "ciss_peer_facility_struct"}},
    {0x3B, {"ciss_peer_register_ms_nw_struct",   none}},
};

// The one message that MSG_ID_MMSS_EST_IND brings.
inline constexpr type_row ciss_establishment_types[] = {
    {0x3B, {"ciss_peer_register_nw_ms_struct"}},
};

// 3GPP TS 24.011 clause 8.1.3: short message service, CP layer.
inline constexpr type_row sms_cp_types[] = {
    {0x01, {"sms_cp_data_struct"}},
    {0x04, {"sms_cp_ack_struct"}},
    {0x10, {"sms_cp_error_struct"}},
};

// 3GPP TS 23.040 clause 9.2.3.1, TP-MTI from the mobile: short message service, transport layer.  The indicator
// does not tell a report of success from one of failure, the message identifier does.
inline constexpr type_row sms_tp_types[] = {
    // MSG_ID_SMS_DELIVER_REPORT_ACK             MSG_ID_SMS_DELIVER_REPORT_NACK      MSG_ID_SMS_SUBMIT and _COMMAND
    {0x00, {"mnm_sms_deliver_report_ack_struct", "mnm_sms_deliver_report_nack_struct", none}},
    {0x01, {"mnm_sms_submit_struct",             "mnm_sms_submit_struct",              "mnm_sms_submit_struct"}},
    {0x02, {"mnm_sms_command_struct",            "mnm_sms_command_struct",             "mnm_sms_command_struct"}},
};

// 3GPP TS 24.008 table 10.2: mobility management.
inline constexpr type_row mm_downlink_types[] = {
    // MSG_ID_GMMAS_DATA_IND
    {0x02, {"mm_peer_lu_acc_struct"}},
    {0x04, {"mm_peer_lu_rej_struct"}},
    {0x11, {"mm_peer_authentication_rej_struct"}},
    {0x12, {"mm_peer_authentication_req_struct"}},
    {0x18, {"mm_peer_identity_req_struct"}},
    {0x1A, {"mm_peer_tmsi_realloc_cmd_struct"}},
    {0x21, {"mm_peer_cm_service_accept_struct"}},
    {0x22, {"mm_peer_cm_service_reject_struct"}},
    {0x25, {"mm_peer_cm_service_prompt_struct"}},
    {0x29, {"mm_peer_abort_struct"}},
    {0x31, {"mm_peer_status_struct"}},
    {0x32, {"mm_peer_information_struct"}},
};

inline constexpr type_row mm_uplink_types[] = {
    // connection set-up                       connected
    {0x01, {"mm_peer_imsi_detach_ind_struct",  "mm_peer_imsi_detach_ind_struct"}},
    {0x08, {"mm_peer_lu_req_struct",           none}},
    {0x14, {none,                              "mm_peer_authentication_rsp_struct"}},
    {0x19, {none,                              "mm_peer_identity_rsp_struct"}},
    {0x1B, {none,                              "mm_peer_tmsi_realloc_com_struct"}},
    {0x23, {"mm_peer_cm_service_abort_struct", "mm_peer_cm_service_abort_struct"}},
    {0x24, {"mm_peer_cm_service_req_struct",   "mm_peer_cm_service_req_struct"}},
    {0x27, {"nas_peer_paging_rsp_struct",      none}},
    {0x28, {none,                              "mm_peer_cm_reest_req_struct"}},
    {0x31, {"mm_peer_status_struct",           "mm_peer_status_struct"}},
    {0x32, {none,                              "mm_peer_information_struct"}},
};

// 3GPP TS 24.008 table 10.4: GPRS mobility management.
inline constexpr type_row gmm_types[] = {
    // downlink                                  uplink
    {0x01, {none,                                "gmm_peer_attach_req_struct"}},
    {0x02, {"gmm_peer_attach_acc_struct",        none}},
    {0x03, {none,                                "gmm_peer_attach_com_struct"}},
    {0x04, {"gmm_peer_attach_rej_struct",        none}},
    {0x05, {"gmm_peer_detach_req_ntoms_struct",  "gmm_peer_detach_req_mston_struct"}},
    {0x06, {"gmm_peer_detach_acc_ntoms_struct",  "gmm_peer_detach_acc_mston_struct"}},
    {0x08, {none,                                "gmm_peer_rau_req_struct"}},
    {0x09, {"gmm_peer_rau_acc_struct",           none}},
    {0x0A, {none,                                "gmm_peer_rau_com_struct"}},
    {0x0B, {"gmm_peer_rau_rej_struct",           none}},
    {0x0C, {none,                                "gmm_peer_service_request_struct"}},
    {0x0D, {"gmm_peer_service_accept_struct",    none}},
    {0x0E, {"gmm_peer_service_reject_struct",    none}},
    {0x10, {"gmm_peer_ptmsi_realloc_cmd_struct", none}},
    {0x11, {none,                                "gmm_peer_ptmsi_realloc_com_struct"}},
    {0x12, {"gmm_peer_auth_cipher_req_struct",   none}},
    {0x13, {none,                                "gmm_peer_auth_cipher_rsp_struct"}},
    {0x14, {"gmm_peer_auth_cipher_rej_struct",   none}},
    {0x15, {"gmm_peer_identity_req_struct",      none}},
    {0x16, {none,                                "gmm_peer_identity_rsp_struct"}},
    {0x1C, {none,                                "gmm_peer_auth_cipher_failure_struct"}},
    {0x20, {"gmm_peer_status_struct",            "gmm_peer_status_struct"}},
    {0x21, {"gmm_peer_info_struct",              none}},
};

// 3GPP TS 24.008 table 10.4a: session management.
inline constexpr type_row sm_types[] = {
    // MSG_ID_GMMSM_UNITDATA_REQ                             MSG_ID_GMMSM_UNITDATA_IND
    {0x41, {"activate_pdp_context_req_struct",               none}},
    {0x42, {none,                                            "activate_pdp_context_acc_struct"}},
    {0x43, {none,                                            "activate_pdp_context_rej_struct"}},
    {0x44, {none,                                            "request_pdp_context_activation_struct"}},
    {0x45, {"request_pdp_context_activation_rej_struct",     none}},
    {0x46, {"deactivate_pdp_context_req_struct",             "deactivate_pdp_context_req_struct"}},
    {0x47, {"deactivate_pdp_context_acc_struct",             "deactivate_pdp_context_acc_struct"}},
    {0x48, {none,                                            "modify_pdp_context_nw_req_struct"}},
    {0x49, {"modify_pdp_context_ms_acc_struct",              none}},
    {0x4A, {"modify_pdp_context_ms_req_struct",              none}},
    {0x4B, {none,                                            "modify_pdp_context_nw_acc_struct"}},
    {0x4C, {none,                                            "modify_pdp_context_rej_struct"}},
    {0x4D, {"activate_sec_pdp_context_req_struct",           none}},
    {0x4E, {none,                                            "activate_sec_pdp_context_acc_struct"}},
    {0x4F, {none,                                            "activate_sec_pdp_context_rej_struct"}},
    {0x55, {"sm_status_struct",                              "sm_status_struct"}},
    {0x5B, {none,                                            "request_sec_pdp_context_activation_struct"}},
    {0x5C, {"request_sec_pdp_context_activation_rej_struct", none}},
    {0x5D, {none,                                            "sm_notification_struct"}},
};

// 3GPP TS 44.018 table 10.4.1: radio resource management, a table for each kind of channel.
inline constexpr type_row rr_uplink_types[] = {
    {0x12, {"rr_peer_status_struct"}},
    {0x16, {"rr_peer_classmark_change_struct"}},
    {0x17, {"rr_peer_channel_mode_modify_ack_struct"}},
    {0x27, {"rr_peer_paging_rsp_struct"}},
    {0x28, {"rr_peer_handover_fail_struct"}},
    {0x29, {"rr_peer_assign_comp_struct"}},
    {0x2C, {"rr_peer_handover_comp_struct"}},
    {0x2F, {"rr_peer_assign_fail_struct"}},
    {0x32, {"rr_peer_cipher_mode_comp_struct"}},
    {0x34, {"rr_peer_gprs_suspend_req_struct"}},
    {0x60, {"rr_peer_utran_classmark_change_struct"}},
};

inline constexpr type_row rr_measurement_types[] = {
    {0x15, {"rr_peer_meas_report_struct"}},
};

// The peer table knows two of these structures under other names or not at all: the channel release, and the
// handover to UTRAN.  The names are those that hosts have always been given.
inline constexpr type_row rr_downlink_types[] = {
    {0x08, {"rr_peer_cell_change_order_struct"}},
    {0x0D, {"rr_peer_channel_release_struct"}},
    {0x10, {"rr_peer_channel_mode_modify_struct"}},
    {0x12, {"rr_peer_status_struct"}},
    {0x13, {"rr_peer_classmark_enquiry_struct"}},
    {0x2B, {"rr_peer_handover_cmd_struct"}},
    {0x2E, {"rr_peer_assign_cmd_struct"}},
    {0x35, {"rr_peer_cipher_mode_cmd_struct"}},
    {0x3B, {"rr_peer_additional_assign_struct"}},
    {0x63, {"rr_peer_inter_system_to_utran_handover_cmd_struct"}},
};

inline constexpr type_row rr_physical_info_types[] = {
    {0x2D, {"rr_peer_phy_info_struct"}},
};

inline constexpr type_row rr_broadcast_types[] = {
    {0x00, {"rr_peer_sysinfo_type13_struct"}},
    {0x07, {"rr_peer_sysinfo_type2quater_struct"}},
    {0x19, {"rr_peer_sysinfo_type1_struct"}},
    {0x1A, {"rr_peer_sysinfo_type2_struct"}},
    {0x1B, {"rr_peer_sysinfo_type3_struct"}},
    {0x1C, {"rr_peer_sysinfo_type4_struct"}},
    {0x1D, {"rr_peer_sysinfo_type5_struct"}},
    {0x1E, {"rr_peer_sysinfo_type6_struct"}},
};

inline constexpr type_row rr_common_types[] = {
    {0x21, {"rr_peer_paging_type1_struct"}},
    {0x22, {"rr_peer_paging_type2_struct"}},
    {0x24, {"rr_peer_paging_type3_struct"}},
    {0x39, {"rr_peer_immediate_assign_ext_struct"}},
    {0x3A, {"rr_peer_immediate_assign_rej_struct"}},
    {0x3F, {"rr_peer_immediate_assign_struct"}},
};

// 3GPP TS 24.501 table 9.7.2: 5GS session management.
inline constexpr type_row ngsm_types[] = {
    // MSG_ID_NGMM_NGSM_DATA_REQ                              MSG_ID_NGMM_NGSM_DATA_IND
    {0xC1, {"pdu_session_establishment_request_struct",       none}},
    {0xC2, {none,                                             "pdu_session_establishment_accept_struct"}},
    {0xC3, {none,                                             "pdu_session_establishment_reject_struct"}},
    {0xC5, {none,                                             "pdu_session_authentication_command_struct"}},
    {0xC6, {"pdu_session_authentication_complete_struct",     none}},
    {0xC7, {none,                                             "pdu_session_authentication_result_struct"}},
    {0xC9, {"pdu_session_modification_request_struct",        none}},
    {0xCA, {none,                                             "pdu_session_modification_reject_struct"}},
    {0xCB, {none,                                             "pdu_session_modification_command_struct"}},
    {0xCC, {"pdu_session_modification_complete_struct",       none}},
    {0xCD, {"pdu_session_modification_command_reject_struct", none}},
    {0xD1, {"pdu_session_release_request_struct",             none}},
    {0xD2, {none,                                             "pdu_session_release_reject_struct"}},
    {0xD3, {none,                                             "pdu_session_release_command_struct"}},
    {0xD4, {"pdu_session_release_complete_struct",            none}},
    {0xD6, {"ngsm_status_struct",                             "ngsm_status_struct"}},
};

// 3GPP TS 24.501 clause D.6.1: UE policy delivery.
inline constexpr type_row ue_policy_types[] = {
    // MSG_ID_UPM_NGMM_DATA_REQ                   MSG_ID_UPM_NGMM_DATA_IND
    {0x01, {none,                                     "manage_ue_policy_command_struct"}},
    {0x02, {"manage_ue_policy_complete_struct",       none}},
    {0x03, {"manage_ue_policy_command_reject_struct", none}},
    {0x04, {"ue_state_indication_struct",             none}},
};

/// The type tables; numbers the rows of `protocol_rows`.
enum protocol : std::uint8_t {
    CC, CC_ESTABLISHMENT, CISS, CISS_ESTABLISHMENT, SMS_CP, SMS_TP, MM_DOWNLINK, MM_UPLINK, GMM, SM,
    RR_UPLINK, RR_MEASUREMENT, RR_DOWNLINK, RR_PHYSICAL_INFO, RR_BROADCAST, RR_COMMON,
    NGSM, UE_POLICY, NO_PROTOCOLS
};

/// Where a message of a protocol says what it is.  Octets count from 0; the octet with the discriminator is read
/// first, the one with the type only when `octet & mask` is the protocol's own value.
struct protocol_row {
    protocol of;
    struct { std::uint8_t octet, mask, value; } discriminator;
    struct { std::uint8_t octet, mask; } type;
    std::span<const type_row> types;
};

// Discriminators: 3GPP TS 24.007 clause 11.2.3.1.
// DIFFERS 3GPP TS 24.007 clause 11.2.3.2.1: the types of call control and supplementary services are compared with
// their send sequence number, so that only a message with the number 0 is named; those of MM and GMM are masked.
// On broadcast and common channels the L2 pseudo length, 3GPP TS 44.018 clause 10.5.2.19, is the first octet.
inline constexpr protocol_row protocol_rows[NO_PROTOCOLS] = {
    // protocol          discriminator    type       messages
    {CC,                 {0, 0x0F, 0x03}, {1, 0xFF}, cc_types},
    {CC_ESTABLISHMENT,   {0, 0x0F, 0x03}, {1, 0xFF}, cc_establishment_types},
    {CISS,               {0, 0x0F, 0x0B}, {1, 0xFF}, ciss_types},
    {CISS_ESTABLISHMENT, {0, 0x0F, 0x0B}, {1, 0xFF}, ciss_establishment_types},
    {SMS_CP,             {0, 0x0F, 0x09}, {1, 0xFF}, sms_cp_types},
    {SMS_TP,             {0, 0x00, 0x00}, {0, 0x03}, sms_tp_types},
    {MM_DOWNLINK,        {0, 0x0F, 0x05}, {1, 0x3F}, mm_downlink_types},
    {MM_UPLINK,          {0, 0x0F, 0x05}, {1, 0x3F}, mm_uplink_types},
    {GMM,                {0, 0x0F, 0x08}, {1, 0x3F}, gmm_types},
    {SM,                 {0, 0x0F, 0x0A}, {1, 0xFF}, sm_types},
    {RR_UPLINK,          {0, 0x0F, 0x06}, {1, 0xFF}, rr_uplink_types},
    {RR_MEASUREMENT,     {0, 0x0F, 0x06}, {1, 0xFF}, rr_measurement_types},
    {RR_DOWNLINK,        {0, 0x0F, 0x06}, {1, 0xFF}, rr_downlink_types},
    {RR_PHYSICAL_INFO,   {0, 0x0F, 0x06}, {1, 0xFF}, rr_physical_info_types},
    {RR_BROADCAST,       {1, 0x0F, 0x06}, {2, 0xFF}, rr_broadcast_types},
    {RR_COMMON,          {1, 0x0F, 0x06}, {2, 0xFF}, rr_common_types},
    {NGSM,               {0, 0xFF, 0x2E}, {3, 0xFF}, ngsm_types},
    {UE_POLICY,          {0, 0x00, 0x00}, {1, 0xFF}, ue_policy_types},
};

// ------------------------------------------------------------------------------------------ from message to protocol

/// Service access points that are treated alike.
enum sap_group : std::uint8_t {
    NO_GROUP, SM_GROUP, CC_GROUP, SMS_TP_GROUP, MM_GROUP, SS_GROUP, SMS_CP_GROUP, RRC_GROUP, EMM_GROUP, ESM_GROUP,
    NGSM_GROUP, NGMM_GROUP, UE_POLICY_GROUP, GSM_RR_GROUP, NO_GROUPS
};

struct sap_row {
    sap_id    sap;
    sap_group group;
};

inline constexpr sap_row sap_rows[] = {
    {GMM_SM_SAP,    SM_GROUP},
    {MM_CC_SAP,     CC_GROUP},
    {MNSMS_SAP,     SMS_TP_GROUP},
    {GMM_AS_SAP,    MM_GROUP},
    {LLC_GMM_SAP,   MM_GROUP},
    {MM_SS_SAP,     SS_GROUP},
    {MM_SMS_SAP,    SMS_CP_GROUP},
    {LLC_SMS_SAP,   SMS_CP_GROUP},
    {RLC_RRC_SAP,   RRC_GROUP},
    {RLC_APP_SAP,   RRC_GROUP},
    {RLC_RRCA_SAP,  RRC_GROUP},
    {RRC_RRCA_SAP,  RRC_GROUP},
    {LTE_EMM_SAP,   EMM_GROUP},
    {LTE_ESM_SAP,   ESM_GROUP},
    {NGMM_NGSM_SAP, NGSM_GROUP},
    {NR_NGMM_SAP,   NGMM_GROUP},
    {UPM_NGMM_SAP,  UE_POLICY_GROUP},
    {GSM_CMN_SAP,   GSM_RR_GROUP},
};

/// A column of a protocol's type table.
struct type_column {
    protocol     of;
    std::uint8_t column;
};

inline constexpr type_column no_column = {NO_PROTOCOLS, 0};

/// What a message identifier carries at a group of service access points: one protocol, or one of two that the
/// discriminator tells apart.
struct route_row {
    sap_group     group;
    std::uint16_t msg_id;
    type_column   first;
    type_column   second;
};

// MSG_ID_MMCC_PROMPT_IND comes with peer octets at MM_CC_SAP as well, and no message of it has a name.
inline constexpr route_row route_rows[] = {
    {SM_GROUP,        MSG_ID_GMMSM_UNITDATA_REQ,      {SM, 0},                  no_column},
    {SM_GROUP,        MSG_ID_GMMSM_UNITDATA_IND,      {SM, 1},                  no_column},
    {CC_GROUP,        MSG_ID_MMCC_DATA_REQ,           {CC, 0},                  no_column},
    {CC_GROUP,        MSG_ID_MMCC_DATA_IND,           {CC, 1},                  no_column},
    {CC_GROUP,        MSG_ID_MMCC_EST_IND,            {CC_ESTABLISHMENT, 0},    no_column},
    {SMS_TP_GROUP,    MSG_ID_SMS_SUBMIT,              {SMS_TP, 2},              no_column},
    {SMS_TP_GROUP,    MSG_ID_SMS_COMMAND,             {SMS_TP, 2},              no_column},
    {SMS_TP_GROUP,    MSG_ID_SMS_DELIVER_REPORT_ACK,  {SMS_TP, 0},              no_column},
    {SMS_TP_GROUP,    MSG_ID_SMS_DELIVER_REPORT_NACK, {SMS_TP, 1},              no_column},
    {MM_GROUP,        MSG_ID_GMMAS_DATA_IND,          {MM_DOWNLINK, 0},         {GMM, 0}},
    {MM_GROUP,        MSG_ID_GMM_AS_GPRS_SIG_EST_REQ, {MM_UPLINK, 0},           no_column},
    {MM_GROUP,        MSG_ID_GMM_AS_GPRS_DATA_REQ,    {MM_UPLINK, 1},           no_column},
    {MM_GROUP,        MSG_ID_GMM_AS_3G_SIG_EST_REQ,   {MM_UPLINK, 0},           {GMM, 1}},
    {MM_GROUP,        MSG_ID_GMM_AS_3G_DATA_REQ,      {MM_UPLINK, 1},           {GMM, 1}},
    {MM_GROUP,        MSG_ID_LLGMM_UNITDATA_IND,      {GMM, 0},                 no_column},
    {MM_GROUP,        MSG_ID_LLGMM_UNITDATA_REQ,      {GMM, 1},                 no_column},
    {SS_GROUP,        MSG_ID_MMSS_DATA_REQ,           {CISS, 0},                no_column},
    {SS_GROUP,        MSG_ID_MMSS_DATA_IND,           {CISS, 1},                no_column},
    {SS_GROUP,        MSG_ID_MMSS_EST_IND,            {CISS_ESTABLISHMENT, 0},  no_column},
    {SMS_CP_GROUP,    MSG_ID_MMSMS_DATA_REQ,          {SMS_CP, 0},              no_column},
    {SMS_CP_GROUP,    MSG_ID_MMSMS_DATA_IND,          {SMS_CP, 0},              no_column},
    {SMS_CP_GROUP,    MSG_ID_LLSMS_UNITDATA_IND,      {SMS_CP, 0},              no_column},
    {SMS_CP_GROUP,    MSG_ID_MMSMS_EST_IND,           {SMS_CP, 0},              no_column},
    {SMS_CP_GROUP,    MSG_ID_LLSMS_UNITDATA_REQ,      {SMS_CP, 0},              no_column},
    {NGSM_GROUP,      MSG_ID_NGMM_NGSM_DATA_REQ,      {NGSM, 0},                no_column},
    {NGSM_GROUP,      MSG_ID_NGMM_NGSM_DATA_IND,      {NGSM, 1},                no_column},
    {UE_POLICY_GROUP, MSG_ID_UPM_NGMM_DATA_REQ,       {UE_POLICY, 0},           no_column},
    {UE_POLICY_GROUP, MSG_ID_UPM_NGMM_DATA_IND,       {UE_POLICY, 1},           no_column},
    {GSM_RR_GROUP,    UPLINK_DEDICATED,               {RR_UPLINK, 0},           no_column},
    {GSM_RR_GROUP,    UPLINK_MEASUREMENT,             {RR_MEASUREMENT, 0},      no_column},
    {GSM_RR_GROUP,    DOWNLINK_DEDICATED,             {RR_DOWNLINK, 0},         no_column},
    {GSM_RR_GROUP,    DOWNLINK_PHYSICAL_INFO,         {RR_PHYSICAL_INFO, 0},    no_column},
    {GSM_RR_GROUP,    BROADCAST,                      {RR_BROADCAST, 0},        no_column},
    {GSM_RR_GROUP,    COMMON_CONTROL,                 {RR_COMMON, 0},           no_column},
};

// UMTS radio resource messages at RRC_GROUP; the channel in the local parameters names them, see tt_peermsg.cpp.
inline constexpr std::uint16_t rrc_messages[] = {
    MSG_ID_RLC_DATA_REQ,
    MSG_ID_AS_RLC_DATA_IND,
    MSG_ID_RRCA_AS_RLC_DATA_IND,
};

// A delivered short message at SMS_TP_GROUP has its name from the identifier as soon as there is a buffer at all:
// the length is not looked at, and need not be set.
inline constexpr std::uint16_t deliver_message = MSG_ID_SMS_DELIVER;
inline constexpr const char   *deliver_name    = "mnm_sms_deliver_struct";

// ------------------------------------------------------------------------------------------ messages by identifier

/// A message that its identifier names: the stack numbers these by message, and the peer octets are not looked at.
struct message_row {
    std::uint16_t msg_id;
    const char   *name;
};

// 3GPP TS 24.301 clause 8.2: EPS mobility management, MSG_ID_EMM_ATTACH_REQUEST to MSG_ID_EMM_SERVICE_REQUEST.
inline constexpr message_row emm_messages[] = {
    {9556, "emm_peer_attach_req_struct"},
    {9557, "emm_peer_attach_accept_struct"},
    {9558, "emm_peer_attach_complete_struct"},
    {9559, "emm_peer_attach_rej_struct"},
    {9560, "emm_peer_detach_ue_req_struct"},
    {9561, "emm_peer_detach_nw_req_struct"},
    {9562, "emm_peer_detach_ue_accept_struct"},
    {9563, "emm_peer_tau_req_struct"},
    {9564, "emm_peer_tau_accept_struct"},
    {9565, "emm_peer_tau_complete_struct"},
    {9566, "emm_peer_tau_rej_struct"},
    {9567, "emm_peer_ext_service_req_struct"},
    {9568, "emm_peer_service_rej_struct"},
    {9569, "emm_peer_service_acc_struct"},
    {9570, "emm_peer_guti_realloc_cmd_struct"},
    {9571, "emm_peer_guti_realloc_com_struct"},
    {9572, "emm_peer_auth_req_struct"},
    {9573, "emm_peer_auth_rsp_struct"},
    {9574, "emm_peer_auth_rej_struct"},
    {9575, "emm_peer_auth_failure_struct"},
    {9576, "emm_peer_id_req_struct"},
    {9577, "emm_peer_id_rsp_struct"},
    {9578, "emm_peer_smc_struct"},
    {9579, "emm_peer_smc_com_struct"},
    {9580, "emm_peer_smc_rej_struct"},
    {9581, "emm_peer_emm_info_struct"},
    {9582, "emm_peer_dl_nas_transport_struct"},
    {9583, "emm_peer_ul_nas_transport_struct"},
    {9584, "emm_peer_cs_service_notification_struct"},
    {9585, "emm_peer_dl_generic_nas_transport_struct"},
    {9586, "emm_peer_ul_generic_nas_transport_struct"},
    {9587, "emm_peer_service_req_struct"},
};

// 3GPP TS 24.301 clause 8.3: EPS session management.  The last, MSG_ID_ESM_ESM_DUMMY_MESAGE, stands apart.
inline constexpr message_row esm_messages[] = {
    {9588, "activate_default_eps_bearer_context_req_struct"},
    {9589, "activate_default_eps_bearer_context_acc_struct"},
    {9590, "activate_default_eps_bearer_context_rej_struct"},
    {9591, "activate_dedicated_eps_bearer_context_req_struct"},
    {9592, "activate_dedicated_eps_bearer_context_acc_struct"},
    {9593, "activate_dedicated_eps_bearer_context_rej_struct"},
    {9594, "modify_eps_bearer_context_req_struct"},
    {9595, "modify_eps_bearer_context_acc_struct"},
    {9596, "modify_eps_bearer_context_rej_struct"},
    {9597, "deactivate_eps_bearer_context_req_struct"},
    {9598, "deactivate_eps_bearer_context_acc_struct"},
    {9599, "pdn_connectivity_req_struct"},
    {9600, "pdn_connectivity_rej_struct"},
    {9601, "pdn_disconnect_req_struct"},
    {9602, "pdn_disconnect_rej_struct"},
    {9603, "bearer_resource_allocation_req_struct"},
    {9604, "bearer_resource_allocation_rej_struct"},
    {9605, "bearer_resource_modification_req_struct"},
    {9606, "bearer_resource_modification_rej_struct"},
    {9607, "esm_information_req_struct"},
    {9608, "esm_information_rsp_struct"},
    {9609, "esm_notification_struct"},
    {9610, "esm_status_struct"},
    {9674, "esm_dummy_message_struct"},
};

// 3GPP TS 24.501 clause 8.2: 5GS mobility management.  9691 to 9693 and 9708 name nothing.
inline constexpr message_row ngmm_messages[] = {
    {9680, "ngmm_peer_registration_request_struct"},
    {9681, "ngmm_peer_registration_accept_struct"},
    {9682, "ngmm_peer_registration_complete_struct"},
    {9683, "ngmm_peer_registration_reject_struct"},
    {9684, "ngmm_peer_ue_originating_deregistration_request_struct"},
    {9685, "ngmm_peer_ue_originating_deregistration_accept_struct"},
    {9686, "ngmm_peer_ue_terminated_deregistration_request_struct"},
    {9687, "ngmm_peer_ue_terminated_deregistration_accept_struct"},
    {9688, "ngmm_peer_service_request_struct"},
    {9689, "ngmm_peer_service_accept_struct"},
    {9690, "ngmm_peer_service_reject_struct"},
    {9694, "ngmm_peer_configuration_update_command_struct"},
    {9695, "ngmm_peer_configuration_update_complete_struct"},
    {9696, "ngmm_peer_authentication_request_struct"},
    {9697, "ngmm_peer_authentication_response_struct"},
    {9698, "ngmm_peer_authentication_reject_struct"},
    {9699, "ngmm_peer_authentication_failure_struct"},
    {9700, "ngmm_peer_authentication_result_struct"},
    {9701, "ngmm_peer_identity_request_struct"},
    {9702, "ngmm_peer_identity_response_struct"},
    {9703, "ngmm_peer_security_mode_command_struct"},
    {9704, "ngmm_peer_security_mode_complete_struct"},
    {9705, "ngmm_peer_security_mode_reject_struct"},
    {9706, "ngmm_peer_ngmm_status_struct"},
    {9707, "ngmm_peer_notification_struct"},
    {9709, "ngmm_peer_ul_nas_transport_struct"},
    {9710, "ngmm_peer_dl_nas_transport_struct"},
};

struct message_list {
    sap_group                    group;
    std::span<const message_row> messages;
};

inline constexpr message_list message_lists[] = {
    {EMM_GROUP, emm_messages},
    {ESM_GROUP, esm_messages},
    {NGMM_GROUP, ngmm_messages},
};

} // namespace tt_peermsg
