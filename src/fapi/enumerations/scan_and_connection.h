#ifndef VRKT_FAPI_ENUMERATIONS_SCAN_AND_CONNECTION_H_
#define VRKT_FAPI_ENUMERATIONS_SCAN_AND_CONNECTION_H_

#include "fapi/enum_table.h"

// clang-format off

// Fields of scans, connections and settings, and of the tester of the interface between
// host and firmware.

// scan_type. Versions number the types anew, so compare labels, not values, between logs
// of different versions. "first_illegal" is not a type, but the limit of the values.
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
inline constexpr EnumTable kScanType = MakeEnumTable<kScanTypeLabels>();

// The reports that a scan request asks for. A set of several bits prints as a number.
inline constexpr EnumLabel kReportModeBitmapLabels[] = {
    Label(0x0001, "buffer_full",       "A-D,G"),
    Label(0x0001, "reserved",          "E-F,H-"),
    Label(0x0002, "end_of_scan_cycle", "A-"),
    Label(0x0004, "real_time",         "A-"),
    Label(0x0008, "no_batch",          "A-"),
};
inline constexpr EnumTable kReportModeBitmap = MakeEnumTable<kReportModeBitmapLabels>();

// The procedure that the firmware has started.
inline constexpr EnumLabel kProcedureTypeLabels[] = {
    Label(0x0000, "unknown",            "A-"),
    Label(0x0001, "connection_started", "A-"),
    Label(0x0002, "device_discovered",  "A-"),
    Label(0x0003, "roaming_started",    "A-"),
};
inline constexpr EnumTable kProcedureType = MakeEnumTable<kProcedureTypeLabels>();

// How a station authenticates. The values are authentication algorithm numbers of
// IEEE 802.11, except 0x0080, which is not in the standard.
inline constexpr EnumLabel kAuthenticationTypeLabels[] = {
    Label(0x0000, "open_system", "A-"),
    Label(0x0001, "shared_key",  "A-"),
    Label(0x0003, "sae",         "E-F,H-"),
    Label(0x0080, "leap",        "A-"),
};
inline constexpr EnumTable kAuthenticationType = MakeEnumTable<kAuthenticationTypeLabels>();

// The purpose of a key. The value of igtk changes in D.
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
inline constexpr EnumTable kKeyType = MakeEnumTable<kKeyTypeLabels>();

// The type of a virtual interface.
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
inline constexpr EnumTable kVirtualInterfaceType = MakeEnumTable<kVirtualInterfaceTypeLabels>();

// Whether a station saves power.
inline constexpr EnumLabel kPowerManagementModeLabels[] = {
    Label(0x0000, "active_mode", "A-"),
    Label(0x0001, "power_save",  "A-"),
};
inline constexpr EnumTable kPowerManagementMode = MakeEnumTable<kPowerManagementModeLabels>();

// How a beacon hides its SSID.
inline constexpr EnumLabel kHiddenSsidLabels[] = {
    Label(0x0000, "not_hidden",         "A-"),
    Label(0x0001, "hidden_zero_length", "A-"),
    Label(0x0002, "hidden_zero_data",   "A-"),
};
inline constexpr EnumTable kHiddenSsid = MakeEnumTable<kHiddenSsidLabels>();

// Whether management frames are protected.
inline constexpr EnumLabel kPmfControlLabels[] = {
    Label(0x0000, "disabled",  "A-C"),
    Label(0x0001, "optional",  "A-C"),
    Label(0x0002, "mandatory", "A-C"),
};
inline constexpr EnumTable kPmfControl = MakeEnumTable<kPmfControlLabels>();

// The type of an access control list.
inline constexpr EnumLabel kAclPolicyLabels[] = {
    Label(0x0000, "blacklist", "A-"),
    Label(0x0001, "whitelist", "A-"),
};
inline constexpr EnumTable kAclPolicy = MakeEnumTable<kAclPolicyLabels>();

