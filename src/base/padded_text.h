#ifndef VRKT_BASE_PADDED_TEXT_H_
#define VRKT_BASE_PADDED_TEXT_H_

#include <cstddef>
#include <string_view>

// The number of bytes that can be read from the start of any PaddedText.
inline constexpr std::size_t kPaddedTextSize = 64;

// A short constant text that is followed by other bytes, so that kPaddedTextSize
// bytes can be copied from its start, whatever its length. A copy of fixed size
// compiles to a few moves, a copy of variable size to a call. All field names and
// labels are printed this way.
struct PaddedText {
  const char* data = nullptr;
  std::size_t size = 0;

  constexpr bool empty() const { return size == 0; }
  constexpr std::string_view text() const { return {data, size}; }
};

#endif  // VRKT_BASE_PADDED_TEXT_H_
