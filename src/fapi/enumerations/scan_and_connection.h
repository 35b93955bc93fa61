#ifndef VRKT_FAPI_ENUMERATIONS_SCAN_AND_CONNECTION_H_
#define VRKT_FAPI_ENUMERATIONS_SCAN_AND_CONNECTION_H_

#include "fapi/enum_table.h"

// The enumerated fields of scans, connections and the small switches of management
// traffic.

// The kind of scan. Each generation put rows in, so that one label stands at
// different values: a value says nothing without its version. The last row from B
// on is one beyond the last real scan type.
// clang-format off
inline constexpr EnumLabel kScanTypeLabels[] = {
    Label(0x0001, "initial_scan",                "A-"),
    Label(0x0002, "full_scan",                   "A-"),
    Label(0x0003, "scheduled_scan",              "A-"),
    Label(0x0004, "p2p_scan_full",               "A-"),
    Label(0x0005, "p2p_scan_social",             "A-"),
    Label(0x0006, "obss_scan",                   "A-"),
    Label(0x0007, "ap_auto_channel_selection",   "A-"),
    Label(0x0008, "pno_scan",                    "A-C"),
    Label(0x0009, "gscan",                       "A-"),
    Label(0x000A, "measurement_scan",            "A-"),
    Label(0x000B, "background_roaming_scan",     "A"),
    Label(0x000B, "soft_neighbour_roaming_scan", "B-H"),
    Label(0x000B, "soft_cached_roaming_scan",    "I-"),
    Label(0x000C, "panic_limited_roaming_scan",  "A"),
    Label(0x000C, "soft_cached_roaming_scan",    "B-H"),
    Label(0x000C, "soft_all_roaming_scan",       "I"),
    Label(0x000C, "soft_full_roaming_scan",      "J-"),
    Label(0x000D, "panic_full_roaming_scan",     "A"),
    Label(0x000D, "soft_all_roaming_scan",       "B-H"),
    Label(0x000D, "hard_cached_roaming_scan",    "I-"),
    Label(0x000E, "hard_neighbour_roaming_scan", "B-H"),
    Label(0x000E, "hard_all_roaming_scan",       "I"),
    Label(0x000E, "hard_full_roaming_scan",      "J-"),
    Label(0x000F, "hard_cached_roaming_scan",    "B-H"),
    Label(0x000F, "obss_scan_internal",          "I-"),
    Label(0x0010, "hard_all_roaming_scan",       "B-H"),
    Label(0x0010, "nan_scan",                    "I-"),
    Label(0x0011, "first_illegal",               "B-C"),
    Label(0x0011, "obss_scan_internal",          "D-H"),
    Label(0x0011, "ftm_neighbour_scan",          "I-"),
    Label(0x0012, "nan_scan",                    "D-H"),
    Label(0x0012, "first_illegal",               "I-"),
    Label(0x0013, "first_illegal",               "D,G"),
    Label(0x0013, "ftm_neighbour_scan",          "E-F,H"),
    Label(0x0014, "first_illegal",               "E-F,H"),
};
// clang-format on
inline constexpr EnumTable kScanType =
    LabelTable<kScanTypeLabels,
               LabelCounts{{"A", 13}, {"B-C,I-", 17}, {"D,G", 18}, {"E-F,H", 19}}>();

// When scan results are reported. A row for each single bit; combinations have
// none.
// clang-format off
inline constexpr EnumLabel kReportModeBitmapLabels[] = {
    Label(0x0001, "buffer_full",       "A-D,G"),
    Label(0x0001, "reserved",          "E-F,H-"),
    Label(0x0002, "end_of_scan_cycle", "A-"),
    Label(0x0004, "real_time",         "A-"),
    Label(0x0008, "no_batch",          "A-"),
};
// clang-format on
inline constexpr EnumTable kReportModeBitmap =
    LabelTable<kReportModeBitmapLabels, LabelCounts{{"A-", 4}}>();

// What the firmware has started.
// clang-format off
inline constexpr EnumLabel kProcedureTypeLabels[] = {
    Label(0x0000, "unknown",            "A-"),
    Label(0x0001, "connection_started", "A-"),
    Label(0x0002, "device_discovered",  "A-"),
    Label(0x0003, "roaming_started",    "A-"),
};
// clang-format on
inline constexpr EnumTable kProcedureType =
    LabelTable<kProcedureTypeLabels, LabelCounts{{"A-", 4}}>();

