#ifndef VRKT_HIP_HIP_SIGNAL_H_
#define VRKT_HIP_HIP_SIGNAL_H_

#include <cstdint>
#include <span>

#include "fapi/compiled_signal.h"
#include "fapi/hip_version_tags.h"

// Bytes of a record's payload, which somebody else owns.
using SignalSpan = std::span<const std::uint8_t>;

// The three parts of a payload. In a record they follow each other without gaps. An
// empty bulk may have a null address.
//
// The bytes from the signal's start are readable up to kMaxSignalEnd, also where the
// payload is shorter: the reader of the log puts zeros after it. So the id and the
// fields of a signal that is too short can be read without a test of its length.
struct HipSignal {
  SignalSpan signal;  // starts at the id
  SignalSpan bulk1;
  SignalSpan bulk2;
};

// A signal as its layout in one version shows it. It borrows the signal's bytes.
struct SignalView {
  HipVersionTag version;
  const CompiledSignal* layout;  // null if the version does not have the id
  const std::uint8_t* bytes;     // the fields are at their offsets from here

  // What the dumps show: the bulk, or without bulk the bytes of the signal from the
  // minimum length on, which is not always the end of the fields.
  SignalSpan dump;
};

#endif  // VRKT_HIP_HIP_SIGNAL_H_
