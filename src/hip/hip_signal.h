#ifndef VRKT_HIP_HIP_SIGNAL_H_
#define VRKT_HIP_HIP_SIGNAL_H_

#include <cstdint>

// Bytes of a record's payload, which somebody else owns.
struct SignalSpan {
  std::uint32_t length;  // in bytes
  const std::uint8_t* bytes;
};

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

#endif  // VRKT_HIP_HIP_SIGNAL_H_
