#ifndef VRKT_BASE_LITTLE_ENDIAN_H_
#define VRKT_BASE_LITTLE_ENDIAN_H_

#include <cstdint>

// All integers in the log, in its signals and in the capture file are little-endian
// and unaligned. These functions work byte by byte, so the machine's byte order and
// alignment rules do not matter. Compilers turn each function into one load or store
// where the machine allows it.

constexpr std::uint16_t LoadU16(const std::uint8_t* bytes) {
  return static_cast<std::uint16_t>(bytes[0] | (bytes[1] << 8));
}

constexpr std::uint32_t LoadU32(const std::uint8_t* bytes) {
  return static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
         static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
}

constexpr void StoreU16(std::uint16_t value, std::uint8_t* bytes) {
  bytes[0] = static_cast<std::uint8_t>(value);
  bytes[1] = static_cast<std::uint8_t>(value >> 8);
}

constexpr void StoreU32(std::uint32_t value, std::uint8_t* bytes) {
  StoreU16(static_cast<std::uint16_t>(value), bytes);
  StoreU16(static_cast<std::uint16_t>(value >> 16), bytes + 2);
}

constexpr void StoreU64(std::uint64_t value, std::uint8_t* bytes) {
  StoreU32(static_cast<std::uint32_t>(value), bytes);
  StoreU32(static_cast<std::uint32_t>(value >> 32), bytes + 4);
}

#endif  // VRKT_BASE_LITTLE_ENDIAN_H_
