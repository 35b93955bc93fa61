#ifndef VRKT_WIRESHARK_FIELD_DESCRIPTIONS_H_
#define VRKT_WIRESHARK_FIELD_DESCRIPTIONS_H_

// What Wireshark shows about a field beside its name, for the fields of which the interface
// says more than the name does.

struct FieldDescription {
  const char* name;
  const char* text;
};

inline constexpr FieldDescription kFieldDescriptions[] = {
    {"abort_reason", "Why beacon reporting stopped"},
    {"action_frame_category_bitmap_active",
     "Categories of the action frames that reach an active host"},
    {"action_frame_category_bitmap_suspended",
     "Categories of the action frames that reach a suspended host"},
    {"address_or_identifier", "Shown as an address, also if it is an identifier"},
    {"bulk_data_descriptor", "Where the frame is"},
    {"data_unit_descriptor", "What kind of frame the bulk is"},
    {"host_tag", "The host's number for a frame, repeated in the report of its transmission"},
    {"message_type", "What kind of frame the host sends"},
    {"procedure_type", "The procedure that has started"},
    {"reason_code", "Why a link, an agreement or a service has ended"},
    {"result_code", "How a request has ended"},
    {"rtt_id", "The number of a range measurement, the same in all of its signals"},
    {"scan_id", "The number of a scan, the same in all of its signals"},
    {"temporal_keys_required", "Whether the new link needs new keys"},
    {"transmission_status", "How the transmission of a frame has ended"},
    {"vif", "Number of the virtual interface"},
};

#endif  // VRKT_WIRESHARK_FIELD_DESCRIPTIONS_H_
