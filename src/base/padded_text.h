#ifndef VRKT_BASE_PADDED_TEXT_H_
#define VRKT_BASE_PADDED_TEXT_H_

#include <cstddef>
#include <string_view>

// How many bytes can be read from the start of any PaddedText.
inline constexpr std::size_t kPaddedTextSize = 64;

// A short constant text that is followed by other bytes, so kPaddedTextSize bytes
// can be copied from its start whatever its length. A copy of fixed size is a few
// moves, a copy of variable size is a call, and half of all output is such texts.
struct PaddedText {
  const char* data = nullptr;
  std::size_t size = 0;

  constexpr bool empty() const { return size == 0; }
  constexpr std::string_view text() const { return {data, size}; }
};

#endif  // VRKT_BASE_PADDED_TEXT_H_
