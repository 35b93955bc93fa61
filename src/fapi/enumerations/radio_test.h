#ifndef VRKT_FAPI_ENUMERATIONS_RADIO_TEST_H_
#define VRKT_FAPI_ENUMERATIONS_RADIO_TEST_H_

#include "fapi/enum_table.h"

// clang-format off

// Fields of wlanlite_ signals except rate, and of a few others that concern the radio or
// test the firmware. Where a field is a set of bits, single bits have labels, and sets of
// several bits print as a number.

// channel_information of a test: high byte the bandwidth, low byte which part of the
// channel. Every combination has a label, possible or not.
inline constexpr EnumLabel kChannelInformationLabels[] = {
    Label(0x0000, "bandwidth_20mhzp0",              "A-"),
    Label(0x0001, "bandwidth_20mhzp1",              "A-"),
    Label(0x0002, "bandwidth_20mhzp2",              "A-"),
    Label(0x0003, "bandwidth_20mhzp3",              "A-"),
    Label(0x0004, "bandwidth_20mhzp4",              "A-"),
    Label(0x0005, "bandwidth_20mhzp5",              "A-"),
    Label(0x0006, "bandwidth_20mhzp6",              "A-"),
    Label(0x0007, "bandwidth_20mhzp7",              "A-"),
    Label(0x0008, "bandwidth_20mhznot_applicable",  "A-"),
    Label(0x0100, "bandwidth_40mhzp0",              "A-"),
    Label(0x0101, "bandwidth_40mhzp1",              "A-"),
    Label(0x0102, "bandwidth_40mhzp2",              "A-"),
    Label(0x0103, "bandwidth_40mhzp3",              "A-"),
    Label(0x0104, "bandwidth_40mhzp4",              "A-"),
    Label(0x0105, "bandwidth_40mhzp5",              "A-"),
    Label(0x0106, "bandwidth_40mhzp6",              "A-"),
    Label(0x0107, "bandwidth_40mhzp7",              "A-"),
    Label(0x0108, "bandwidth_40mhznot_applicable",  "A-"),
    Label(0x0200, "bandwidth_80mhzp0",              "A-"),
    Label(0x0201, "bandwidth_80mhzp1",              "A-"),
    Label(0x0202, "bandwidth_80mhzp2",              "A-"),
    Label(0x0203, "bandwidth_80mhzp3",              "A-"),
    Label(0x0204, "bandwidth_80mhzp4",              "A-"),
    Label(0x0205, "bandwidth_80mhzp5",              "A-"),
    Label(0x0206, "bandwidth_80mhzp6",              "A-"),
    Label(0x0207, "bandwidth_80mhzp7",              "A-"),
    Label(0x0208, "bandwidth_80mhznot_applicable",  "A-"),
    Label(0x0300, "bandwidth_160mhzp0",             "H-"),
    Label(0x0301, "bandwidth_160mhzp1",             "H-"),
    Label(0x0302, "bandwidth_160mhzp2",             "H-"),
    Label(0x0303, "bandwidth_160mhzp3",             "H-"),
    Label(0x0304, "bandwidth_160mhzp4",             "H-"),
    Label(0x0305, "bandwidth_160mhzp5",             "H-"),
    Label(0x0306, "bandwidth_160mhzp6",             "H-"),
    Label(0x0307, "bandwidth_160mhzp7",             "H-"),
    Label(0x0308, "bandwidth_160mhznot_applicable", "H-"),
};
inline constexpr EnumTable kChannelInformation = MakeEnumTable<kChannelInformationLabels>();

// flags of wlanlite_cw_start_req. In the next three tables, flags of other signals, the
// same bits have other labels.
inline constexpr EnumLabel kCwStartFlagsLabels[] = {
    Label(0x0000, "none",         "A-"),
    Label(0x0001, "scan_channel", "A-"),
};
inline constexpr EnumTable kCwStartFlags = MakeEnumTable<kCwStartFlagsLabels>();

// flags of wlanlite_tx_read_cfm.
inline constexpr EnumLabel kTxReadFlagsLabels[] = {
    Label(0x0000, "none",           "A-"),
    Label(0x0001, "frame_counting", "A-"),
    Label(0x0002, "thermal_cutout", "A-"),
};
inline constexpr EnumTable kTxReadFlags = MakeEnumTable<kTxReadFlagsLabels>();

// flags of wlanlite_rx_start_req.
inline constexpr EnumLabel kRxStartFlagsLabels[] = {
    Label(0x0000, "none",                 "A-"),
    Label(0x0001, "scan_channel",         "A-"),
    Label(0x0002, "filtering",            "A-"),
    Label(0x0004, "periodic",             "A-D,G"),
    Label(0x0004, "beamforming",          "E-F,H-"),
    Label(0x0008, "ack",                  "A-"),
    Label(0x0010, "lp_mode",              "C-"),
    Label(0x0020, "chan_rssi",            "E-F,H-"),
    Label(0x0040, "disable_external_lna", "F,H-"),
};
inline constexpr EnumTable kRxStartFlags = MakeEnumTable<kRxStartFlagsLabels>();

