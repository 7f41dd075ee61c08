// What an inter-layer message carries: the tables of the peer message classification, kept by hand.
//
// Two questions lead to a name.  `sap_rows`, `route_rows` and the tables by message identifier answer which
// protocol a message of the stack carries and in which direction; the type tables name its messages as the
// standard named over each of them lists them.  Only tt_peermsg_index.h reads these tables, at compile time.  Access
// points and identifiers are the stack's own literals, generated with the dictionary.
#pragma once

#include <cstdint>
#include <span>

#include "stack_msg_def.h"
#include "stack_sap_def.h"

namespace tt_peermsg {

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
    stack_sap_enum sap;
    sap_group      group;
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

// 3GPP TS 24.301 clause 8.2: EPS mobility management.
inline constexpr message_row emm_messages[] = {
    {MSG_ID_EMM_ATTACH_REQUEST,           "emm_peer_attach_req_struct"},
    {MSG_ID_EMM_ATTACH_ACCEPT,            "emm_peer_attach_accept_struct"},
    {MSG_ID_EMM_ATTACH_COMPLETE,          "emm_peer_attach_complete_struct"},
    {MSG_ID_EMM_ATTACH_REJECT,            "emm_peer_attach_rej_struct"},
    {MSG_ID_EMM_DETACH_UE_REQUEST,        "emm_peer_detach_ue_req_struct"},
    {MSG_ID_EMM_DETACH_NW_REQUEST,        "emm_peer_detach_nw_req_struct"},
    {MSG_ID_EMM_DETACH_UE_ACCEPT,         "emm_peer_detach_ue_accept_struct"},
    {MSG_ID_EMM_TAU_REQUEST,              "emm_peer_tau_req_struct"},
    {MSG_ID_EMM_TAU_ACCEPT,               "emm_peer_tau_accept_struct"},
    {MSG_ID_EMM_TAU_COMPLETE,             "emm_peer_tau_complete_struct"},
    {MSG_ID_EMM_TAU_REJECT,               "emm_peer_tau_rej_struct"},
    {MSG_ID_EMM_EXT_SERVICE_REQUEST,      "emm_peer_ext_service_req_struct"},
    {MSG_ID_EMM_SERVICE_REJECT,           "emm_peer_service_rej_struct"},
    {MSG_ID_EMM_SERVICE_ACCEPT,           "emm_peer_service_acc_struct"},
    {MSG_ID_EMM_GUTI_REALLOC_COMMAND,     "emm_peer_guti_realloc_cmd_struct"},
    {MSG_ID_EMM_GUTI_REALLOC_COMPLETE,    "emm_peer_guti_realloc_com_struct"},
    {MSG_ID_EMM_AUTH_REQUEST,             "emm_peer_auth_req_struct"},
    {MSG_ID_EMM_AUTH_RESPONSE,            "emm_peer_auth_rsp_struct"},
    {MSG_ID_EMM_AUTH_REJECT,              "emm_peer_auth_rej_struct"},
    {MSG_ID_EMM_AUTH_FAILURE,             "emm_peer_auth_failure_struct"},
    {MSG_ID_EMM_IDENTITY_REQUEST,         "emm_peer_id_req_struct"},
    {MSG_ID_EMM_IDENTITY_RESPONSE,        "emm_peer_id_rsp_struct"},
    {MSG_ID_EMM_SECURITY_MODE_COMMAND,    "emm_peer_smc_struct"},
    {MSG_ID_EMM_SECURITY_MODE_COMPLETE,   "emm_peer_smc_com_struct"},
    {MSG_ID_EMM_SECURITY_MODE_REJECT,     "emm_peer_smc_rej_struct"},
    {MSG_ID_EMM_EMM_INFORMATION,          "emm_peer_emm_info_struct"},
    {MSG_ID_EMM_DL_NAS_TRANSPORT,         "emm_peer_dl_nas_transport_struct"},
    {MSG_ID_EMM_UL_NAS_TRANSPORT,         "emm_peer_ul_nas_transport_struct"},
    {MSG_ID_EMM_CS_SERVICE_NOTIFICATION,  "emm_peer_cs_service_notification_struct"},
    {MSG_ID_EMM_DL_GENERIC_NAS_TRANSPORT, "emm_peer_dl_generic_nas_transport_struct"},
    {MSG_ID_EMM_UL_GENERIC_NAS_TRANSPORT, "emm_peer_ul_generic_nas_transport_struct"},
    {MSG_ID_EMM_SERVICE_REQUEST,          "emm_peer_service_req_struct"},
};

// 3GPP TS 24.301 clause 8.3: EPS session management.
inline constexpr message_row esm_messages[] = {
    {MSG_ID_ESM_ACTIVATE_DEFAULT_BEARER_REQUEST,      "activate_default_eps_bearer_context_req_struct"},
    {MSG_ID_ESM_ACTIVATE_DEFAULT_BEARER_ACCEPT,       "activate_default_eps_bearer_context_acc_struct"},
    {MSG_ID_ESM_ACTIVATE_DEFAULT_BEARER_REJECT,       "activate_default_eps_bearer_context_rej_struct"},
    {MSG_ID_ESM_ACTIVATE_DEDICATED_BEARER_REQUEST,    "activate_dedicated_eps_bearer_context_req_struct"},
    {MSG_ID_ESM_ACTIVATE_DEDICATED_BEARER_ACCEPT,     "activate_dedicated_eps_bearer_context_acc_struct"},
    {MSG_ID_ESM_ACTIVATE_DEDICATED_BEARER_REJECT,     "activate_dedicated_eps_bearer_context_rej_struct"},
    {MSG_ID_ESM_MODIFY_BEARER_REQUEST,                "modify_eps_bearer_context_req_struct"},
    {MSG_ID_ESM_MODIFY_BEARER_ACCEPT,                 "modify_eps_bearer_context_acc_struct"},
    {MSG_ID_ESM_MODIFY_BEARER_REJECT,                 "modify_eps_bearer_context_rej_struct"},
    {MSG_ID_ESM_DEACTIVATE_BEARER_REQUEST,            "deactivate_eps_bearer_context_req_struct"},
    {MSG_ID_ESM_DEACTIVATE_BEARER_ACCEPT,             "deactivate_eps_bearer_context_acc_struct"},
    {MSG_ID_ESM_PDN_CONNECTIVITY_REQUEST,             "pdn_connectivity_req_struct"},
    {MSG_ID_ESM_PDN_CONNECTIVITY_REJECT,              "pdn_connectivity_rej_struct"},
    {MSG_ID_ESM_PDN_DISCONNECT_REQUEST,               "pdn_disconnect_req_struct"},
    {MSG_ID_ESM_PDN_DISCONNECT_REJECT,                "pdn_disconnect_rej_struct"},
    {MSG_ID_ESM_BEARER_RESOURCE_ALLOCATION_REQUEST,   "bearer_resource_allocation_req_struct"},
    {MSG_ID_ESM_BEARER_RESOURCE_ALLOCATION_REJECT,    "bearer_resource_allocation_rej_struct"},
    {MSG_ID_ESM_BEARER_RESOURCE_MODIFICATION_REQUEST, "bearer_resource_modification_req_struct"},
    {MSG_ID_ESM_BEARER_RESOURCE_MODIFICATION_REJECT,  "bearer_resource_modification_rej_struct"},
    {MSG_ID_ESM_ESM_INFORMATION_REQUEST,              "esm_information_req_struct"},
    {MSG_ID_ESM_ESM_INFORMATION_RESPONSE,             "esm_information_rsp_struct"},
    {MSG_ID_ESM_NOTIFICATION,                         "esm_notification_struct"},
    {MSG_ID_ESM_STATUS,                               "esm_status_struct"},
    {MSG_ID_ESM_ESM_DUMMY_MESAGE,                     "esm_dummy_message_struct"},
};

// 3GPP TS 24.501 clause 8.2: 5GS mobility management.
inline constexpr message_row ngmm_messages[] = {
    {MSG_ID_NGMM_REGISTRATION_REQUEST,      "ngmm_peer_registration_request_struct"},
    {MSG_ID_NGMM_REGISTRATION_ACCEPT,       "ngmm_peer_registration_accept_struct"},
    {MSG_ID_NGMM_REGISTRATION_COMPLETE,     "ngmm_peer_registration_complete_struct"},
    {MSG_ID_NGMM_REGISTRATION_REJECT,       "ngmm_peer_registration_reject_struct"},
    {MSG_ID_NGMM_UE_DEREGISTRATION_REQUEST, "ngmm_peer_ue_originating_deregistration_request_struct"},
    {MSG_ID_NGMM_UE_DEREGISTRATION_ACCEPT,  "ngmm_peer_ue_originating_deregistration_accept_struct"},
    {MSG_ID_NGMM_NW_DEREGISTRATION_REQUEST, "ngmm_peer_ue_terminated_deregistration_request_struct"},
    {MSG_ID_NGMM_NW_DEREGISTRATION_ACCEPT,  "ngmm_peer_ue_terminated_deregistration_accept_struct"},
    {MSG_ID_NGMM_SERVICE_REQUEST,           "ngmm_peer_service_request_struct"},
    {MSG_ID_NGMM_SERVICE_ACCEPT,            "ngmm_peer_service_accept_struct"},
    {MSG_ID_NGMM_SERVICE_REJECT,            "ngmm_peer_service_reject_struct"},
    {MSG_ID_NGMM_CONFIG_UPDATE_COMMAND,     "ngmm_peer_configuration_update_command_struct"},
    {MSG_ID_NGMM_CONFIG_UPDATE_COMPLETE,    "ngmm_peer_configuration_update_complete_struct"},
    {MSG_ID_NGMM_AUTHENTICATION_REQUEST,    "ngmm_peer_authentication_request_struct"},
    {MSG_ID_NGMM_AUTHENTICATION_RESPONSE,   "ngmm_peer_authentication_response_struct"},
    {MSG_ID_NGMM_AUTHENTICATION_REJECT,     "ngmm_peer_authentication_reject_struct"},
    {MSG_ID_NGMM_AUTHENTICATION_FAILURE,    "ngmm_peer_authentication_failure_struct"},
    {MSG_ID_NGMM_AUTHENTICATION_RESULT,     "ngmm_peer_authentication_result_struct"},
    {MSG_ID_NGMM_IDENTITY_REQUEST,          "ngmm_peer_identity_request_struct"},
    {MSG_ID_NGMM_IDENTITY_RESPONSE,         "ngmm_peer_identity_response_struct"},
    {MSG_ID_NGMM_SECURITY_MODE_COMMAND,     "ngmm_peer_security_mode_command_struct"},
    {MSG_ID_NGMM_SECURITY_MODE_COMPLETE,    "ngmm_peer_security_mode_complete_struct"},
    {MSG_ID_NGMM_SECURITY_MODE_REJECT,      "ngmm_peer_security_mode_reject_struct"},
    {MSG_ID_NGMM_STATUS,                    "ngmm_peer_ngmm_status_struct"},
    {MSG_ID_NGMM_NOTIFICATION,              "ngmm_peer_notification_struct"},
    {MSG_ID_NGMM_UL_NAS_TRANSPORT,          "ngmm_peer_ul_nas_transport_struct"},
    {MSG_ID_NGMM_DL_NAS_TRANSPORT,          "ngmm_peer_dl_nas_transport_struct"},
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
