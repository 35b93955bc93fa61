#ifndef VRKT_TESTS_SUPPORT_PADDED_PAYLOAD_H_
#define VRKT_TESTS_SUPPORT_PADDED_PAYLOAD_H_

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "fapi/compiled_signal.h"
#include "hip/hip_signal.h"

// A payload in a block as the reader of the log makes it: zeros up to kMaxSignalEnd, and
// not a byte more, so that the sanitizers detect reads past its end.
class PaddedPayload {
 public:
  explicit PaddedPayload(std::string_view payload)
      : length_(payload.size()), block_(std::max(payload.size(), kMaxSignalEnd)) {
    std::copy(payload.begin(), payload.end(), block_.begin());
  }

  std::uint32_t length() const { return static_cast<std::uint32_t>(length_); }
  const std::uint8_t* bytes() const { return block_.data(); }
  SignalSpan span() const { return {block_.data(), length_}; }

 private:
  std::size_t length_;
  std::vector<std::uint8_t> block_;
};

#endif  // VRKT_TESTS_SUPPORT_PADDED_PAYLOAD_H_
