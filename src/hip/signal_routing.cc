#include "hip/signal_routing.h"

#include <cstddef>
#include <string_view>

#include "base/little_endian.h"
#include "base/text_piece.h"
#include "fapi/compiled_signal.h"

namespace {

// Offsets in the payload. The bulk lengths are there only in versions below 12.0;
// later versions have a signal length in the log's record instead.
constexpr std::size_t kBulk1LengthOffset = 8;
constexpr std::size_t kBulk2LengthOffset = 12;
constexpr std::size_t kDroppedFramesOffset = 12;
static_assert(kDroppedFramesOffset + 4 <= kMaxSignalEnd);
constexpr std::uint32_t kFirstVersionWithoutBulkLengths = 0x0C000000;

// The signals that the interface assigns to the driver side. Their ids are in the range
// of the HIP side, so no log reaches them here. Intended.
struct DriverSignal {
  std::uint16_t id;
  std::string_view text;
  std::string_view text_after_count;  // empty if the signal has no count of dropped frames
  bool is_unload;
};
constexpr DriverSignal kDriverSignals[] = {
    {0x8010, "Driver: Unloaded", "", true},
    {0x8011, "Driver: Dropped: ", " Udi Frames", false},
    {0x8012, "Driver: Dropped: ", " Udi Basic Data Frames", false},
    {0x8013, "Driver: Suspended", "", false},
    {0x8014, "Driver: Resumed", "", false},
};

const DriverSignal* FindDriverSignal(std::uint16_t id) {
  for (const DriverSignal& signal : kDriverSignals) {
    if (signal.id == id) return &signal;
  }
  return nullptr;
}

// For versions below 12.0. The version table has none, but the interface keeps this
// split.
std::optional<HipSignal> SplitByBulkLengths(SignalSpan payload) {
  const std::size_t bulk1 = LoadU16(payload.data() + kBulk1LengthOffset);
  const std::size_t bulk2 = LoadU16(payload.data() + kBulk2LengthOffset);
  if (bulk1 + bulk2 > payload.size()) return std::nullopt;
  const std::size_t signal = payload.size() - bulk1 - bulk2;
  return HipSignal{payload.first(signal), payload.subspan(signal, bulk1), payload.last(bulk2)};
}

std::optional<HipSignal> SplitBySignalLength(SignalSpan payload, std::uint32_t signal_length) {
  if (signal_length > payload.size()) return std::nullopt;
  return HipSignal{payload.first(signal_length), payload.subspan(signal_length), {}};
}

}  // namespace

bool IsDriverSide(std::uint16_t id) { return id < kFirstHipId || id > kLastHipId; }

bool IsKnownDriverSignal(std::uint16_t id) { return FindDriverSignal(id) != nullptr; }

std::optional<HipSignal> SplitSignalRecord(SignalSpan payload, std::uint32_t signal_length,
                                           std::uint32_t hip_version) {
  if (hip_version < kFirstVersionWithoutBulkLengths) return SplitByBulkLengths(payload);
  return SplitBySignalLength(payload, signal_length);
}

std::uint32_t DecodeDriverSignal(SignalSpan payload, bool& driverUnloaded) {
  const DriverSignal* const signal = FindDriverSignal(LoadU16(payload.data()));
  driverUnloaded = signal != nullptr && signal->is_unload;
  return signal == nullptr ? 0 : 1;
}

std::string RenderDriverSignal(const std::uint8_t* bytes) {
  const std::uint16_t id = LoadU16(bytes);
  const DriverSignal* const signal = FindDriverSignal(id);
  if (signal == nullptr) {
    TextPiece<32> text;
    text.Append("Unknown Driver Signal : 0x");
    text.AppendHex(id);
    return std::string(text.text());
  }
  std::string text(signal->text);
  if (!signal->text_after_count.empty()) {
    const std::uint32_t count = LoadU32(bytes + kDroppedFramesOffset);
    text += std::to_string(static_cast<std::int32_t>(count));
    text += signal->text_after_count;
  }
  return text;
}