// How a station authenticates. The values above shared_key are not those of
// IEEE 802.11.
// clang-format off
inline constexpr EnumLabel kAuthenticationTypeLabels[] = {
    Label(0x0000, "open_system", "A-"),
    Label(0x0001, "shared_key",  "A-"),
    Label(0x0003, "sae",         "E-F,H-"),
    Label(0x0080, "leap",        "A-"),
};
// clang-format on
inline constexpr EnumTable kAuthenticationType =
    LabelTable<kAuthenticationTypeLabels, LabelCounts{{"A-D,G", 3}, {"E-F,H-", 4}}>();

// What a key is for. igtk moved at D.
// clang-format off
inline constexpr EnumLabel kKeyTypeLabels[] = {
    Label(0x0000, "group",         "A-"),
    Label(0x0001, "pairwise",      "A-"),
    Label(0x0002, "peerkey",       "A-C"),
    Label(0x0002, "wep",           "D-"),
    Label(0x0003, "igtk",          "D-"),
    Label(0x0004, "default",       "A-C"),
    Label(0x0004, "pmk",           "E-F,H-"),
    Label(0x0005, "first_illegal", "E-F,H-"),
    Label(0x0008, "oxygen",        "A-B"),
    Label(0x0010, "igtk",          "A-C"),
};
// clang-format on
inline constexpr EnumTable kKeyType =
    LabelTable<kKeyTypeLabels, LabelCounts{{"A-B,E-F,H-", 6}, {"C", 5}, {"D,G", 4}}>();

// What a virtual interface is.
// clang-format off
inline constexpr EnumLabel kVirtualInterfaceTypeLabels[] = {
    Label(0x0000, "unsynchronised", "A-"),
    Label(0x0001, "adhoc",          "A-B"),
    Label(0x0002, "station",        "A-"),
    Label(0x0003, "ap",             "A-"),
    Label(0x0004, "wlanlite",       "C-"),
    Label(0x0005, "nan",            "D-"),
    Label(0x0006, "discovery",      "E-F,H-"),
    Label(0x0007, "preconnect",     "E-F,H-"),
    Label(0x0008, "nandatapath",    "E-F"),
    Label(0x0010, "monitor",        "E-F,H-"),
    Label(0x0020, "scan",           "E-F,H-"),
    Label(0x0021, "offchannel",     "E-F,H-"),
    Label(0x0022, "range",          "E-F,H-"),
};
// clang-format on
inline constexpr EnumTable kVirtualInterfaceType =
    LabelTable<kVirtualInterfaceTypeLabels,
               LabelCounts{{"A-C", 4}, {"D,G", 5}, {"E-F", 12}, {"H-", 11}}>();

// Whether a station saves power.
// clang-format off
inline constexpr EnumLabel kPowerManagementModeLabels[] = {
    Label(0x0000, "active_mode", "A-"),
    Label(0x0001, "power_save",  "A-"),
};
// clang-format on
inline constexpr EnumTable kPowerManagementMode =
    LabelTable<kPowerManagementModeLabels, LabelCounts{{"A-", 2}}>();

// How a beacon hides its SSID.
// clang-format off
inline constexpr EnumLabel kHiddenSsidLabels[] = {
    Label(0x0000, "not_hidden",         "A-"),
    Label(0x0001, "hidden_zero_length", "A-"),
    Label(0x0002, "hidden_zero_data",   "A-"),
};
// clang-format on
inline constexpr EnumTable kHiddenSsid = LabelTable<kHiddenSsidLabels, LabelCounts{{"A-", 3}}>();

// Protection of management frames.
// clang-format off
inline constexpr EnumLabel kPmfControlLabels[] = {
    Label(0x0000, "disabled",  "A-C"),
    Label(0x0001, "optional",  "A-C"),
    Label(0x0002, "mandatory", "A-C"),
};
// clang-format on
inline constexpr EnumTable kPmfControl = LabelTable<kPmfControlLabels, LabelCounts{{"A-C", 3}}>();

// Whom an access control list lets in.
// clang-format off
inline constexpr EnumLabel kAclPolicyLabels[] = {
    Label(0x0000, "blacklist", "A-"),
    Label(0x0001, "whitelist", "A-"),
};
// clang-format on
inline constexpr EnumTable kAclPolicy = LabelTable<kAclPolicyLabels, LabelCounts{{"A-", 2}}>();

// What the host asks of a direct link.
// clang-format off
inline constexpr EnumLabel kTdlsActionLabels[] = {
    Label(0x0000, "discovery",      "A-"),
    Label(0x0001, "setup",          "A-"),
    Label(0x0002, "teardown",       "A-"),
    Label(0x0003, "channel_switch", "A-D,G"),
};
// clang-format on
inline constexpr EnumTable kTdlsAction =
    LabelTable<kTdlsActionLabels, LabelCounts{{"A-D,G", 4}, {"E-F,H-", 3}}>();

