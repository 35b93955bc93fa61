#include "hip/signal_routing.h"

#include <array>
#include <cstddef>
#include <cstdio>

#include "base/little_endian.h"
#include "base/program_name.h"
#include "base/unlocked_stdio.h"

namespace {

// Offsets in the payload. The bulk lengths are there only in versions below 12.0;
// later versions have a signal length in the log's record instead.
constexpr std::size_t kIdOffset = 0;
constexpr std::size_t kSecondWordOffset = 2;
constexpr std::size_t kBulk1LengthOffset = 8;
constexpr std::size_t kBulk2LengthOffset = 12;
constexpr std::size_t kDroppedFramesOffset = 12;
constexpr std::uint32_t kFirstVersionWithoutBulkLengths = 0x0C000000;

// Ids 0x0065 to 0x9FFF go to the HIP side, all others to the driver side.
constexpr std::uint16_t kFirstHipId = 0x0065;
constexpr std::uint16_t kLastHipId = 0x9FFF;

template <std::size_t kWidth>
std::array<std::uint8_t, kWidth> CopyBytes(SignalSpan payload, std::size_t offset) {
  std::array<std::uint8_t, kWidth> bytes{};
  for (std::size_t i = 0; i < kWidth && offset + i < payload.length; ++i) {
    bytes[i] = payload.bytes[offset + i];
  }
  return bytes;
}

std::uint16_t ReadU16(SignalSpan payload, std::size_t offset) {
  return LoadU16(CopyBytes<2>(payload, offset).data());
}

std::uint32_t ReadU32(SignalSpan payload, std::size_t offset) {
  return LoadU32(CopyBytes<4>(payload, offset).data());
}

std::optional<HipSignal> ReportInvalidLength() {
  std::printf("%s: Invalid length in data reference\n", programName);
  return std::nullopt;
}

// For versions below 12.0. The version table has none, but the interface keeps this
// split.
std::optional<HipSignal> SplitByBulkLengths(SignalSpan payload) {
  const std::uint32_t bulk1_length = ReadU16(payload, kBulk1LengthOffset);
  const std::uint32_t bulk2_length = ReadU16(payload, kBulk2LengthOffset);
  if (bulk1_length + bulk2_length > payload.length) return ReportInvalidLength();
  const std::uint32_t signal_length = payload.length - bulk1_length - bulk2_length;
  const std::uint8_t* const bulk1 = payload.bytes + signal_length;
  return HipSignal{
      {signal_length, payload.bytes}, {bulk1_length, bulk1}, {bulk2_length, bulk1 + bulk1_length}};
}

std::optional<HipSignal> SplitBySignalLength(SignalSpan payload, std::uint32_t signal_length) {
  // If signal_length exceeds the payload's length, this wraps around to a value above
  // the payload's length.
  const std::uint32_t bulk1_length = payload.length - signal_length;
  if (bulk1_length > payload.length) return ReportInvalidLength();
  return HipSignal{
      {signal_length, payload.bytes}, {bulk1_length, payload.bytes + signal_length}, {0, nullptr}};
}

}  // namespace

std::uint32_t DecodeDriverSignal(SignalSpan payload, bool& driverUnloaded) {
  driverUnloaded = false;
  const std::uint16_t id = ReadU16(payload, kIdOffset);
  // The interface assigns these five ids to the driver side, but RouteSignal sends
  // their range to the HIP side, so no log reaches their cases. Intended.
  switch (id) {
    case 0x8010:
      driverUnloaded = true;
      PrintPiece("Driver: Unloaded\n");
      return 1;
    case 0x8011:
      std::printf("Driver: Dropped: %d Udi Frames\n",
                  static_cast<std::int32_t>(ReadU32(payload, kDroppedFramesOffset)));
      return 1;
    case 0x8012:
      std::printf("Driver: Dropped: %d Udi Basic Data Frames\n",
                  static_cast<std::int32_t>(ReadU32(payload, kDroppedFramesOffset)));
      return 1;
    case 0x8013:
      PrintPiece("Driver: Suspended\n");
      return 1;
    case 0x8014:
      PrintPiece("Driver: Resumed\n");
      return 1;
    default:
      std::printf("Unknown Driver Signal : 0x%.4x\n", static_cast<unsigned>(id));
      return 0;
  }
}

std::optional<HipSignal> SplitSignalRecord(SignalSpan payload, std::uint32_t signal_length,
                                           std::uint32_t hip_version) {
  if (hip_version < kFirstVersionWithoutBulkLengths) return SplitByBulkLengths(payload);
  return SplitBySignalLength(payload, signal_length);
}

void RouteSignal(SignalSpan payload, std::uint32_t signal_length, const HipVersionEntry& version,
                 bool& driverUnloaded) {
  const std::uint16_t id = ReadU16(payload, kIdOffset);
  if (id < kFirstHipId || id > kLastHipId) {
    if (DecodeDriverSignal(payload, driverUnloaded) == 0) {
      std::fprintf(stderr, "%s: Decode Error: Unknown Signal 0x%.4X::0x%.4X\n", programName,
                   static_cast<unsigned>(ReadU16(payload, kSecondWordOffset)),
                   static_cast<unsigned>(id));
    }
    return;
  }
  const std::optional<HipSignal> split = SplitSignalRecord(payload, signal_length, version.version);
  if (!split) return;
  version.decoder(split->signal.length, split->signal.bytes, split->bulk1.length,
                  split->bulk1.bytes, split->bulk2.length, split->bulk2.bytes);
}
