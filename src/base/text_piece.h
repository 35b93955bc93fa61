#ifndef VRKT_BASE_TEXT_PIECE_H_
#define VRKT_BASE_TEXT_PIECE_H_

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "base/unlocked_stdio.h"

constexpr char HexDigit(unsigned nibble) {
  return static_cast<char>(nibble + (nibble < 10 ? '0' : 'a' - 10));
}

// A piece of an output line: a field with its value, say, put together here and
// printed by one call of the stream library. Lines are never put together.
//
// `kCapacity` is what the longest piece takes; the appending functions do not
// test it.
template <std::size_t kCapacity>
class TextPiece {
 public:
  void Append(char c) { text_[size_++] = c; }
  void Append(std::string_view text) {
    std::memcpy(end(), text.data(), text.size());
    size_ += text.size();
  }
  // In decimal, as by %u or %d.
  template <typename Integer>
  void AppendDecimal(Integer value) {
    size_ = static_cast<std::size_t>(std::to_chars(end(), text_.data() + kCapacity, value).ptr -
                                     text_.data());
  }
  // Zero-filled to the given number of digits, as by %02d and its kin; `value`
  // is not negative.
  template <std::size_t kDigits>
  void AppendZeroFilled(int value) {
    char* const digits = end();
    for (std::size_t i = kDigits; i-- > 0; value /= 10) {
      digits[i] = static_cast<char>('0' + value % 10);
    }
    size_ += kDigits;
  }
  // Zero-filled to four or eight lower-case digits, as by %.4x or %.8x.
  void AppendHex(std::uint16_t value) { AppendHexDigits<4>(value); }
  void AppendHex(std::uint32_t value) { AppendHexDigits<8>(value); }
  // Two lower-case digits a byte, in stored order. The loop is kept this plain
  // for the compiler to make vector code of it.
  void AppendHex(const std::uint8_t* bytes, std::size_t count) {
    char* const digits = end();
    for (std::size_t i = 0; i < count; ++i) {
      digits[2 * i] = HexDigit(bytes[i] >> 4U);
      digits[2 * i + 1] = HexDigit(bytes[i] & 0xFU);
    }
    size_ += 2 * count;
  }

  void Clear() { size_ = 0; }
  std::string_view text() const { return {text_.data(), size_}; }
  void Print() const { PrintPiece(text()); }

 private:
  char* end() { return text_.data() + size_; }

  template <std::size_t kDigits>
  void AppendHexDigits(std::uint32_t value) {
    char* const digits = end();
    for (std::size_t i = kDigits; i-- > 0; value >>= 4U) digits[i] = HexDigit(value & 0xFU);
    size_ += kDigits;
  }

  // Left as it is: only what is appended is printed.
  std::array<char, kCapacity> text_;
  std::size_t size_ = 0;
};

#endif  // VRKT_BASE_TEXT_PIECE_H_
