#ifndef VRKT_HIP_FAILURES_H_
#define VRKT_HIP_FAILURES_H_

#include <string_view>

#include "fapi/compiled_signal.h"
#include "hip/hip_signal.h"

// What counts as a failure: a result other than success, a transmission other than successful,
// and each disconnect with its reason. A signal without fields, because it is too short or
// longer than its record, has none.

struct FailureRule {
  std::string_view kind;     // as in the plugin's filter udi.expert.result
  std::string_view field;    // an enumeration
  std::string_view success;  // its label that is no failure; empty if there is none
  std::string_view signals;  // what the name of the signal begins with
};

inline constexpr FailureRule kFailureRules[] = {
    {"result", "result_code", "success", ""},
    {"transmission", "transmission_status", "successful", ""},
    {"disconnect", "reason_code", "", "mlme_disconnect"},
};

// The field by which signals of this layout report a failure, or null. A layout has at most one.
struct FailureField {
  const CompiledField* field = nullptr;
  const FailureRule* rule = nullptr;
};
FailureField FindFailureField(const CompiledSignal& layout);

// Returns the field that says how a signal failed, or null if it did not fail. The signal has a
// layout and is not too short. Takes constant time.
const CompiledField* FindFailure(const SignalView& signal);

#endif  // VRKT_HIP_FAILURES_H_
