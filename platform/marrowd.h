// Interface of marrowd, the closed library that codes the LTE NAS messages and the LTE RRC channels of the stack.
//
// A build has the library or it has not, see SOLVANE_MARROWD; nothing but names, sizes and the shape of its functions
// is known here.  The two lists are the one place that names them: each row is a structure, its octets in memory as
// the library lays it out, and the stem of the two functions that code it.  Where the stem is not the structure's
// own name without its ending, the library spells the two differently.
#pragma once

#include <cstdint>

// LTE RRC channels, 3GPP TS 36.331 clause 6.2.1: encode_<stem> and decode_<stem>.
#define MARROWD_ASN_MESSAGES(ROW) \
    ROW(MCCH_Message_s,       364, MCCH_Message)    \
    ROW(DL_CCCH_Message_s,  35972, DL_CCCH_Message) \
    ROW(DL_DCCH_Message_s,  39640, DL_DCCH_Message) \
    ROW(PCCH_Message_s,      1608, PCCH_Message)    \
    ROW(UL_CCCH_Message_s,     56, UL_CCCH_Message) \
    ROW(UL_DCCH_Message_s,  10316, UL_DCCH_Message)

// LTE NAS, 3GPP TS 24.301: <stem>_encode and <stem>_decode.
#define MARROWD_NAS_MESSAGES(ROW)                                                                               \
    /* EMM messages, 3GPP TS 24.301 clause 8.2 */                                                               \
    ROW(LNAS_airMsgEmm_attachAcc_T,                        772, LNAS_airMsgEmm_attachAcc)                       \
    ROW(LNAS_airMsgEmm_attachCmpl_T,                        20, LNAS_airMsgEmm_attachCmpl)                      \
    ROW(LNAS_airMsgEmm_attachRej_T,                         56, LNAS_airMsgEmm_attachRej)                       \
    ROW(LNAS_airMsgEmm_attachReq_T,                        316, LNAS_airMsgEmm_attachReq)                       \
    ROW(LNAS_airMsgEmm_authFailure_T,                       32, LNAS_airMsgEmm_authFailure)                     \
    ROW(LNAS_airMsgEmm_authRej_T,                           12, LNAS_airMsgEmm_authRej)                         \
    ROW(LNAS_airMsgEmm_authReq_T,                           52, LNAS_airMsgEmm_authReq)                         \
    ROW(LNAS_airMsgEmm_authRsp_T,                           32, LNAS_airMsgEmm_authRsp)                         \
    ROW(LNAS_airMsgEmm_detachAcc_T,                         12, LNAS_airMsgEmm_detachAcc)                       \
    ROW(LNAS_airMsgEmm_nwDetachReq_T,                       24, LNAS_airMsgEmm_nwDetachReq)                     \
    ROW(LNAS_airMsgEmm_ueDetachReq_T,                       52, LNAS_airMsgEmm_ueDetachReq)                     \
    ROW(LNAS_airMsgEmm_emmInfo_T,                          260, LNAS_airMsgEmm_emmInfo)                         \
    ROW(LNAS_airMsgEmm_extServReq_T,                        68, LNAS_airMsgEmm_extServReq)                      \
    ROW(LNAS_airMsgEmm_gutiReallocCmd_T,                   168, LNAS_airMsgEmm_gutiReallocCmd)                  \
    ROW(LNAS_airMsgEmm_gutiReallocCmpl_T,                   12, LNAS_airMsgEmm_gutiReallocCmpl)                 \
    ROW(LNAS_airMsgEmm_idReq_T,                             16, LNAS_airMsgEmm_idReq)                           \
    ROW(LNAS_airMsgEmm_idRsp_T,                             36, LNAS_airMsgEmm_idRsp)                           \
    ROW(LNAS_airMsgEmm_secuModeCmd_T,                       72, LNAS_airMsgEmm_secuModeCmd)                     \
    ROW(LNAS_airMsgEmm_secuModeCmpl_T,                      40, LNAS_airMsgEmm_secuModeCmpl)                    \
    ROW(LNAS_airMsgEmm_secuModeRej_T,                       16, LNAS_airMsgEmm_secuModeRej)                     \
    ROW(LNAS_airMsgEmm_servRej_T,                           44, LNAS_airMsgEmm_servRej)                         \
    ROW(LNAS_airMsgEmm_servAcc_T,                           32, LNAS_airMsgEmm_servAcc)                         \
    ROW(LNAS_airMsgEmm_servReq_T,                           12, LNAS_airMsgEmm_servReq)                         \
    ROW(LNAS_airMsgEmm_emmStatus_T,                         16, LNAS_airMsgEmm_emmStatus)                       \
    ROW(LNAS_airMsgEmm_tauAcc_T,                           772, LNAS_airMsgEmm_tauAcc)                          \
    ROW(LNAS_airMsgEmm_tauCmpl_T,                           12, LNAS_airMsgEmm_tauCmpl)                         \
    ROW(LNAS_airMsgEmm_tauRej_T,                            36, LNAS_airMsgEmm_tauRej)                          \
    ROW(LNAS_airMsgEmm_tauReq_T,                           336, LNAS_airMsgEmm_tauReq)                          \
    ROW(LNAS_airMsgEmm_csServNotifi_T,                      40, LNAS_airMsgEmm_csServNotifi)                    \
    ROW(LNAS_airMsgEmm_dlNasTransport_T,                   264, LNAS_airMsgEmm_dlNasTransport)                  \
    ROW(LNAS_airMsgEmm_dlGeneNasTransport_T,                36, LNAS_airMsgEmm_dlGeneNasTransport)              \
    ROW(LNAS_airMsgEmm_ulNasTransport_T,                   264, LNAS_airMsgEmm_ulNasTransport)                  \
    ROW(LNAS_airMsgEmm_ulGeneNasTransport_T,                36, LNAS_airMsgEmm_ulGeneNasTransport)              \
    /* headers and a shared element */                                                                          \
    ROW(LNAS_airMsg_emmHeader_T,                            12, LNAS_airMsg_emmHeader)                          \
    ROW(LNAS_airMsg_esmHeader_T,                            12, LNAS_airMsg_esmHeader)                          \
    ROW(LNAS_airMsgSecuHeader_T,                            16, LNAS_airMsgSecuHeader)                          \
    ROW(LNAS_airMsg_plmnId_T,                                6, LNAS_airMsg_plmnId)                             \
    /* ESM messages, 3GPP TS 24.301 clause 8.3 */                                                               \
    ROW(LNAS_airMsgEsm_actDediEpsBrrCtxAcc_T,              284, LNAS_airMsgEsm_actDediEpsBrrCtxAcc)             \
    ROW(LNAS_airMsgEsm_actDediEpsBrrCtxRej_T,              288, LNAS_airMsgEsm_actDediEpsBrrCtxRej)             \
    ROW(LNAS_airMsgEsm_actDediEpsBrrCtxReq_T,             2508, LNAS_airMsgEsm_actDediEpsBrrCtxReq)             \
    ROW(LNAS_airMsgEsm_actDfltEpsBrrCtxAcc_T,              284, LNAS_airMsgEsm_actDfltEpsBrrCtxAcc)             \
    ROW(LNAS_airMsgEsm_actDfltEpsBrrCtxRej_T,              288, LNAS_airMsgEsm_actDfltEpsBrrCtxRej)             \
    ROW(LNAS_airMsgEsm_actDfltEpsBrrCtxReq_T,              512, LNAS_airMsgEsm_actDfltEpsBrrCtxReq)             \
    ROW(LNAS_airMsgEsm_brrResourceAllocRej_T,              328, LNAS_airMsgEsm_brrResourceAllocRej)             \
    ROW(LNAS_airMsgEsm_brrResourceAllocReq_T,             2476, LNAS_airMsgEsm_brrResourceAllocReq)             \
    ROW(LNAS_airMsgEsm_brrResourceMdfyRej_T,               328, LNAS_airMsgEsm_brrResourceMdfyRej)              \
    ROW(LNAS_airMsgEsm_brrResourceMdfyReq_T,              2488, LNAS_airMsgEsm_brrResourceMdfyReq)              \
    ROW(LNAS_airMsgEsm_deactEpsBrrCtxAcc_T,                284, LNAS_airMsgEsm_deactEpsBrrCtxAcc)               \
    ROW(LNAS_airMsgEsm_deactEpsBrrCtxReq_T,                308, LNAS_airMsgEsm_deactEpsBrrCtxReq)               \
    ROW(LNAS_airMsgEsm_esmInfoReq_T,                       276, LNAS_airMsgEsm_esmInfoReq)                      \
    ROW(LNAS_airMsgEsm_esmInfoRsp_T,                       392, LNAS_airMsgEsm_esmInfoRsp)                      \
    ROW(LNAS_airMsgEsm_mdfyEpsBrrCtxAcc_T,                 284, LNAS_airMsgEsm_mdfyEpsBrrCtxAcc)                \
    ROW(LNAS_airMsgEsm_mdfyEpsBrrCtxRej_T,                 288, LNAS_airMsgEsm_mdfyEpsBrrCtxRej)                \
    ROW(LNAS_airMsgEsm_mdfyEpsBrrCtxReq_T,                2520, LNAS_airMsgEsm_mdfyEpsBrrCtxReq)                \
    ROW(LNAS_airMsgEsm_pdnCnnRej_T,                        328, LNAS_airMsgEsm_pdnCnnRej)                       \
    ROW(LNAS_airMsgEsm_pdnCnnReq_T,                        408, LNAS_airMsgEsm_pdnCnnReq)                       \
    ROW(LNAS_airMsgEsm_pdnDiscnnRej_T,                     292, LNAS_airMsgEsm_pdnDiscnnRej)                    \
    ROW(LNAS_airMsgEsm_pdnDiscnnReq_T,                     284, LNAS_airMsgEsm_pdnDiscnnReq)                    \
    ROW(LNAS_airMsgEsm_Ntfy_T,                              16, LNAS_airMsgEsm_Ntfy)                            \
    ROW(LNAS_airMsgEsm_esmStatus_T,                         16, LNAS_airMsgEsm_esmStatus)                       \
    ROW(LNAS_airMsgEsm_dummy_T,                             12, LNAS_airMsgEsm_esmDummyMsg)                     \
    /* information elements, 3GPP TS 24.301 clause 9.9 */                                                       \
    ROW(LNAS_airMsgIE_epsBrrStatus_T,                        4, LNAS_airMsgIE_epsBrrCtxStatus)                  \
    ROW(NAS_UE_QoS_s,                                       25, LNAS_airMsgIE_epsQos)                           \
    ROW(ESM_TC_TFT_T,                                     2144, LNAS_airMsgIE_epsTFT)                           \
    ROW(LNAS_airMsgIE_ueNwCapa_T,                           40, LNAS_airMsgIE_nwCapa)                           \
    ROW(EMM_PLMN_List_T,                                   385, LNAS_airMsgIE_plmnList)                         \
    ROW(EMM_TAI_T,                                           8, LNAS_airMsgIE_TAI)                              \
    ROW(LNAS_airMsgIE_tmrInfo_T,                             8, LNAS_airMsgIE_timerInfo)                        \
    ROW(EMM_LAI_T,                                           8, LNAS_airMsgIE_LAI)                              \
    ROW(LNAS_airMsgIE_additionalUpdType_E,                   4, LNAS_airMsgIE_additionalUpdType)                \
    ROW(LNAS_airMsgIE_additionalUpdRsltt_E,                  4, LNAS_airMsgIE_additionalUpdRslt)                \
    ROW(EMM_Paging_Id_E,                                     4, LNAS_airMsgIE_pagingId)                         \
    ROW(LNAS_airMsgIE_daylightSavingTime_T,                  1, LNAS_airMsgIE_daylightSavingTime)               \
    ROW(LNAS_airMsgIE_epsMobileId_T,                        24, LNAS_airMsgIE_epsMobileId)                      \
    ROW(LNAS_airMsgIE_nwFeatureSprt_T,                      64, LNAS_airMsgIE_nwFeatureSprt)                    \
    ROW(LNAS_airMsgIE_esmAPN_T,                            104, LNAS_airMsgIE_esmAPN)                           \
    ROW(LNAS_airMsgIE_mobileId_T,                           24, LNAS_airMsgIE_mobileId)                         \
    ROW(LNAS_airMsgIE_NAS_keySetId_T,                        8, LNAS_airMsgIE_NAS_keySetId)                     \
    ROW(LNAS_airMsgIE_nwName_T,                            116, LNAS_airMsgIE_nwName)                           \
    ROW(LNAS_airMsgIE_PCO_T,                               257, LNAS_airMsgIE_PCO)                              \
    ROW(LNAS_airMsgIE_taiList_T,                           130, LNAS_airMsgIE_taiList)                          \
    ROW(LNAS_airMsgIE_timeZone_T,                            1, LNAS_airMsgIE_timeZone)                         \
    ROW(LNAS_airMsgIE_timeZoneAndTime_T,                     7, LNAS_airMsgIE_timeZoneAndTime)                  \
    ROW(LNAS_airMsgIE_gprsKeySeqNum_T,                       1, LNAS_airMsgIE_gprsKeySeqNum)                    \
    ROW(LNAS_airMsgIE_ueRadioCapaUpdNeed_T,                  1, LNAS_airMsgIE_ueRadioCapaUpdNeed)               \
    ROW(LNAS_airMsgIE_PTMSI_Signature_T,                     3, LNAS_airMsgIE_PTMSI_Signature)                  \
    ROW(LNAS_airMsgIE_drxParam_T,                            2, LNAS_airMsgIE_drxParam)                         \
    ROW(LNAS_airMsgIE_MS_nwCapa_T,                           9, LNAS_airMsgIE_MS_nwCapa)                        \
    ROW(LNAS_airMsgIE_Nonce_T,                               4, LNAS_airMsgIE_Nonce)                            \
    ROW(LNAS_airMsgIE_tmsiStatus_T,                          1, LNAS_airMsgIE_tmsiStatus)                       \
    ROW(LNAS_airMsgIE_MS_Station_Classmark2_T,               3, LNAS_airMsgIE_MS_Station_Classmark2)            \
    ROW(LNAS_airMsgIE_MS_Station_Classmark3_T,              33, LNAS_airMsgIE_MS_Station_Classmark3)            \
    ROW(LNAS_airMsgIE_sprtCodecs_T,                         65, LNAS_airMsgIE_sprtCodecs)                       \
    ROW(LNAS_airMsgIE_voiceDomainPrefer_ueUsageSetting_T,    8, LNAS_airMsgIE_voiceDomainPrefer_ueUsageSetting) \
    ROW(LNAS_airMsgIE_CLI_T,                                16, LNAS_airMsgIE_CLI)

extern "C" {

/// Encoders write the message to `frame`, whose room the caller owes; `bit_count` receives the bits written,
/// `error_code` stays 0 when all went well.  Decoders fill `value` from `frame` and tell the bits read.
#define MARROWD_DECLARE(row, octets, stem)                                                                        \
    void encode_##stem(const void *value, std::uint8_t *frame, std::uint32_t *bit_count,                          \
                       std::uint32_t *error_code);                                                                \
    void decode_##stem(void *value, const std::uint8_t *frame, std::uint32_t *bit_count, std::uint32_t *error_code);
MARROWD_ASN_MESSAGES(MARROWD_DECLARE)
#undef MARROWD_DECLARE

/// Encoders take the room in `octet_count` and leave the octets written there.  Decoders take the octets of the frame
/// and leave those read; they return 0 when all went well.
#define MARROWD_DECLARE(row, octets, stem)                                                                        \
    void         stem##_encode(const void *value, std::uint8_t *frame, std::uint32_t *octet_count);               \
    std::int32_t stem##_decode(void *value, const std::uint8_t *frame, std::uint32_t *octet_count);
MARROWD_NAS_MESSAGES(MARROWD_DECLARE)
#undef MARROWD_DECLARE
}
