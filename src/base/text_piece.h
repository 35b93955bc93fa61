#ifndef VRKT_BASE_TEXT_PIECE_H_
#define VRKT_BASE_TEXT_PIECE_H_

#include <array>
#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "base/little_endian.h"
#include "base/padded_text.h"

constexpr char ToHexDigit(unsigned nibble) {
  return static_cast<char>(nibble + (nibble < 10 ? '0' : 'a' - 10));
}

namespace text_piece_tables {

// Two digits each, as little-endian words: the first digit is the low byte.
consteval std::array<std::uint16_t, 100> MakeDecimalPairs() {
  std::array<std::uint16_t, 100> pairs{};
  for (unsigned i = 0; i < pairs.size(); ++i) {
    pairs[i] = static_cast<std::uint16_t>(('0' + i / 10) | ('0' + i % 10) << 8);
  }
  return pairs;
}
inline constexpr std::array<std::uint16_t, 100> kDecimalPairs = MakeDecimalPairs();

// Element n is the smallest value that has n + 1 digits.
inline constexpr std::array<std::uint32_t, 9> kSmallestWithDigits = {
    0, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000};

consteval std::array<std::array<char, 2>, 256> MakeHexPairs() {
  std::array<std::array<char, 2>, 256> pairs{};
  for (unsigned i = 0; i < pairs.size(); ++i) pairs[i] = {ToHexDigit(i / 16), ToHexDigit(i % 16)};
  return pairs;
}
inline constexpr std::array<std::array<char, 2>, 256> kHexPairs = MakeHexPairs();

}  // namespace text_piece_tables

// A piece of an output line. It is assembled here and then printed as a whole.
//
// `kCapacity` is the size of the longest piece. The Append functions check it in debug
// builds only. They may write up to kPaddedTextSize bytes after the text they append.
//
// Numbers are written without a branch per digit: their lengths are unpredictable,
// and a mispredicted branch costs more than writing all digits.
template <std::size_t kCapacity>
class TextPiece {
 public:
  static constexpr std::size_t capacity() { return kCapacity; }
  std::size_t room() const { return kCapacity - size_; }

  void Append(char c) { *Extend(1) = c; }
  void Append(std::string_view text) { std::memcpy(Extend(text.size()), text.data(), text.size()); }
  void Append(PaddedText text) {
    constexpr std::size_t kUsual = kPaddedTextSize / 2;
    char* const end = Extend(text.size);
    std::memcpy(end, text.data, kUsual);
    if (text.size > kUsual) std::memcpy(end + kUsual, text.data + kUsual, kUsual);
  }

  // In decimal, like printf's %u.
  void AppendDecimal(std::uint32_t value) {
    constexpr std::uint32_t kEightDigits = 100000000;
    if (value >= kEightDigits) {
      AppendUpToEightDigits(value / kEightDigits);
      StoreU64(FormatEightDigits(value % kEightDigits), AsBytes(Extend(8)));
    } else {
      AppendUpToEightDigits(value);
    }
  }
  // Like printf's %d.
  void AppendSigned(std::int32_t value) {
    auto magnitude = static_cast<std::uint32_t>(value);
    if (value < 0) {
      Append('-');
      magnitude = 0 - magnitude;
    }
    AppendDecimal(magnitude);
  }

  // Zero-filled to kDigits digits, like printf's %02d. `value` must not be negative.
  template <std::size_t kDigits>
  void AppendZeroFilled(int value) {
    char* const end = Extend(kDigits);
    auto rest = static_cast<unsigned>(value);
    for (std::size_t i = kDigits; i >= 2; i -= 2, rest /= 100) {
      StoreU16(text_piece_tables::kDecimalPairs[rest % 100], AsBytes(end) + i - 2);
    }
    if constexpr (kDigits % 2 == 1) *end = static_cast<char>('0' + rest % 10);
  }

