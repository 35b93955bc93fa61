#include "live_frames.h"

#include <algorithm>

#include "log/log_writer.h"

namespace {

// The global header of a pcap file with microseconds.
constexpr std::uint32_t kPcapMagic = 0xA1B2C3D4;
constexpr std::uint32_t kPcapVersion = 4U << 16 | 2;  // 2.4, two words of 16 bits
constexpr std::uint32_t kSnapLength = 262144;         // the largest frame of Wireshark

constexpr std::uint32_t kPseudoHeaderFormat = 1;
constexpr std::uint32_t kHeadersSize = 32;  // of the pseudo-header and the record's header
constexpr std::uint32_t kLargestPayload = kSnapLength - kHeadersSize;

}  // namespace

void AppendFileHeader(std::string& file) {
  AppendWords({kPcapMagic, kPcapVersion, 0, 0, kSnapLength, kUser1LinkType}, file);
}

void AppendFrame(const LogItem& item, const HipVersionEntry& version, std::string& file) {
  if (!item.HasLine()) return;

  std::string frame;
  AppendWords({kPseudoHeaderFormat, version.version, item.time.timeBase, 0}, frame);
  AppendItem(item, frame, kLargestPayload);

  const ExactTime time = GetExactTime(item.time);
  const auto captured = static_cast<std::uint32_t>(frame.size());
  std::uint32_t length = captured;
  const auto payload = static_cast<std::uint32_t>(item.signal.payload.size());
  if (item.kind == LogItem::Kind::kSignal && payload > kLargestPayload) {
    length = std::min(payload, UINT32_MAX - kHeadersSize) + kHeadersSize;
  }
  AppendWords({static_cast<std::uint32_t>(time.second),
               static_cast<std::uint32_t>(time.millisecond) * 1000, captured, length},
              file);
  file += frame;
}
