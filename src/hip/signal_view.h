#ifndef VRKT_HIP_SIGNAL_VIEW_H_
#define VRKT_HIP_SIGNAL_VIEW_H_

#include <cstdint>

#include "fapi/compiled_signal.h"
#include "fapi/hip_version_tags.h"
#include "hip/hip_signal.h"

// What a signal is in one version. It borrows the signal's bytes.
struct SignalView {
  HipVersionTag version;
  std::uint16_t id;
  const CompiledSignal* layout;  // null if the version does not have the id

  // Whether the signal is shorter than the layout's minimum length and has no bulk. It
  // has no line and no fields then.
  bool is_too_short;

  const std::uint8_t* bytes;  // the fields are at their offsets from here

  // What the dumps show: the bulk, or without bulk the bytes of the signal from the
  // minimum length on, which is not always the end of the fields.
  SignalSpan dump;
};

SignalView ViewSignal(HipVersionTag version, const HipSignal& signal);

#endif  // VRKT_HIP_SIGNAL_VIEW_H_
