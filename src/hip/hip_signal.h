#ifndef VRKT_HIP_HIP_SIGNAL_H_
#define VRKT_HIP_HIP_SIGNAL_H_

#include <cstddef>
#include <cstdint>

// Bytes of a record's payload, which the record loop owns.
struct SignalSpan {
  std::uint32_t length;  // in bytes
  const std::uint8_t* bytes;
};

// What a decoder is given. The three lie behind one another in one payload, in
// this order; an empty bulk may also have no address at all.
struct HipSignal {
  SignalSpan signal;  // from the id on
  SignalSpan bulk1;
  SignalSpan bulk2;
};

#endif  // VRKT_HIP_HIP_SIGNAL_H_
