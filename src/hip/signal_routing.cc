#include "hip/signal_routing.h"

#include <cstddef>
#include <string_view>

#include "base/little_endian.h"
#include "base/program_name.h"
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

// The ids of the HIP side. All others are of the driver side.
constexpr std::uint16_t kFirstHipId = 0x0065;
constexpr std::uint16_t kLastHipId = 0x9FFF;

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
  const std::uint32_t bulk1_length = LoadU16(payload.bytes + kBulk1LengthOffset);
  const std::uint32_t bulk2_length = LoadU16(payload.bytes + kBulk2LengthOffset);
  if (bulk1_length + bulk2_length > payload.length) return std::nullopt;
  const std::uint32_t signal_length = payload.length - bulk1_length - bulk2_length;
  const std::uint8_t* const bulk1 = payload.bytes + signal_length;
  return HipSignal{
      {signal_length, payload.bytes}, {bulk1_length, bulk1}, {bulk2_length, bulk1 + bulk1_length}};
}

std::optional<HipSignal> SplitBySignalLength(SignalSpan payload, std::uint32_t signal_length) {
  if (signal_length > payload.length) return std::nullopt;
  return HipSignal{{signal_length, payload.bytes},
                   {payload.length - signal_length, payload.bytes + signal_length},
                   {0, nullptr}};
}

}  // namespace

bool IsDriverSide(std::uint16_t id) { return id < kFirstHipId || id > kLastHipId; }

RoutedSignal RouteSignal(const SignalRecord& record, std::uint32_t hip_version) {
  if (IsDriverSide(record.id)) {
    const bool is_known = FindDriverSignal(record.id) != nullptr;
    return {is_known ? SignalRoute::kDriver : SignalRoute::kUnknownDriver, {}};
  }
  const std::optional<HipSignal> split =
      SplitSignalRecord(record.payload, record.signal_length, hip_version);
  if (!split) return {SignalRoute::kInvalidLength, {}};
  return {SignalRoute::kHip, *split};
}

std::optional<HipSignal> SplitSignalRecord(SignalSpan payload, std::uint32_t signal_length,
                                           std::uint32_t hip_version) {
  if (hip_version < kFirstVersionWithoutBulkLengths) return SplitByBulkLengths(payload);
  return SplitBySignalLength(payload, signal_length);
}

std::uint32_t DecodeDriverSignal(SignalSpan payload, bool& driverUnloaded) {
  const DriverSignal* const signal = FindDriverSignal(LoadU16(payload.bytes));
  driverUnloaded = signal != nullptr && signal->is_unload;
  return signal == nullptr ? 0 : 1;
}

std::string RenderDriverSignal(SignalSpan payload) {
  const std::uint16_t id = LoadU16(payload.bytes);
  const DriverSignal* const signal = FindDriverSignal(id);
  if (signal == nullptr) {
    TextPiece<32> line;
    line.Append("Unknown Driver Signal : 0x");
    line.AppendHex(id);
    line.Append('\n');
    return std::string(line.text());
  }
  std::string line(signal->text);
  if (!signal->text_after_count.empty()) {
    const std::uint32_t count = LoadU32(payload.bytes + kDroppedFramesOffset);
    line += std::to_string(static_cast<std::int32_t>(count));
    line += signal->text_after_count;
  }
  return line += '\n';
}

std::string RenderInvalidLength() {
  return std::string(programName) + ": Invalid length in data reference\n";
}
