#ifndef VRKT_FAPI_ENUMERATIONS_RESULT_CODES_H_
#define VRKT_FAPI_ENUMERATIONS_RESULT_CODES_H_

#include "fapi/enum_table.h"

// How things ended.

// The outcome of a request. Below 0x8000 these are status codes of IEEE 802.11,
// from 0x8000 the interface's own, from 0x9000 those of NAN and its data paths.
//
// The table never moved a label, it only reworded and dropped some: the misspelt
// "subscbe" of D and the blank at the end of a label of E are what those versions
// print.
// clang-format off
inline constexpr EnumLabel kResultCodeLabels[] = {
    Label(0x0000, "success",                           "A-L"),
    Label(0x0001, "unspecified_failure",               "A-L"),
    Label(0x0026, "invalid_parameters",                "A-L"),
    Label(0x0028, "rejected_invalid_ie",               "A-L"),
    Label(0x0030, "not_allowed",                       "A-L"),
    Label(0x0031, "not_present",                       "A-L"),
    Label(0x004F, "transmission_failure",              "A-L"),
    Label(0x8000, "timeout",                           "A-D,G"),
    Label(0x8001, "too_many_simultaneous_requests",    "A-L"),
    Label(0x8002, "bss_already_started_or_joined",     "A-L"),
    Label(0x8003, "not_supported",                     "A-L"),
    Label(0x8004, "invalid_state",                     "A-L"),
    Label(0x8006, "insufficient_resource",             "A-L"),
    Label(0x8007, "missing_information_element",       "A-D,G"),
    Label(0x800A, "invalid_virtual_interface_index",   "A-L"),
    Label(0x800B, "host_request_success",              "A-L"),
    Label(0x800C, "host_request_failed",               "A-L"),
    Label(0x800D, "comeback_time_running",             "A-D,G"),
    Label(0x800E, "invalid_frequency",                 "A-L"),
    Label(0x800F, "probe_timeout",                     "C-L"),
    Label(0x8010, "auth_timeout",                      "C-L"),
    Label(0x8011, "assoc_timeout",                     "C-L"),
    Label(0x8012, "assoc_abort",                       "C-L"),
    Label(0x8013, "auth_no_ack",                       "E-L"),
    Label(0x8014, "assoc_no_ack",                      "E-L"),
    Label(0x8100, "auth_failed_code",                  "E-F,H-L"),
    Label(0x8200, "assoc_failed_code",                 "E-F,H-L"),
    Label(0x9000, "invalid_tlv_value",                 "D-L"),
    Label(0x9001, "nan_protocol_failure",              "D-L"),
    Label(0x9002, "nan_invalid_publish_subscbe_id",    "D"),
    Label(0x9002, "nan_invalid_publish_subscribe_id",  "E-H"),
    Label(0x9002, "nan_invalid_session_id",            "I-L"),
    Label(0x9003, "nan_invalid_requestor_instance_id", "D-L"),
    Label(0x9004, "unsupported_concurrency",           "E-F,H-L"),
    Label(0x9005, "nan_invalid_ndp_id",                "E-F,H-L"),
    Label(0x9006, "nan_invalid_peer_id",               "E-F"),
    Label(0x9006, "nan_invalid_match_id",              "H-L"),
    Label(0x9007, "nan_no_ota_ack",                    "E-F,H-L"),
    Label(0x9008, "nan_invalid_availability",          "E-F,H-L"),
    Label(0x9009, "nan_immutable_unacceptable ",       "E"),
    Label(0x9009, "nan_immutable_unacceptable",        "F,H-L"),
    Label(0x900A, "nan_rejected_security_policy",      "E-F,H-L"),
    Label(0x900B, "ndp_rejected",                      "E-F,H-L"),
    Label(0x900C, "ndl_unacceptable",                  "E-F,H-L"),
    Label(0x900D, "ndl_failed_schedule",               "E-F,H-L"),
};
// clang-format on
inline constexpr EnumTable kResultCode =
    LabelTable<kResultCodeLabels,
               LabelCounts{{"A-B", 19}, {"C", 23}, {"D", 27}, {"E-F,H-L", 38}, {"G", 29}}>();