// flags of wlanlite_tx_set_params_req.
inline constexpr EnumLabel kTxSetParamsFlagsLabels[] = {
    Label(0x0000, "none",                 "A-"),
    Label(0x0001, "ack",                  "A-"),
    Label(0x0002, "duplicate_80",         "A-"),
    Label(0x0004, "duplicate_40",         "A-"),
    Label(0x0008, "thermal_duty_cycle",   "A-D,G"),
    Label(0x0008, "deafen_rx",            "E-F,H-"),
    Label(0x0010, "cs",                   "A-"),
    Label(0x0020, "scan_channel",         "A-"),
    Label(0x0040, "short_preamble",       "A-"),
    Label(0x0080, "disable_scrambler",    "A-"),
    Label(0x0100, "ldpc",                 "A-"),
    Label(0x0200, "stbc",                 "E-F,H-"),
    Label(0x0400, "disable_spreader",     "A-"),
    Label(0x0800, "greenfield_preamble",  "A-"),
    Label(0x1000, "rx_low_power",         "E-"),
    Label(0x2000, "ibss_frames",          "A-"),
    Label(0x4000, "beamforming",          "E-F,H-"),
    Label(0x8000, "disable_external_lna", "F,H-"),
};
inline constexpr EnumTable kTxSetParamsFlags = MakeEnumTable<kTxSetParamsFlagsLabels>();

// flags2 of wlanlite_tx_set_params_req. No bit has a label yet.
inline constexpr EnumLabel kFlags2Labels[] = {
    Label(0x0000, "none", "J-"),
};
inline constexpr EnumTable kFlags2 = MakeEnumTable<kFlags2Labels>();

// The format of an 802.11ax test frame.
inline constexpr EnumLabel kHeModeLabels[] = {
    Label(0x0000, "he_su",               "J-"),
    Label(0x0001, "he_er_su",            "J-"),
    Label(0x0002, "he_er_su_10mhz",      "J-"),
    Label(0x0003, "he_mu_tb_standalone", "J-"),
    Label(0x0004, "he_mu_tb",            "J-"),
};
inline constexpr EnumTable kHeMode = MakeEnumTable<kHeModeLabels>();

// The state of the device under test.
inline constexpr EnumLabel kDeviceStateLabels[] = {
    Label(0x0000, "idle",         "A-"),
    Label(0x0001, "rx_running",   "A-"),
    Label(0x0002, "tx_running",   "A-"),
    Label(0x0003, "cw_running",   "A-"),
    Label(0x0004, "bist_running", "E-"),
};
inline constexpr EnumTable kDeviceState = MakeEnumTable<kDeviceStateLabels>();

// The waveform of the continuous wave test.
inline constexpr EnumLabel kCwWaveTypeLabels[] = {
    Label(0x0000, "sine",     "A-"),
    Label(0x0001, "ramp",     "A-"),
    Label(0x0002, "two_tone", "A-"),
    Label(0x0003, "dc",       "A-"),
    Label(0x0004, "prn",      "A-"),
};
inline constexpr EnumTable kCwWaveType = MakeEnumTable<kCwWaveTypeLabels>();

// The contents of test frames.
inline constexpr EnumLabel kDataTypeLabels[] = {
    Label(0x0000, "data_word",   "A-"),
    Label(0x0001, "data_random", "A-"),
    Label(0x0002, "data_custom", "L-"),
};
inline constexpr EnumTable kDataType = MakeEnumTable<kDataTypeLabels>();

// The radios to use.
inline constexpr EnumLabel kRadioBitmapLabels[] = {
    Label(0x0001, "radio_0", "D-"),
    Label(0x0002, "radio_1", "D-"),
};
inline constexpr EnumTable kRadioBitmap = MakeEnumTable<kRadioBitmapLabels>();

// regulatory_domain and dfs_regulatory_domain.
inline constexpr EnumLabel kRegulatoryDomainLabels[] = {
    Label(0x0000, "unknown", "E-"),
    Label(0x0001, "fcc",     "E-"),
    Label(0x0002, "etsi",    "E-"),
    Label(0x0003, "japan",   "E-"),
    Label(0x0004, "global",  "E-"),
    Label(0x0006, "china",   "E-"),
};
inline constexpr EnumTable kRegulatoryDomain = MakeEnumTable<kRegulatoryDomainLabels>();

// The band that the host allows.
inline constexpr EnumLabel kBandLabels[] = {
    Label(0x0000, "auto",   "G,I-"),
    Label(0x0001, "5ghz",   "G,I-"),
    Label(0x0002, "2_4ghz", "G,I-"),
};
inline constexpr EnumTable kBand = MakeEnumTable<kBandLabels>();

// The number of receive streams minus one.
inline constexpr EnumLabel kRxNssLabels[] = {
    Label(0x0000, "nss_one_stream",    "F"),
    Label(0x0001, "nss_two_streams",   "F"),
    Label(0x0002, "nss_three_streams", "F"),
    Label(0x0003, "nss_four_streams",  "F"),
    Label(0x0004, "nss_five_streams",  "F"),
    Label(0x0005, "nss_six_streams",   "F"),
    Label(0x0006, "nss_seven_streams", "F"),
    Label(0x0007, "nss_eight_streams", "F"),
};
inline constexpr EnumTable kRxNss = MakeEnumTable<kRxNssLabels>();

// The memory statistics that test_pmalloc_req selects.
inline constexpr EnumLabel kAllocAreaLabels[] = {
    Label(0x0000, "pmalloc_stats",     "B-"),
    Label(0x0001, "pmalloc_fsm_stats", "B-"),
    Label(0x0002, "hostio_sig_sizes",  "B-"),
};
inline constexpr EnumTable kAllocArea = MakeEnumTable<kAllocAreaLabels>();

// clang-format on

#endif  // VRKT_FAPI_ENUMERATIONS_RADIO_TEST_H_