// What happened to a direct link.
// clang-format off
inline constexpr EnumLabel kTdlsEventLabels[] = {
    Label(0x0001, "connected",    "A-"),
    Label(0x0002, "disconnected", "A-"),
    Label(0x0003, "discovered",   "A-"),
};
// clang-format on
inline constexpr EnumTable kTdlsEvent = LabelTable<kTdlsEventLabels, LabelCounts{{"A-", 3}}>();

// Who controls roaming.
// clang-format off
inline constexpr EnumLabel kRoamingTypeLabels[] = {
    Label(0x0000, "legacy", "G,I-"),
    Label(0x0001, "ncho",   "G,I-"),
};
// clang-format on
inline constexpr EnumTable kRoamingType =
    LabelTable<kRoamingTypeLabels, LabelCounts{{"G,I-", 2}}>();

// What the host is doing. From G on the same field prints as a plain number.
// clang-format off
inline constexpr EnumLabel kHostStateLabels[] = {
    Label(0x0001, "lcd_active",         "C-F"),
    Label(0x0002, "cellular_active",    "C-F"),
    Label(0x0004, "sar_active",         "C-F"),
    Label(0x0040, "grip_active",        "E-F"),
    Label(0x0080, "low_latency_active", "F"),
};
// clang-format on
inline constexpr EnumTable kHostState =
    LabelTable<kHostStateLabels, LabelCounts{{"C-D", 3}, {"E", 4}, {"F", 5}}>();

// What a packet filter program does. F has no label at 0.
// clang-format off
inline constexpr EnumLabel kFilterModeLabels[] = {
    Label(0x0000, "disabled", "H-"),
    Label(0x0001, "suspend",  "F,H-"),
    Label(0x0002, "active",   "F,H-"),
};
// clang-format on
inline constexpr EnumTable kFilterMode =
    LabelTable<kFilterModeLabels, LabelCounts{{"F", 2}, {"H-", 3}}>();

// Stops or starts something: arp_detect_action and wips_action.
// clang-format off
inline constexpr EnumLabel kStopStartLabels[] = {
    Label(0x0000, "stop",  "F-"),
    Label(0x0001, "start", "F-"),
};
// clang-format on
inline constexpr EnumTable kStopStart = LabelTable<kStopStartLabels, LabelCounts{{"F-", 2}}>();

// Which ranging results are indicated. A row for each single bit.
// clang-format off
inline constexpr EnumLabel kRangingIndicationTypeLabels[] = {
    Label(0x0001, "continuous_indication", "H-"),
    Label(0x0002, "ingress",               "H-"),
    Label(0x0004, "egress",                "H-"),
};
// clang-format on
inline constexpr EnumTable kRangingIndicationType =
    LabelTable<kRangingIndicationTypeLabels, LabelCounts{{"H-", 3}}>();

// The role of the host interface tester.
// clang-format off
inline constexpr EnumLabel kHipTesterModeLabels[] = {
    Label(0x0001, "source",   "D-"),
    Label(0x0002, "sink",     "D-"),
    Label(0x0003, "loopback", "D-"),
};
// clang-format on
inline constexpr EnumTable kHipTesterMode =
    LabelTable<kHipTesterModeLabels, LabelCounts{{"D-", 3}}>();

// Where the tester's stream ends. Other signals have a plain number of the same
// name.
// clang-format off
inline constexpr EnumLabel kHipTesterEndPointLabels[] = {
    Label(0x0001, "hostio", "D-"),
    Label(0x0002, "dplp",   "D-"),
};
// clang-format on
inline constexpr EnumTable kHipTesterEndPoint =
    LabelTable<kHipTesterEndPointLabels, LabelCounts{{"D-", 2}}>();

// What the tester's stream runs over.
// clang-format off
inline constexpr EnumLabel kHipTesterProtocolLabels[] = {
    Label(0x0001, "udp", "D-"),
    Label(0x0002, "tcp", "D-"),
};
// clang-format on
inline constexpr EnumTable kHipTesterProtocol =
    LabelTable<kHipTesterProtocolLabels, LabelCounts{{"D-", 2}}>();

// The fields that are true or false. Any other value has no label: 2 is not true.
// clang-format off
inline constexpr EnumLabel kTrueFalseLabels[] = {
    Label(0x0000, "false", "A-"),
    Label(0x0001, "true",  "A-"),
};
// clang-format on
inline constexpr EnumTable kTrueFalse = LabelTable<kTrueFalseLabels, LabelCounts{{"A-", 2}}>();

#endif  // VRKT_FAPI_ENUMERATIONS_SCAN_AND_CONNECTION_H_
