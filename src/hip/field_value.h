#ifndef VRKT_HIP_FIELD_VALUE_H_
#define VRKT_HIP_FIELD_VALUE_H_

#include <cstdint>

#include "base/padded_text.h"
#include "fapi/compiled_signal.h"
#include "hip/hip_signal.h"

// The value of a field.
struct FieldValue {
  enum class Kind : std::uint8_t {
    kNumber,  // `number`, with its sign
    kLabel,   // `number`, and `label`, which it has in this version
    kDigits,  // `bytes`, which always print as text: an address or a timestamp
    kWords,   // `bytes`, an array of 16-bit little-endian words
    kBytes,   // `bytes` of a dump, any number of them
  };

  Kind kind = Kind::kNumber;
  std::int64_t number = 0;
  PaddedText label{};
  SignalSpan bytes{};  // in stored order, borrowed from the signal
};

// Reads a field of the signal's layout. The signal is not too short.
FieldValue ReadField(const SignalView& signal, const CompiledField& field);

#endif  // VRKT_HIP_FIELD_VALUE_H_
