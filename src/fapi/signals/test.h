#ifndef VRKT_FAPI_SIGNALS_TEST_H_
#define VRKT_FAPI_SIGNALS_TEST_H_

#include "fapi/enumerations/radio_test.h"
#include "fapi/enumerations/result_codes.h"
#include "fapi/enumerations/scan_and_connection.h"
#include "fapi/signal_layout.h"

// The test_ signals, and the captures of radio data and of events of the physical
// layer.
//
// Four confirms have no result_code, unlike their neighbours. radio_logging_ind of
// E prints one bulk twice under one name.

inline constexpr SignalLayout kTestRows[] = {
    Signal("phy_event_logging_cfm", 0x911A, "K-", Min(24), Enum("result_code", kResultCode),
           Spares()),
    Signal("phy_event_logging_ind", 0x9308, "K-", Min(34), Dump("data"), U32("command_type"),
           U32("sequence_number"), U32("more_data"), Spares()),
    Signal("phy_event_logging_req", 0x9023, "K-", Min(52), U32("command_type"),
           U16("event_mask_word0"), U16("event_mask_word1"), U16("event_mask_word2"),
           U16("event_mask_word3"), U16("options"), U32("event_count_ctrl_trigger03"),
           U32("event_count_ctrl_trigger47"), U16("event_match0"), U16("event_match1"),
           U16("event_match2"), U16("event_match3"), Spares()),
    Signal("radio_logging_cfm", 0x9100, "A-", Min(24), Enum("result_code", kResultCode), Spares()),
    Signal("radio_logging_ind", 0x9300, "A-D,F,H-", Min(30), Dump("data"), U32("sequence_number"),
           U32("more_data"), Spares()),
    Signal("radio_logging_ind", 0x9300, "E", MinDiffersFromEnd(34), Dump("data"), Dump("data"),
           U32("sequence_number"), U32("more_data"), Spares()),
    Signal("radio_logging_ind", 0x9300, "G", Min(30), U32("sequence_number"), U32("more_data"),
           Spares()),
    Signal("radio_logging_req", 0x9004, "A-D,G", Min(42), U32("logging_source"),
           U32("logging_frequency"), U32("trigger_mode"), X32("delay"), U32("buffer_size"),
           Spares()),
    Signal("radio_logging_req", 0x9004, "E-F,H-", Min(46), U32("logging_source"),
           U32("logging_frequency"), U32("capture_stream"), U32("trigger_mode"), X32("delay"),
           U32("buffer_size"), Spares()),
    Signal("test_bist_get_tx_gain_cfm", 0x9116, "E-", Min(28), Enum("result_code", kResultCode),
           U32("gain"), Spares()),
    Signal("test_bist_get_tx_gain_req", 0x901F, "E-", Min(28), U16("freq"), U16("tx_gain"),
           U16("rx_gain"), Spares()),
    Signal("test_block_requests_req", 0x9000, "A-", Min(24), U16("vif"), Spares()),
    Signal("test_channel_switch_cfm", 0x910D, "B-D,G", Min(24), Enum("result_code", kResultCode),
           Spares()),
    Signal("test_channel_switch_req", 0x9011, "B-D,G", Min(28), U16("vif"),
           X16("channel_frequency"), U16("count"), Spares()),
    Signal("test_check_fw_alive_cfm", 0x910E, "B-", Min(22), Spares()),
    Signal("test_check_fw_alive_req", 0x9012, "B-", Min(22), Spares()),
    Signal("test_configure_monitor_mode_cfm", 0x910C, "E-F,H-", Min(26), U16("vif"),
           Enum("result_code", kResultCode), Spares()),
    Signal("test_configure_monitor_mode_req", 0x9010, "E", MinDiffersFromEnd(28), Dump("data"),
           U16("vif"), Spares()),
    Signal("test_configure_monitor_mode_req", 0x9010, "F,H-", Min(24), Dump("data"), U16("vif"),
           Spares()),
    Signal("test_hip_tester_report_ind", 0x9304, "D-", Min(58), U16("vif"), U16("stream_id"),
           U32("duration"), U32("count"), U32("failed_count"), U32("octets"), U32("mbps"),
           U16("idle_ratio"), U16("int_latency"), U32("tester_reserved1"), U32("tester_reserved2"),
           Spares()),
    Signal("test_hip_tester_report_req", 0x901E, "D-", Min(30), U16("vif"), U16("stream_id"),
           U32("report_interval"), Spares()),
    Signal("test_hip_tester_set_params_cfm", 0x9115, "D-", Min(28), U16("vif"),
           Enum("result_code", kResultCode), U16("stream_id"), Spares()),
    Signal("test_hip_tester_set_params_req", 0x901D, "D,G", Min(26), U16("vif"), U16("stream_id"),
           Spares()),
    Signal("test_hip_tester_set_params_req", 0x901D, "E", MinDiffersFromEnd(30), Dump("data"),
           U16("vif"), U16("stream_id"), Spares()),
    Signal("test_hip_tester_set_params_req", 0x901D, "F,H-", Min(26), Dump("data"), U16("vif"),
           U16("stream_id"), Spares()),
    Signal("test_hip_tester_start_cfm", 0x9113, "D-", Min(28), U16("vif"),
           Enum("result_code", kResultCode), U16("stream_id"), Spares()),
    Signal("test_hip_tester_start_req", 0x901B, "D,G", Min(38), U16("vif"),
           Enum("mode", kHipTesterMode), Enum("end_point", kHipTesterEndPoint),
           Enum("protocol", kHipTesterProtocol), U32("interval"), U16("packets_per_interval"),
           U16("packets_size"), Spares()),
    Signal("test_hip_tester_start_req", 0x901B, "E", MinDiffersFromEnd(42), Dump("data"),
           U16("vif"), Enum("mode", kHipTesterMode), Enum("end_point", kHipTesterEndPoint),
           Enum("protocol", kHipTesterProtocol), U32("interval"), U16("packets_per_interval"),
           U16("packets_size"), Spares()),
    Signal("test_hip_tester_start_req", 0x901B, "F,H-", Min(38), Dump("data"), U16("vif"),
           Enum("mode", kHipTesterMode), Enum("end_point", kHipTesterEndPoint),
           Enum("protocol", kHipTesterProtocol), U32("interval"), U16("packets_per_interval"),
           U16("packets_size"), Spares()),
    Signal("test_hip_tester_stop_cfm", 0x9114, "D-", Min(60), U16("vif"),
           Enum("result_code", kResultCode), U16("stream_id"), U32("duration"), U32("count"),
           U32("failed_count"), U32("octets"), U32("mbps"), U16("idle_ratio"), U16("int_latency"),
           U32("tester_reserved1"), U32("tester_reserved2"), Spares()),
    Signal("test_hip_tester_stop_req", 0x901C, "D-", Min(26), U16("vif"), U16("stream_id"),
           Spares()),
    Signal("test_panic_req", 0x9001, "A-", Min(24), U16("vif"), Spares()),
    Signal("test_pmalloc_cfm", 0x910B, "B-", Min(22), Spares()),
    Signal("test_pmalloc_req", 0x900F, "B-", Min(24), Enum("alloc_area", kAllocArea), Spares()),
    Signal("test_resume_cfm", 0x9110, "B-", Min(22), Spares()),
    Signal("test_resume_req", 0x9003, "A-", Min(24), U16("vif"), Spares()),
    Signal("test_sa_query_cfm", 0x910C, "B-D,G", Min(24), Enum("result_code", kResultCode),
           Spares()),
    Signal("test_sa_query_req", 0x9010, "B-D,G", Min(26), U16("vif"),
           Enum("sa_query_rsp_enabled", kTrueFalse), Spares()),
    Signal("test_suspend_cfm", 0x910F, "B-", Min(22), Spares()),
    Signal("test_suspend_req", 0x9002, "A-", Min(24), U16("vif"), Spares()),
};

inline constexpr SignalTable kTestSignals{kTestRows};

#endif  // VRKT_FAPI_SIGNALS_TEST_H_
