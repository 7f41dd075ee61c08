// The contents of the measured messages (3GPP TS 36.331 and 38.331 clause 6).
#include "rrc_messages.h"

#include "rrc_codecs.h"

namespace {

// ---------------------------------------------------------------------------------------------------- small helpers

template <typename T> T &append(AsnList &list)
{
    if (list.dataSize == 0)
        AsnListInit(&list, sizeof(T));
    return *static_cast<T *>(AsnListAppend(&list)->data);
}

void append_numbers(AsnList &list, std::initializer_list<int> numbers)
{
    for (const int n : numbers)
        append<AsnInt>(list) = n;
}

void set_octets(AsnOcts &octets, std::uint32_t length)
{
    octets.octetLen = length;
    AsnOctsAlloc(&octets);
    for (std::uint32_t n = 0; n < length; ++n)
        octets.octs[n] = static_cast<std::uint8_t>(n * 37 + 11);
}

void set_bits(AsnBits &bits, std::uint32_t length, std::uint32_t word)
{
    bits = {length, static_cast<std::uint8_t *>(AsnMemAlloc((length + 7) / 8))};
    AsnBits_fromWord(&bits, word);
}

// The n-th literal of an enumeration.
template <typename Enumeration> void choose(Enumeration &field, int n) { field = Enumeration(n); }

#define PRESENT(record, member) ((record).member##Opt = 1, (record).member)

// --------------------------------------------------------------------------------------------------------------- LTE

void fill_mib(Lte_BCCH_BCH_Message &m)
{
    choose(m.message.dl_Bandwidth, 3);
    set_bits(m.message.systemFrameNumber, 8, 0x7C);
    set_bits(m.message.spare, 4, 0);
}

void fill_paging(Lte_PCCH_Message &m)
{
    auto &list = PRESENT(m.message.a.c1.a.paging, pagingRecordList);
    for (std::uint32_t n = 0; n < 4; ++n) {
        auto &record = append<Lte_PagingRecord>(list);
        set_bits(record.ue_Identity.a.s_TMSI.mmec, 8, 1 + n);
        set_bits(record.ue_Identity.a.s_TMSI.m_TMSI, 32, 0xC1000000 + n * 77777);
    }
}

void fill_plmn(AsnList &list, std::initializer_list<int> mcc, std::initializer_list<int> mnc)
{
    auto &plmn = append<Lte_PLMN_IdentityInfo>(list);
    append_numbers(PRESENT(plmn.plmn_Identity, mcc), mcc);
    append_numbers(plmn.plmn_Identity.mnc, mnc);
}

void fill_sib1(Lte_BCCH_DL_SCH_Message &m)
{
    m.message.a.c1.ChoiceId = 1;
    auto &sib1              = m.message.a.c1.a.systemInformationBlockType1;
    fill_plmn(sib1.cellAccessRelatedInfo.plmn_IdentityList, {2, 6, 2}, {0, 1});
    set_bits(sib1.cellAccessRelatedInfo.trackingAreaCode, 16, 0x5E71);
    set_bits(sib1.cellAccessRelatedInfo.cellIdentity, 28, 0xDE01);
    sib1.cellSelectionInfo.q_RxLevMin = -60;
    PRESENT(sib1, p_Max)              = 23;
    sib1.freqBandIndicator            = 3;
    for (int n = 0; n < 2; ++n) {
        auto &info = append<Lte_SchedulingInfo>(sib1.schedulingInfoList);
        if (n == 1)
            choose(append<Lte_SIB_Type>(info.sib_MappingInfo), 1);
    }
}

void fill_sib2(Lte_BCCH_DL_SCH_Message &m)
{
    auto &list = m.message.a.c1.a.systemInformation.criticalExtensions.a.systemInformation_r8.sib_TypeAndInfo;
    auto &sib2 = append<Lte_SystemInformation_r8_IEsSeqOfChoice>(list).a.sib2;
    auto &radio = sib2.radioResourceConfigCommon;
    (void)PRESENT(radio.rach_ConfigCommon.preambleInfo, preamblesGroupAConfig);
    radio.soundingRS_UL_ConfigCommon.ChoiceId = 1;
    sib2.freqInfo.additionalSpectrumEmission = 1;
    choose(PRESENT(sib2.freqInfo, ul_Bandwidth), 3);
    PRESENT(sib2.freqInfo, ul_CarrierFreq) = 19300;
    auto &barring = PRESENT(sib2, ac_BarringInfo);
    set_bits(PRESENT(barring, ac_BarringForMO_Signalling).ac_BarringForSpecialAC, 5, 0);
    set_bits(PRESENT(barring, ac_BarringForMO_Data).ac_BarringForSpecialAC, 5, 0);
}

void fill_srb(Lte_RadioResourceConfigDedicated &radio)
{
    auto &srb        = append<Lte_SRB_ToAddMod>(PRESENT(radio, srb_ToAddModList));
    srb.srb_Identity = 1;
    (void)PRESENT(srb, rlc_Config).a.explicitValue;
    auto &channel    = PRESENT(srb, logicalChannelConfig);
    (void)PRESENT(channel.a.explicitValue, ul_SpecificParameters);
}

void fill_mac(Lte_RadioResourceConfigDedicated &radio)
{
    auto &mac = PRESENT(radio, mac_MainConfig).a.explicitValue;
    auto &ul  = PRESENT(mac, ul_SCH_Config);
    choose(PRESENT(ul, maxHARQ_Tx), 3);
    choose(PRESENT(ul, periodicBSR_Timer), 2);
    PRESENT(mac, drx_Config).ChoiceId = 1;
    PRESENT(mac, phr_Config).ChoiceId = 1;
}

void fill_physical(Lte_RadioResourceConfigDedicated &radio)
{
    auto &physical = PRESENT(radio, physicalConfigDedicated);
    choose(PRESENT(physical, pdsch_ConfigDedicated).p_a, 4);
    (void)PRESENT(physical, pucch_ConfigDedicated);
    PRESENT(physical, pusch_ConfigDedicated).betaOffset_ACK_Index = 9;
    PRESENT(physical, uplinkPowerControlDedicated).filterCoefficientOpt = 1; // the default applies
    auto &commands    = PRESENT(physical, tpc_PDCCH_ConfigPUCCH);
    commands.ChoiceId = 1;
    set_bits(commands.a.setup.tpc_RNTI, 16, 0x3FFC);
    PRESENT(physical, cqi_ReportConfig).nomPDSCH_RS_EPRE_Offset = 0;
    PRESENT(physical, schedulingRequestConfig).ChoiceId         = 1;
}

void fill_setup(Lte_DL_CCCH_Message &m)
{
    m.message.a.c1.ChoiceId = 3;
    auto &setup = m.message.a.c1.a.rrcConnectionSetup.criticalExtensions.a.c1.a.rrcConnectionSetup_r8;
    fill_srb(setup.radioResourceConfigDedicated);
    fill_mac(setup.radioResourceConfigDedicated);
    fill_physical(setup.radioResourceConfigDedicated);
}

Lte_RRCConnectionReconfiguration_r8_IEs &reconfiguration(Lte_DL_DCCH_Message &m)
{
    m.message.a.c1.ChoiceId = 4;
    return m.message.a.c1.a.rrcConnectionReconfiguration.criticalExtensions.a.c1.a.rrcConnectionReconfiguration_r8;
}

void fill_measurement(Lte_MeasConfig &config)
{
    auto &object = append<Lte_MeasObjectToAddMod>(PRESENT(config, measObjectToAddModList));
    object.measObject.a.measObjectEUTRA.carrierFreq = 1300;
    set_bits(object.measObject.a.measObjectEUTRA.neighCellConfig, 2, 1);
    object.measObject.a.measObjectEUTRA.offsetFreqOpt = 1; // the default applies
    for (int n = 1; n <= 2; ++n) {
        append<Lte_ReportConfigToAddMod>(PRESENT(config, reportConfigToAddModList)).reportConfigId = n;
        auto &id = append<Lte_MeasIdToAddMod>(PRESENT(config, measIdToAddModList));
        id       = {n, 1, n};
    }
}

void fill_handover(Lte_DL_DCCH_Message &m)
{
    auto &message = reconfiguration(m);
    auto &control = PRESENT(message, mobilityControlInfo);
    control.targetPhysCellId = 137;
    PRESENT(control, carrierFreq).dl_CarrierFreq = 1300;
    set_bits(control.newUE_Identity, 16, 0x4711);
    (void)PRESENT(control.radioResourceConfigCommon, rach_ConfigCommon);
    auto &rach = PRESENT(control, rach_ConfigDedicated);
    rach.ra_PreambleIndex = 52;
    fill_measurement(PRESENT(message, measConfig));
    fill_mac(PRESENT(message, radioResourceConfigDedicated));
    fill_physical(message.radioResourceConfigDedicated);
    auto &security = PRESENT(message, securityConfigHO);
    choose(PRESENT(security.handoverType.a.intraLTE, securityAlgorithmConfig).cipheringAlgorithm, 2);
}

void fill_long_string(Lte_DL_DCCH_Message &m)
{
    auto &message = reconfiguration(m);
    set_octets(append<AsnOcts>(PRESENT(message, dedicatedInfoNASList)), 633);
    fill_physical(PRESENT(message, radioResourceConfigDedicated));
}

// 64 bands with the gaps that each of them needs for each other one: more than 4,000 elements of one bit.
void fill_capability(Lte_UE_EUTRA_Capability &m)
{
    choose(m.accessStratumRelease, 2);
    m.ue_Category = 4;
    set_bits(PRESENT(m, featureGroupIndicators), 32, 0x7F0DFABA);
    for (int band = 1; band <= 64; ++band) {
        append<Lte_SupportedBandEUTRA>(m.rf_Parameters.supportedBandListEUTRA).bandEUTRA = band;
        auto &info = append<Lte_BandInfoEUTRA>(m.measParameters.bandListEUTRA);
        for (int other = 0; other < 64; ++other)
            append<Lte_InterFreqBandInfo>(info.interFreqBandList).interFreqNeedForGaps = (band ^ other) & 1;
        for (int other = 0; other < 25; ++other)
            append<Lte_InterRAT_BandInfo>(PRESENT(info, interRAT_BandList)).interRAT_NeedForGaps = other & 1;
    }
    auto &fdd = PRESENT(m.interRAT_Parameters, utraFDD);
    for (int band = 0; band < 8; ++band)
        choose(append<Lte_SupportedBandUTRA_FDD>(fdd.supportedBandListUTRA_FDD), band);
}

// ---------------------------------------------------------------------------------------------------------------- NR

void fill_bearers(Nr_CellGroupConfig &m)
{
    for (int n = 1; n <= 5; ++n) {
        auto &bearer = append<Nr_RLC_BearerConfig>(PRESENT(m, rlc_BearerToAddModList));
        bearer.logicalChannelIdentity = n;
        auto &served = PRESENT(bearer, servedRadioBearer);
        served.a.srb_Identity = n <= 2 ? n : 0;
        if (n > 2) {
            served.ChoiceId       = 1;
            served.a.drb_Identity = n - 2;
        }
        auto &am = PRESENT(bearer, rlc_Config).a.am;
        choose(PRESENT(am.ul_AM_RLC, sn_FieldLength), 1);
        choose(PRESENT(am.dl_AM_RLC, sn_FieldLength), 1);
        auto &ul    = PRESENT(PRESENT(bearer, mac_LogicalChannelConfig), ul_SpecificParameters);
        ul.priority = n;
        PRESENT(ul, logicalChannelGroup) = n;
        PRESENT(ul, schedulingRequestID) = 0;
    }
}

void fill_downlink(Nr_BWP_DownlinkDedicated &bwp)
{
    auto &pdcch    = PRESENT(bwp, pdcch_Config);
    pdcch.ChoiceId = 1;
    for (int n = 1; n <= 3; ++n) {
        auto &set = append<Nr_ControlResourceSet>(PRESENT(pdcch.a.setup, controlResourceSetToAddModList));
        set.controlResourceSetId = n;
        set_bits(set.frequencyDomainResources, 45, 0xFFFF0000);
        set.cce_REG_MappingType.ChoiceId = 1;
        auto &space = append<Nr_SearchSpace>(PRESENT(pdcch.a.setup, searchSpacesToAddModList));
        space.searchSpaceId                     = n;
        PRESENT(space, controlResourceSetId)    = n;
        (void)PRESENT(space, monitoringSlotPeriodicityAndOffset);
        set_bits(PRESENT(space, monitoringSymbolsWithinSlot), 14, 0x2000);
        (void)PRESENT(space, nrofCandidates);
        PRESENT(space, searchSpaceType).ChoiceId = 1;
    }
    auto &pdsch    = PRESENT(bwp, pdsch_Config);
    pdsch.ChoiceId = 1;
    for (int n = 0; n < 24; ++n) {
        auto &state       = append<Nr_TCI_State>(PRESENT(pdsch.a.setup, tci_StatesToAddModList));
        state.tci_StateId = n;
        state.qcl_Type1.referenceSignal.ChoiceId = 1;
        PRESENT(state.qcl_Type1, bwp_Id)         = 1;
        auto &second = PRESENT(state, qcl_Type2);
        second.referenceSignal.a.csi_rs = n;
        choose(second.qcl_Type, 3);
    }
}

void fill_cell_group(Nr_CellGroupConfig &m)
{
    fill_bearers(m);
    auto &mac = PRESENT(m, mac_CellGroupConfig);
    choose(PRESENT(mac, bsr_Config).periodicBSR_Timer, 5);
    PRESENT(mac, phr_Config).ChoiceId = 1;
    auto &tag = append<Nr_TAG>(PRESENT(PRESENT(mac, tag_Config), tag_ToAddModList));
    choose(tag.timeAlignmentTimer, 7);
    choose(PRESENT(m, physicalCellGroupConfig).pdsch_HARQ_ACK_Codebook, 1);
    auto &cell = PRESENT(PRESENT(m, spCellConfig), spCellConfigDedicated);
    fill_downlink(PRESENT(cell, initialDownlinkBWP));
    for (int n = 1; n <= 2; ++n) {
        auto &bwp  = append<Nr_BWP_Downlink>(PRESENT(cell, downlinkBWP_ToAddModList));
        bwp.bwp_Id = n;
        fill_downlink(PRESENT(bwp, bwp_Dedicated));
    }
}

void fill_nr_combination(Nr_RF_Parameters &rf, int n)
{
    auto &combination = append<Nr_BandCombination>(PRESENT(rf, supportedBandCombinationList));
    for (int carrier = 0; carrier < 3; ++carrier) {
        auto &band    = append<Nr_BandParameters>(combination.bandList);
        band.ChoiceId = 1;
        band.a.nr.bandNR = 1 + (n + carrier * 7) % 78;
        choose(PRESENT(band.a.nr, ca_BandwidthClassDL_NR), carrier);
        if (carrier == 0)
            choose(PRESENT(band.a.nr, ca_BandwidthClassUL_NR), 0);
    }
    combination.featureSetCombination = n;
    auto &ca = PRESENT(combination, ca_ParametersNR);
    choose(PRESENT(ca, simultaneousRxTxInterBandCA), 0);
    set_bits(PRESENT(combination, supportedBandwidthCombinationSet), 4, 8);
}

void fill_nr_capability(Nr_UE_NR_Capability &m)
{
    for (const int band : {1, 3, 5, 7, 8, 20, 28, 38, 40, 41, 66, 71, 77, 78}) {
        auto &info  = append<Nr_BandNR>(m.rf_Parameters.supportedBandListNR);
        info.bandNR = band;
        choose(PRESENT(info, extendedCP), 0);
        choose(PRESENT(info, multipleTCI), 0);
        choose(PRESENT(info, pusch_256QAM), 0);
        choose(PRESENT(info, ue_PowerClass), 1);
        auto &widths = PRESENT(info, channelBWs_DL).a.fr1;
        set_bits(PRESENT(widths, scs_15kHz), 10, 0x3C0);
        set_bits(PRESENT(widths, scs_30kHz), 10, 0x3FF);
    }
    for (int n = 0; n < 90; ++n)
        fill_nr_combination(m.rf_Parameters, n);
    auto &sets = PRESENT(m, featureSets);
    for (int n = 0; n < 30; ++n) {
        auto &carrier = append<Nr_FeatureSetDownlinkPerCC>(PRESENT(sets, featureSetsDownlinkPerCC));
        choose(carrier.supportedSubcarrierSpacingDL, n % 3);
        choose(PRESENT(carrier, maxNumberMIMO_LayersPDSCH), 1);
        append<AsnInt>(append<Nr_FeatureSetDownlink>(PRESENT(sets, featureSetsDownlink)).featureSetListPerDownlinkCC) =
            n + 1;
    }
}

// ------------------------------------------------------------------------------------------------------------- table

#define MESSAGE(name, type, fill)                                                                                     \
    make<type>(name, fill, [](void *v, unpack_info_struct *s) { type##_unpack(static_cast<type *>(v), s); },          \
               [](pack_info_struct *s, void *v) { type##_pack(s, static_cast<type *>(v)); },                          \
               [](void *v) { type##_free(static_cast<type *>(v)); },                                                  \
               [](void *v, AsnTextBuf *b, std::uint16_t i) { return type##_print(static_cast<type *>(v), b, i); })

template <typename Type, typename... Functions>
rrc_message make(const char *name, void (*fill)(Type &), void (*unpack)(void *, unpack_info_struct *),
                 void (*pack)(pack_info_struct *, void *), void (*free)(void *),
                 int (*print)(void *, AsnTextBuf *, std::uint16_t))
{
    rrc_message m{name, sizeof(Type), unpack, pack, free, print,
                  std::vector<std::uint64_t>((sizeof(Type) + 7) / 8)};
    fill(*reinterpret_cast<Type *>(m.value.data()));
    return m;
}

} // namespace

std::vector<rrc_message> rrc_messages()
{
    std::vector<rrc_message> messages;
    messages.push_back(MESSAGE("MIB", Lte_BCCH_BCH_Message, fill_mib));
    messages.push_back(MESSAGE("paging, 4 records", Lte_PCCH_Message, fill_paging));
    messages.push_back(MESSAGE("SIB1", Lte_BCCH_DL_SCH_Message, fill_sib1));
    messages.push_back(MESSAGE("SI with SIB2", Lte_BCCH_DL_SCH_Message, fill_sib2));
    messages.push_back(MESSAGE("connection set-up", Lte_DL_CCCH_Message, fill_setup));
    messages.push_back(MESSAGE("reconfiguration, handover", Lte_DL_DCCH_Message, fill_handover));
    messages.push_back(MESSAGE("reconfiguration, one long string", Lte_DL_DCCH_Message, fill_long_string));
    messages.push_back(MESSAGE("UE capability, all lists", Lte_UE_EUTRA_Capability, fill_capability));
    messages.push_back(MESSAGE("NR cell group", Nr_CellGroupConfig, fill_cell_group));
    messages.push_back(MESSAGE("NR UE capability", Nr_UE_NR_Capability, fill_nr_capability));
    return messages;
}
