#ifndef VRKT_FAPI_ENUMERATIONS_RESULT_CODES_H_
#define VRKT_FAPI_ENUMERATIONS_RESULT_CODES_H_

#include "fapi/enum_table.h"

// clang-format off

// result_code. Values below 0x8000 are status codes of IEEE 802.11. The others belong to the
// interface; those from 0x9000 on are for neighbour awareness networking (NAN) and its data
// paths.
//
// "subscbe" in D and the blank at the end of a label in E are spelled as in the
// interface; do not correct.
inline constexpr EnumLabel kResultCodeLabels[] = {
    Label(0x0000, "success",                           "A-"),
    Label(0x0001, "unspecified_failure",               "A-"),
    Label(0x0026, "invalid_parameters",                "A-"),
    Label(0x0028, "rejected_invalid_ie",               "A-"),
    Label(0x0030, "not_allowed",                       "A-"),
    Label(0x0031, "not_present",                       "A-"),
    Label(0x004F, "transmission_failure",              "A-"),
    Label(0x8000, "timeout",                           "A-D,G"),
    Label(0x8001, "too_many_simultaneous_requests",    "A-"),
    Label(0x8002, "bss_already_started_or_joined",     "A-"),
    Label(0x8003, "not_supported",                     "A-"),
    Label(0x8004, "invalid_state",                     "A-"),
    Label(0x8006, "insufficient_resource",             "A-"),
    Label(0x8007, "missing_information_element",       "A-D,G"),
    Label(0x800A, "invalid_virtual_interface_index",   "A-"),
    Label(0x800B, "host_request_success",              "A-"),
    Label(0x800C, "host_request_failed",               "A-"),
    Label(0x800D, "comeback_time_running",             "A-D,G"),
    Label(0x800E, "invalid_frequency",                 "A-"),
    Label(0x800F, "probe_timeout",                     "C-"),
    Label(0x8010, "auth_timeout",                      "C-"),
    Label(0x8011, "assoc_timeout",                     "C-"),
    Label(0x8012, "assoc_abort",                       "C-"),
    Label(0x8013, "auth_no_ack",                       "E-"),
    Label(0x8014, "assoc_no_ack",                      "E-"),
    Label(0x8100, "auth_failed_code",                  "E-F,H-"),
    Label(0x8200, "assoc_failed_code",                 "E-F,H-"),
    Label(0x9000, "invalid_tlv_value",                 "D-"),
    Label(0x9001, "nan_protocol_failure",              "D-"),
    Label(0x9002, "nan_invalid_publish_subscbe_id",    "D"),
    Label(0x9002, "nan_invalid_publish_subscribe_id",  "E-H"),
    Label(0x9002, "nan_invalid_session_id",            "I-"),
    Label(0x9003, "nan_invalid_requestor_instance_id", "D-"),
    Label(0x9004, "unsupported_concurrency",           "E-F,H-"),
    Label(0x9005, "nan_invalid_ndp_id",                "E-F,H-"),
    Label(0x9006, "nan_invalid_peer_id",               "E-F"),
    Label(0x9006, "nan_invalid_match_id",              "H-"),
    Label(0x9007, "nan_no_ota_ack",                    "E-F,H-"),
    Label(0x9008, "nan_invalid_availability",          "E-F,H-"),
    Label(0x9009, "nan_immutable_unacceptable ",       "E"),
    Label(0x9009, "nan_immutable_unacceptable",        "F,H-"),
    Label(0x900A, "nan_rejected_security_policy",      "E-F,H-"),
    Label(0x900B, "ndp_rejected",                      "E-F,H-"),
    Label(0x900C, "ndl_unacceptable",                  "E-F,H-"),
    Label(0x900D, "ndl_failed_schedule",               "E-F,H-"),
};
inline constexpr EnumTable kResultCode = MakeEnumTable<kResultCodeLabels>();

