#include "live_frames.h"

#include <algorithm>
#include <array>
#include <initializer_list>

#include "base/little_endian.h"

namespace {

// The global header of a pcap file with microseconds.
constexpr std::uint32_t kPcapMagic = 0xA1B2C3D4;
constexpr std::uint32_t kPcapVersion = 4U << 16 | 2;  // 2.4, two words of 16 bits
constexpr std::uint32_t kSnapLength = 262144;         // the largest frame of Wireshark

constexpr std::uint32_t kPseudoHeaderFormat = 1;
constexpr std::uint32_t kHeadersSize = 32;  // of the pseudo-header and the record's header
constexpr std::uint32_t kLargestPayload = kSnapLength - kHeadersSize;

void AppendWords(std::string& file, std::initializer_list<std::uint32_t> words) {
  for (const std::uint32_t word : words) {
    std::array<std::uint8_t, 4> bytes{};
    StoreU32(word, bytes.data());
    file.append(bytes.begin(), bytes.end());
  }
}

void AppendEvent(const LogItem& item, DriverEventType type, std::uint32_t size,
                 std::string& record) {
  AppendWords(record, {kDriverEventMagic, static_cast<std::uint32_t>(item.time),
                       static_cast<std::uint32_t>(type), size});
}

// Appends the record as in the log, up to the largest payload of a frame.
void AppendRecord(const LogItem& item, std::string& record) {
  const SignalSpan& payload = item.signal.payload;
  switch (item.kind) {
    case LogItem::Kind::kUptime:
      AppendEvent(item, DriverEventType::kTimeRef, 8, record);
      AppendWords(record, {item.timeBase, static_cast<std::uint32_t>(item.uptime)});
      break;
    case LogItem::Kind::kLoaded:
      AppendEvent(item, DriverEventType::kLoad, 0, record);
      break;
    case LogItem::Kind::kUnloaded:
      AppendEvent(item, DriverEventType::kUnload, 0, record);
      break;
    case LogItem::Kind::kSignal:
      AppendWords(record, {kSignalRecordMagic, static_cast<std::uint32_t>(item.time),
                           payload.length, item.signal.signal_length});
      record.append(reinterpret_cast<const char*>(payload.bytes),
                    std::min(payload.length, kLargestPayload));
      break;
    case LogItem::Kind::kHeader:
      break;
  }
}

}  // namespace

void AppendFileHeader(std::string& file) {
  AppendWords(file, {kPcapMagic, kPcapVersion, 0, 0, kSnapLength, kUser1LinkType});
}

void AppendFrame(const LogItem& item, const HipVersionEntry& version, std::string& file) {
  if (item.kind == LogItem::Kind::kHeader) return;

  std::string frame;
  AppendWords(frame, {kPseudoHeaderFormat, version.version, item.timeBase, 0});
  AppendRecord(item, frame);

  // The milliseconds of a negative time count from the second before. The seconds wrap.
  const std::int32_t seconds = item.time / 1000 - (item.time % 1000 < 0 ? 1 : 0);
  const std::int32_t milliseconds = (item.time % 1000 + 1000) % 1000;
  const auto captured = static_cast<std::uint32_t>(frame.size());
  std::uint32_t length = captured;
  if (item.kind == LogItem::Kind::kSignal && item.signal.payload.length > kLargestPayload) {
    length = std::min(item.signal.payload.length, UINT32_MAX - kHeadersSize) + kHeadersSize;
  }
  AppendWords(file, {item.timeBase + static_cast<std::uint32_t>(seconds),
                     static_cast<std::uint32_t>(milliseconds) * 1000, captured, length});
  file += frame;
}
