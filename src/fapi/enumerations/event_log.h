#ifndef VRKT_FAPI_ENUMERATIONS_EVENT_LOG_H_
#define VRKT_FAPI_ENUMERATIONS_EVENT_LOG_H_

#include "fapi/enum_table.h"

// clang-format off

// The events of the firmware's event log and of NAN.

// What the firmware logged. The table only ever grew. "anouncement" is what it
// prints.
inline constexpr EnumLabel kEventLabels[] = {
    Label(0x0000, "wifi_event_association_requested",                 "C-"),
    Label(0x0001, "wifi_event_auth_complete",                         "C-"),
    Label(0x0002, "wifi_event_assoc_complete",                        "C-"),
    Label(0x0003, "wifi_event_fw_auth_started",                       "C-"),
    Label(0x0004, "wifi_event_fw_assoc_started",                      "C-"),
    Label(0x0005, "wifi_event_fw_re_assoc_started",                   "C-"),
    Label(0x0006, "wifi_event_driver_scan_requested",                 "C-"),
    Label(0x0007, "wifi_event_driver_scan_result_found",              "C-"),
    Label(0x0008, "wifi_event_driver_scan_complete",                  "C-"),
    Label(0x0009, "wifi_event_g_scan_started",                        "C-"),
    Label(0x000A, "wifi_event_g_scan_complete",                       "C-"),
    Label(0x000B, "wifi_event_disassociation_requested",              "C-"),
    Label(0x000C, "wifi_event_re_association_requested",              "C-"),
    Label(0x000D, "wifi_event_roam_requested",                        "C-"),
    Label(0x000E, "wifi_event_beacon_received",                       "C-"),
    Label(0x000F, "wifi_event_roam_scan_started",                     "C-"),
    Label(0x0010, "wifi_event_roam_scan_complete",                    "C-"),
    Label(0x0011, "wifi_event_roam_search_started",                   "C-"),
    Label(0x0012, "wifi_event_roam_search_stopped",                   "C-"),
    Label(0x0014, "wifi_event_channel_switch_anouncement",            "C-"),
    Label(0x0015, "wifi_event_fw_eapol_frame_transmit_start",         "C-"),
    Label(0x0016, "wifi_event_fw_eapol_frame_transmit_stop",          "C-"),
    Label(0x0017, "wifi_event_driver_eapol_frame_transmit_requested", "C-"),
    Label(0x0018, "wifi_event_fw_eapol_frame_received",               "C-"),
    Label(0x001A, "wifi_event_driver_eapol_frame_received",           "C-"),
    Label(0x001B, "wifi_event_block_ack_negotiation_complete",        "C-"),
    Label(0x001C, "wifi_event_bt_coex_bt_sco_start",                  "C-"),
    Label(0x001D, "wifi_event_bt_coex_bt_sco_stop",                   "C-"),
    Label(0x001E, "wifi_event_bt_coex_bt_scan_start",                 "C-"),
    Label(0x001F, "wifi_event_bt_coex_bt_scan_stop",                  "C-"),
    Label(0x0020, "wifi_event_bt_coex_bt_hid_start",                  "C-"),
    Label(0x0021, "wifi_event_bt_coex_bt_hid_stop",                   "C-"),
    Label(0x0022, "wifi_event_roam_auth_started",                     "C-"),
    Label(0x0023, "wifi_event_roam_auth_complete",                    "C-"),
    Label(0x0024, "wifi_event_roam_assoc_started",                    "C-"),
    Label(0x0025, "wifi_event_roam_assoc_complete",                   "C-"),
    Label(0x0026, "wifi_event_g_scan_stop",                           "C-"),
    Label(0x0027, "wifi_event_g_scan_cycle_started",                  "C-"),
    Label(0x0028, "wifi_event_g_scan_cycle_completed",                "C-"),
    Label(0x0029, "wifi_event_g_scan_bucket_started",                 "C-"),
    Label(0x002A, "wifi_event_g_scan_bucket_completed",               "C-"),
    Label(0x002B, "wifi_event_g_scan_results_available",              "C-"),
    Label(0x002C, "wifi_event_g_scan_capabilities",                   "C-"),
    Label(0x002D, "wifi_event_roam_candidate_found",                  "C-"),
    Label(0x002E, "wifi_event_roam_scan_config",                      "C-"),
    Label(0x002F, "wifi_event_auth_timeout",                          "C-"),
    Label(0x0030, "wifi_event_assoc_timeout",                         "C-"),
    Label(0x0031, "wifi_event_mem_alloc_failure",                     "C-"),
    Label(0x0032, "wifi_event_driver_pno_add",                        "C-"),
    Label(0x0033, "wifi_event_driver_pno_remove",                     "C-"),
    Label(0x0034, "wifi_event_driver_pno_network_found",              "C-"),
    Label(0x0035, "wifi_event_driver_pno_scan_requested",             "C-"),
    Label(0x0036, "wifi_event_driver_pno_scan_result_found",          "C-"),
    Label(0x0037, "wifi_event_driver_pno_scan_complete",              "C-"),
    Label(0x0038, "wifi_event_fw_btm_frame_request",                  "L-"),
    Label(0x0039, "wifi_event_fw_btm_frame_response",                 "L-"),
    Label(0x003A, "wifi_event_fw_nr_frame_request",                   "L-"),
    Label(0x003C, "wifi_event_fw_connection_attempt_aborted",         "L-"),
    Label(0x003D, "wifi_event_roam_auth_timeout",                     "L-"),
    Label(0x003E, "wifi_event_roam_scan_result",                      "L-"),
    Label(0x003F, "wifi_event_roam_rssi_threshold",                   "L-"),
    Label(0x0040, "wifi_event_fw_beacon_report_request",              "L-"),
    Label(0x0041, "wifi_event_fw_ftm_range_request",                  "L-"),
    Label(0x0042, "wifi_event_fw_nan_role_type",                      "L-"),
    Label(0x0043, "wifi_event_fw_frame_transmit_failure",             "L-"),
    Label(0x0044, "wifi_event_fw_nr_frame_response",                  "L-"),
    Label(0x0064, "wifi_event_blackout_start",                        "C-"),
    Label(0x0065, "wifi_event_blackout_stop",                         "C-"),
    Label(0x0100, "wifi_event_nan_publish_terminated",                "D-"),
    Label(0x0101, "wifi_event_nan_subscribe_terminated",              "D-"),
    Label(0x0102, "wifi_event_nan_match_expired",                     "D-"),
    Label(0x0103, "wifi_event_nan_address_changed",                   "D-"),
    Label(0x0104, "wifi_event_nan_cluster_started",                   "D-"),
    Label(0x0105, "wifi_event_nan_cluster_joined",                    "D-"),
    Label(0x0106, "wifi_event_nan_transmit_followup",                 "D-"),
};
inline constexpr EnumTable kEvent = MakeEnumTable<kEventLabels>();

// clang-format on

#endif  // VRKT_FAPI_ENUMERATIONS_EVENT_LOG_H_