// The action that the host requests for a direct (TDLS) link.
inline constexpr EnumLabel kTdlsActionLabels[] = {
    Label(0x0000, "discovery",      "A-"),
    Label(0x0001, "setup",          "A-"),
    Label(0x0002, "teardown",       "A-"),
    Label(0x0003, "channel_switch", "A-D,G"),
};
inline constexpr EnumTable kTdlsAction = MakeEnumTable<kTdlsActionLabels>();

// An event of a direct (TDLS) link.
inline constexpr EnumLabel kTdlsEventLabels[] = {
    Label(0x0001, "connected",    "A-"),
    Label(0x0002, "disconnected", "A-"),
    Label(0x0003, "discovered",   "A-"),
};
inline constexpr EnumTable kTdlsEvent = MakeEnumTable<kTdlsEventLabels>();

// Who controls roaming.
inline constexpr EnumLabel kRoamingTypeLabels[] = {
    Label(0x0000, "legacy", "G,I-"),
    Label(0x0001, "ncho",   "G,I-"),
};
inline constexpr EnumTable kRoamingType = MakeEnumTable<kRoamingTypeLabels>();

// The state of the host. From G on, host_state prints as a plain number.
inline constexpr EnumLabel kHostStateLabels[] = {
    Label(0x0001, "lcd_active",         "C-F"),
    Label(0x0002, "cellular_active",    "C-F"),
    Label(0x0004, "sar_active",         "C-F"),
    Label(0x0040, "grip_active",        "E-F"),
    Label(0x0080, "low_latency_active", "F"),
};
inline constexpr EnumTable kHostState = MakeEnumTable<kHostStateLabels>();

// The mode of a packet filter program.
inline constexpr EnumLabel kFilterModeLabels[] = {
    Label(0x0000, "disabled", "H-"),
    Label(0x0001, "suspend",  "F,H-"),
    Label(0x0002, "active",   "F,H-"),
};
inline constexpr EnumTable kFilterMode = MakeEnumTable<kFilterModeLabels>();

// arp_detect_action and wips_action.
inline constexpr EnumLabel kStopStartLabels[] = {
    Label(0x0000, "stop",  "F-"),
    Label(0x0001, "start", "F-"),
};
inline constexpr EnumTable kStopStart = MakeEnumTable<kStopStartLabels>();

// The ranging results to report. A set of several bits prints as a number.
inline constexpr EnumLabel kRangingIndicationTypeLabels[] = {
    Label(0x0001, "continuous_indication", "H-"),
    Label(0x0002, "ingress",               "H-"),
    Label(0x0004, "egress",                "H-"),
};
inline constexpr EnumTable kRangingIndicationType = MakeEnumTable<kRangingIndicationTypeLabels>();

// The role of the host interface tester.
inline constexpr EnumLabel kHipTesterModeLabels[] = {
    Label(0x0001, "source",   "D-"),
    Label(0x0002, "sink",     "D-"),
    Label(0x0003, "loopback", "D-"),
};
inline constexpr EnumTable kHipTesterMode = MakeEnumTable<kHipTesterModeLabels>();

// The end point of the tester's stream. end_point of other signals is a plain number.
inline constexpr EnumLabel kHipTesterEndPointLabels[] = {
    Label(0x0001, "hostio", "D-"),
    Label(0x0002, "dplp",   "D-"),
};
inline constexpr EnumTable kHipTesterEndPoint = MakeEnumTable<kHipTesterEndPointLabels>();

// The transport protocol of the tester's stream.
inline constexpr EnumLabel kHipTesterProtocolLabels[] = {
    Label(0x0001, "udp", "D-"),
    Label(0x0002, "tcp", "D-"),
};
inline constexpr EnumTable kHipTesterProtocol = MakeEnumTable<kHipTesterProtocolLabels>();

// Fields that are true or false. Values above 1 have no label.
inline constexpr EnumLabel kTrueFalseLabels[] = {
    Label(0x0000, "false", "A-"),
    Label(0x0001, "true",  "A-"),
};
inline constexpr EnumTable kTrueFalse = MakeEnumTable<kTrueFalseLabels>();

// clang-format on

#endif  // VRKT_FAPI_ENUMERATIONS_SCAN_AND_CONNECTION_H_
