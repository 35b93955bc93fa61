#ifndef VRKT_FAPI_SIGNALS_DATA_PLANE_H_
#define VRKT_FAPI_SIGNALS_DATA_PLANE_H_

#include "fapi/enumerations/data_path.h"
#include "fapi/enumerations/result_codes.h"
#include "fapi/signal_layout.h"

// The data path: frames in both directions, their transmission status, and block
// acknowledgement. Family ma_.
//
// "proprieraty" is spelled as in the interface; do not correct. Intended oddities: G has
// the signals of D, not those of F and H; in A, Min of ma_tx_failure_ind leaves out the
// last 2 bytes of its fields.

inline constexpr SignalLayout kDataPlaneRows[] = {
    Signal("ma_blockack_ind", 0x1301, "A-H", Min(38), U16("vif"), Mac("peer_qsta_address"),
           U16("sequence_number"), Enum("reason_code", kReasonCode), U16("blockack_parameter_set"),
           Enum("direction", kDirection), Spares()),
    Signal("ma_blockack_ind", 0x1301, "I-", Min(38), Dump("frame"), U16("vif"),
           Mac("peer_qsta_address"), U16("sequence_number"), Enum("reason_code", kReasonCode),
           U16("blockack_parameter_set"), Enum("direction", kDirection), Spares()),
    Signal("ma_control_cfm", 0x1101, "D,G", Min(26), U16("vif"), Enum("result_code", kResultCode),
           Spares()),
    Signal("ma_control_req", 0x1001, "D,G", Min(26), U16("vif"),
           Enum("control_request_type", kControlRequestType), Spares()),
    Signal("ma_tx_failure_ind", 0x1302, "A", MinDiffersFromEnd(28), U16("vif"),
           Mac("peer_sta_address"), Spares()),
    Signal("ma_tx_failure_ind", 0x1302, "B", Min(30), U16("vif"), Mac("peer_sta_address"),
           Spares()),
    Signal("ma_unitdata_cfm", 0x1100, "A-E", Min(32), Dump("data"), U16("vif"),
           Enum("transmission_status", kTransmissionStatus), X16("host_tag"),
           U16("sequence_number"), U16("peer_index"), Spares()),
    Signal("ma_unitdata_cfm", 0x1100, "F-", Min(32), U16("vif"),
           Enum("transmission_status", kTransmissionStatus), X16("host_tag"),
           U16("sequence_number"), U16("peer_index"), Spares()),
    Signal("ma_unitdata_ind", 0x1300, "A-C", Min(34), Dump("data"), U16("vif"),
           Enum("data_unit_descriptor", kDataUnitDescriptor), U16("sequence_number"),
           Enum("priority", kUserPriority), U16("peer_index"),
           U16("proprieraty_information_length"), Spares()),
    Signal("ma_unitdata_ind", 0x1300, "D,F,H-", Min(36), Dump("data"), U16("vif"),
           Enum("data_unit_descriptor", kDataUnitDescriptor), U16("sequence_number"),
           Enum("priority", kUserPriority), U16("peer_index"),
           U16("proprieraty_information_length"), Enum("bulk_data_descriptor", kBulkDataDescriptor),
           Spares()),
    Signal("ma_unitdata_ind", 0x1300, "E", MinDiffersFromEnd(40), Dump("data"), Dump("data"),
           U16("vif"), Enum("data_unit_descriptor", kDataUnitDescriptor), U16("sequence_number"),
           Enum("priority", kUserPriority), U16("peer_index"),
           U16("proprieraty_information_length"), Enum("bulk_data_descriptor", kBulkDataDescriptor),
           Spares()),
    Signal("ma_unitdata_ind", 0x1300, "G", Min(36), U16("vif"),
           Enum("data_unit_descriptor", kDataUnitDescriptor), U16("sequence_number"),
           Enum("priority", kUserPriority), U16("peer_index"),
           U16("proprieraty_information_length"), Enum("bulk_data_descriptor", kBulkDataDescriptor),
           Spares()),
    Signal("ma_unitdata_req", 0x1000, "A-C", Min(32), Dump("data"), U16("vif"), X16("host_tag"),
           Enum("priority", kUserPriority), U16("peer_index"),
           Enum("data_unit_descriptor", kDataUnitDescriptor), Spares()),
    Signal("ma_unitdata_req", 0x1000, "D,F,H-", Min(34), Dump("data"), U16("vif"), X16("host_tag"),
           Enum("priority", kUserPriority), U16("peer_index"),
           Enum("data_unit_descriptor", kDataUnitDescriptor),
           Enum("bulk_data_descriptor", kBulkDataDescriptor), Spares()),
    Signal("ma_unitdata_req", 0x1000, "E", MinDiffersFromEnd(38), Dump("data"), Dump("data"),
           U16("vif"), X16("host_tag"), Enum("priority", kUserPriority), U16("peer_index"),
           Enum("data_unit_descriptor", kDataUnitDescriptor),
           Enum("bulk_data_descriptor", kBulkDataDescriptor), Spares()),
    Signal("ma_unitdata_req", 0x1000, "G", Min(34), U16("vif"), X16("host_tag"),
           Enum("priority", kUserPriority), U16("peer_index"),
           Enum("data_unit_descriptor", kDataUnitDescriptor),
           Enum("bulk_data_descriptor", kBulkDataDescriptor), Spares()),
};

inline constexpr SignalTable kDataPlaneSignals{kDataPlaneRows};

#endif  // VRKT_FAPI_SIGNALS_DATA_PLANE_H_