  // Four or eight lower-case digits, like printf's %.4x or %.8x.
  void AppendHex(std::uint16_t value) {
    const std::uint8_t bytes[] = {static_cast<std::uint8_t>(value >> 8U),
                                  static_cast<std::uint8_t>(value)};
    AppendHex(bytes, sizeof bytes);
  }
  void AppendHex(std::uint32_t value) {
    const std::uint8_t bytes[] = {
        static_cast<std::uint8_t>(value >> 24U), static_cast<std::uint8_t>(value >> 16U),
        static_cast<std::uint8_t>(value >> 8U), static_cast<std::uint8_t>(value)};
    AppendHex(bytes, sizeof bytes);
  }
  // Two lower-case digits per byte, in stored order. The compiler vectorises the
  // first loop, because its count is a multiple of the vector size. The remaining
  // bytes use a table.
  void AppendHex(const std::uint8_t* bytes, std::size_t count) {
    constexpr std::size_t kVector = 16;
    const std::size_t in_vectors = count / kVector * kVector;
    char* const digits = Extend(2 * count);
    for (std::size_t i = 0; i < in_vectors; ++i) {
      digits[2 * i] = ToHexDigit(bytes[i] >> 4U);
      digits[2 * i + 1] = ToHexDigit(bytes[i] & 0xFU);
    }
    for (std::size_t i = in_vectors; i < count; ++i) WriteHexPair(bytes[i], digits + 2 * i);
  }
  // Six bytes in stored order, with colons between them.
  void AppendMac(const std::uint8_t* address) {
    char* const digits = Extend(6 * 3 - 1);  // without the last colon
    for (std::size_t i = 0; i < 6; ++i) {
      WriteHexPair(address[i], digits + 3 * i);
      digits[3 * i + 2] = ':';
    }
  }

  void Clear() { size_ = 0; }
  // Keeps the first `size` characters.
  void Truncate(std::size_t size) { size_ = size; }
  std::string_view text() const { return {text_.data(), size_}; }

 private:
  // Makes the text longer, and returns the start of the new characters.
  char* Extend(std::size_t count) {
    assert(count <= room());
    char* const end = text_.data() + size_;
    size_ += count;
    return end;
  }
  static std::uint8_t* AsBytes(char* text) { return reinterpret_cast<std::uint8_t*>(text); }

  void AppendUpToEightDigits(std::uint32_t value) {
    const unsigned count = CountDigits(value);
    StoreU64(FormatEightDigits(value) >> (64 - 8 * count), AsBytes(Extend(count)));
  }
  // `value` is below 100,000,000.
  static unsigned CountDigits(std::uint32_t value) {
    // 1233 / 4096 approximates the decimal logarithm of 2. Setting bit 0 gives zero
    // its one digit.
    const unsigned estimate = static_cast<unsigned>(std::bit_width(value | 1U)) * 1233 >> 12;
    return estimate +
           static_cast<unsigned>(value >= text_piece_tables::kSmallestWithDigits[estimate]);
  }
  // The eight digits of a value below 100,000,000, the first digit in the low byte.
  static std::uint64_t FormatEightDigits(std::uint32_t value) {
    using text_piece_tables::kDecimalPairs;
    const std::uint32_t high = value / 10000;
    const std::uint32_t low = value % 10000;
    return static_cast<std::uint64_t>(kDecimalPairs[high / 100]) |
           static_cast<std::uint64_t>(kDecimalPairs[high % 100]) << 16 |
           static_cast<std::uint64_t>(kDecimalPairs[low / 100]) << 32 |
           static_cast<std::uint64_t>(kDecimalPairs[low % 100]) << 48;
  }

  static void WriteHexPair(std::uint8_t value, char* digits) {
    std::memcpy(digits, text_piece_tables::kHexPairs[value].data(), 2);
  }

  // Not initialised, because only appended bytes are printed.
  std::array<char, kCapacity + kPaddedTextSize> text_;
  std::size_t size_ = 0;
};

#endif  // VRKT_BASE_TEXT_PIECE_H_
