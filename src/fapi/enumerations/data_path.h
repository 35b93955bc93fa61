#ifndef VRKT_FAPI_ENUMERATIONS_DATA_PATH_H_
#define VRKT_FAPI_ENUMERATIONS_DATA_PATH_H_

#include "fapi/enum_table.h"

// clang-format off

// Fields of frames and their transmission, most of them in ma_ signals.

// priority and user_priority.
inline constexpr EnumLabel kUserPriorityLabels[] = {
    Label(0x0000, "qos_up0",    "A-"),
    Label(0x0001, "qos_up1",    "A-"),
    Label(0x0002, "qos_up2",    "A-"),
    Label(0x0003, "qos_up3",    "A-"),
    Label(0x0004, "qos_up4",    "A-"),
    Label(0x0005, "qos_up5",    "A-"),
    Label(0x0006, "qos_up6",    "A-"),
    Label(0x0007, "qos_up7",    "A-"),
    Label(0x8000, "contention", "A-"),
};
inline constexpr EnumTable kUserPriority = MakeEnumTable<kUserPriorityLabels>();

// data_unit_descriptor: which kind of frame the bulk has.
inline constexpr EnumLabel kDataUnitDescriptorLabels[] = {
    Label(0x0000, "ieee802_11_frame", "A-"),
    Label(0x0001, "ieee802_3_frame",  "A-"),
    Label(0x0002, "amsdu_subframe",   "A-"),
    Label(0x0003, "amsdu",            "A-"),
    Label(0x0004, "tcp_ack",          "B-"),
};
inline constexpr EnumTable kDataUnitDescriptor = MakeEnumTable<kDataUnitDescriptorLabels>();

// bulk_data_descriptor of ma_unitdata_req and ma_unitdata_ind.
inline constexpr EnumLabel kBulkDataDescriptorLabels[] = {
    Label(0x0000, "inline",  "D-"),
    Label(0x0001, "smapper", "D-"),
};
inline constexpr EnumTable kBulkDataDescriptor = MakeEnumTable<kBulkDataDescriptorLabels>();

// transmission_status. It does not share the values of result_code: for instance,
// unspecified_failure is 6, and 1 as a result_code.
inline constexpr EnumLabel kTransmissionStatusLabels[] = {
    Label(0x0000, "successful",              "A-"),
    Label(0x0001, "retry_limit",             "A-"),
    Label(0x0002, "tx_lifetime",             "A-"),
    Label(0x0003, "no_bss",                  "A-"),
    Label(0x0004, "excessive_data_length",   "A-"),
    Label(0x0005, "unavailable_key_mapping", "A-"),
    Label(0x0006, "unspecified_failure",     "A-"),
};
inline constexpr EnumTable kTransmissionStatus = MakeEnumTable<kTransmissionStatusLabels>();

// message_type of mlme_send_frame_req.
inline constexpr EnumLabel kMessageTypeLabels[] = {
    Label(0x0001, "eap_message",        "A-"),
    Label(0x0002, "eapol_key_m123",     "A-"),
    Label(0x0003, "eapol_key_m4",       "A-"),
    Label(0x0004, "arp",                "A-"),
    Label(0x0005, "dhcp",               "A-"),
    Label(0x0006, "neighbor_discovery", "A-"),
    Label(0x0007, "wai_message",        "A-"),
    Label(0x0008, "periodic_offload",   "A-D,G"),
    Label(0x0008, "any_other",          "E-F,H-"),
    Label(0x0010, "ieee80211_action",   "A-"),
    Label(0x0011, "ieee80211_mgmt",     "E-F,H-"),
};
inline constexpr EnumTable kMessageType = MakeEnumTable<kMessageTypeLabels>();

// direction.
inline constexpr EnumLabel kDirectionLabels[] = {
    Label(0x0000, "transmit", "A-"),
    Label(0x0001, "receive",  "A-"),
    Label(0x0003, "any",      "A-D,G"),
};
inline constexpr EnumTable kDirection = MakeEnumTable<kDirectionLabels>();

// control_request_type of ma_control_req.
inline constexpr EnumLabel kControlRequestTypeLabels[] = {
    Label(0x0000, "smapper_rx_config", "D,G"),
};
inline constexpr EnumTable kControlRequestType = MakeEnumTable<kControlRequestTypeLabels>();

// clang-format on

#endif  // VRKT_FAPI_ENUMERATIONS_DATA_PATH_H_
