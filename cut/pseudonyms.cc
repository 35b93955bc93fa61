#include "pseudonyms.h"

namespace {

constexpr std::size_t kSize = 6;
constexpr std::uint64_t kBroadcast = 0xFFFFFFFFFFFF;

// Bits of the first byte.
constexpr std::uint8_t kGroup = 1;
constexpr std::uint8_t kLocallyAdministered = 2;

}  // namespace

void Pseudonyms::Replace(Piece piece, std::size_t offset) {
  if (offset + kSize > piece.size()) return;
  std::uint64_t address = 0;
  for (std::size_t i = 0; i < kSize; ++i) address = address << 8U | piece[offset + i];
  if (keeps_addresses_ || address == 0 || address == kBroadcast) {
    piece.Keep(offset, kSize);
    return;
  }
  std::uint64_t number = numbers_.try_emplace(address, numbers_.size() + 1).first->second;
  std::uint8_t* const pseudonym = piece.redacted + offset;
  for (std::size_t i = kSize; i-- > 1; number >>= 8U) {
    pseudonym[i] = static_cast<std::uint8_t>(number);
  }
  *pseudonym = static_cast<std::uint8_t>(kLocallyAdministered | (piece[offset] & kGroup));
}