// Why something ended (reason_code), or why beacon reporting did (abort_reason).
// Below 0x8000 these are reason codes of IEEE 802.11, from 0x8003 the
// interface's own, from 0x9001 those of NAN and its data paths. The blank inside
// "group_ handshake" is printed.
// clang-format off
inline constexpr EnumLabel kReasonCodeLabels[] = {
    Label(0x0000, "reserved",                                      "C-L"),
    Label(0x0001, "unspecified_reason",                            "A-L"),
    Label(0x0002, "deauthenticated_invalid_authentication",        "A-L"),
    Label(0x0003, "deauthenticated_leaving_ess",                   "A-D,G"),
    Label(0x0003, "deauthenticated_leaving",                       "E-F,H-L"),
    Label(0x0004, "deauthenticated_inactivity",                    "A-D,G"),
    Label(0x0005, "deauthenticated_no_more_stations",              "C-L"),
    Label(0x0006, "deauthenticated_invalid_class_2_frame",         "A-L"),
    Label(0x0007, "deauthenticated_invalid_class_3_frame",         "A-L"),
    Label(0x000A, "deauthenticated_unacceptable_power_capability", "A-D,G"),
    Label(0x000D, "deauthenticated_reason_invalid_ie",             "E-F,H-L"),
    Label(0x000F, "deauthenticated_4_way_handshake_timeout",       "A-L"),
    Label(0x0010, "deauthenticated_group_ handshake_timeout",      "A-L"),
    Label(0x0011, "deauthenticated_handshake_element_mismatch",    "A-L"),
    Label(0x0014, "deauthenticated_reason_invalid_rsne",           "A-L"),
    Label(0x0017, "deauthenticated_802_1_x_auth_failed",           "A-L"),
    Label(0x0019, "tdls_peer_unreachable",                         "A-L"),
    Label(0x001A, "tdls_teardown_unspecified_reason",              "A-L"),
    Label(0x0020, "qos_unspecified_reason",                        "A-L"),
    Label(0x0022, "qos_excessive_not_ack",                         "A-L"),
    Label(0x0023, "qos_txop_limit_exceeded",                       "A-L"),
    Label(0x0024, "qsta_leaving",                                  "A-L"),
    Label(0x0025, "end",                                           "A-L"),
    Label(0x0026, "unknown",                                       "A-L"),
    Label(0x0027, "timeout",                                       "A-L"),
    Label(0x0028, "keep_alive_failure",                            "A-L"),
    Label(0x0029, "start",                                         "A-L"),
    Label(0x0031, "deauthenticated_reason_invalid_pmkid",          "E-F,H-L"),
    Label(0x0049, "invalid_pmkid",                                 "E-F,H-L"),
    Label(0x8003, "synchronisation_loss",                          "A-L"),
    Label(0x8004, "security_required",                             "A-L"),
    Label(0x8005, "roaming_failure_link_loss_no_candidate",        "A-L"),
    Label(0x8006, "hotspot_max_client_reached",                    "C-L"),
    Label(0x8007, "channel_switch_failure",                        "E-F,H-L"),
    Label(0x8008, "reporting_aborted_scanning",                    "F-L"),
    Label(0x8009, "reporting_aborted_roaming",                     "F,H-L"),
    Label(0x9001, "nan_service_terminated_timeout",                "D-L"),
    Label(0x9002, "nan_service_terminated_user_request",           "D-L"),
    Label(0x9003, "nan_service_terminated_count_reached",          "D-L"),
    Label(0x9004, "nan_service_terminated_discovery_shutdown",     "D-L"),
    Label(0x9005, "nan_service_terminated_post_discovery_expired", "D,G"),
    Label(0x9006, "nan_transmit_followup_success",                 "D-L"),
    Label(0x9007, "nan_transmit_followup_failure",                 "D-L"),
    Label(0x9008, "ndp_accepted",                                  "E-F,H-L"),
    Label(0x9009, "ndp_rejected",                                  "E-F,H-L"),
    Label(0x900A, "ndp_response_timeout",                          "J-L"),
};
// clang-format on
inline constexpr EnumTable kReasonCode = LabelTable<
    kReasonCodeLabels,
    LabelCounts{
        {"A-B", 26}, {"C", 29}, {"D", 36}, {"E", 39}, {"F,H-I", 41}, {"G", 37}, {"J-L", 42}}>();

#endif  // VRKT_FAPI_ENUMERATIONS_RESULT_CODES_H_