// The values of reason_code and abort_reason. Values below 0x8000 are reason codes of
// IEEE 802.11, except 0x0014, 0x0028, 0x0029 and 0x0049, which differ from it. The
// others belong to the interface; those from 0x9001 on are for NAN and its data paths.
//
// The blank in "group_ handshake" is spelled as in the interface; do not correct.
inline constexpr EnumLabel kReasonCodeLabels[] = {
    Label(0x0000, "reserved",                                      "C-"),
    Label(0x0001, "unspecified_reason",                            "A-"),
    Label(0x0002, "deauthenticated_invalid_authentication",        "A-"),
    Label(0x0003, "deauthenticated_leaving_ess",                   "A-D,G"),
    Label(0x0003, "deauthenticated_leaving",                       "E-F,H-"),
    Label(0x0004, "deauthenticated_inactivity",                    "A-D,G"),
    Label(0x0005, "deauthenticated_no_more_stations",              "C-"),
    Label(0x0006, "deauthenticated_invalid_class_2_frame",         "A-"),
    Label(0x0007, "deauthenticated_invalid_class_3_frame",         "A-"),
    Label(0x000A, "deauthenticated_unacceptable_power_capability", "A-D,G"),
    Label(0x000D, "deauthenticated_reason_invalid_ie",             "E-F,H-"),
    Label(0x000F, "deauthenticated_4_way_handshake_timeout",       "A-"),
    Label(0x0010, "deauthenticated_group_ handshake_timeout",      "A-"),
    Label(0x0011, "deauthenticated_handshake_element_mismatch",    "A-"),
    Label(0x0014, "deauthenticated_reason_invalid_rsne",           "A-"),
    Label(0x0017, "deauthenticated_802_1_x_auth_failed",           "A-"),
    Label(0x0019, "tdls_peer_unreachable",                         "A-"),
    Label(0x001A, "tdls_teardown_unspecified_reason",              "A-"),
    Label(0x0020, "qos_unspecified_reason",                        "A-"),
    Label(0x0022, "qos_excessive_not_ack",                         "A-"),
    Label(0x0023, "qos_txop_limit_exceeded",                       "A-"),
    Label(0x0024, "qsta_leaving",                                  "A-"),
    Label(0x0025, "end",                                           "A-"),
    Label(0x0026, "unknown",                                       "A-"),
    Label(0x0027, "timeout",                                       "A-"),
    Label(0x0028, "keep_alive_failure",                            "A-"),
    Label(0x0029, "start",                                         "A-"),
    Label(0x0031, "deauthenticated_reason_invalid_pmkid",          "E-F,H-"),
    Label(0x0049, "invalid_pmkid",                                 "E-F,H-"),
    Label(0x8003, "synchronisation_loss",                          "A-"),
    Label(0x8004, "security_required",                             "A-"),
    Label(0x8005, "roaming_failure_link_loss_no_candidate",        "A-"),
    Label(0x8006, "hotspot_max_client_reached",                    "C-"),
    Label(0x8007, "channel_switch_failure",                        "E-F,H-"),
    Label(0x8008, "reporting_aborted_scanning",                    "F-"),
    Label(0x8009, "reporting_aborted_roaming",                     "F,H-"),
    Label(0x9001, "nan_service_terminated_timeout",                "D-"),
    Label(0x9002, "nan_service_terminated_user_request",           "D-"),
    Label(0x9003, "nan_service_terminated_count_reached",          "D-"),
    Label(0x9004, "nan_service_terminated_discovery_shutdown",     "D-"),
    Label(0x9005, "nan_service_terminated_post_discovery_expired", "D,G"),
    Label(0x9006, "nan_transmit_followup_success",                 "D-"),
    Label(0x9007, "nan_transmit_followup_failure",                 "D-"),
    Label(0x9008, "ndp_accepted",                                  "E-F,H-"),
    Label(0x9009, "ndp_rejected",                                  "E-F,H-"),
    Label(0x900A, "ndp_response_timeout",                          "J-"),
};
inline constexpr EnumTable kReasonCode = MakeEnumTable<kReasonCodeLabels>();

// clang-format on

#endif  // VRKT_FAPI_ENUMERATIONS_RESULT_CODES_H_
