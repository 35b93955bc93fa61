#ifndef VRKT_HIP_HIP_SIGNAL_H_
#define VRKT_HIP_HIP_SIGNAL_H_

#include <cstddef>
#include <cstdint>

// Bytes of a record's payload. The record loop owns them.
struct SignalSpan {
  std::uint32_t length;  // in bytes
  const std::uint8_t* bytes;
};

// The three parts of a payload. In a record they follow each other without gaps. An
// empty bulk may have a null address.
struct HipSignal {
  SignalSpan signal;  // starts at the id
  SignalSpan bulk1;
  SignalSpan bulk2;
};

#endif  // VRKT_HIP_HIP_SIGNAL_H_
