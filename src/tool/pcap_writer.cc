#include "tool/pcap_writer.h"

#include <array>
#include <cstddef>

#include "base/little_endian.h"
#include "base/unlocked_stdio.h"

namespace {

// The fields of a classic pcap file's global header.
constexpr std::uint32_t kMagic = 0xA1B2C3D4;
constexpr std::uint32_t kVersion = 4U << 16U | 2;  // 2.4, two words of 16 bits
constexpr std::uint32_t kTimeZoneCorrection = 0;
constexpr std::uint32_t kTimestampAccuracy = 0;
constexpr std::uint32_t kSnapshotLength = 65535;  // not applied: longer records are complete

template <std::size_t kCount>
void WriteWords(std::FILE* pcap, const std::uint32_t (&words)[kCount]) {
  std::array<std::uint8_t, 4 * kCount> bytes;
  for (std::size_t i = 0; i < kCount; ++i) StoreU32(words[i], bytes.data() + 4 * i);
  WriteBytes(bytes.data(), bytes.size(), pcap);
}

}  // namespace

void WritePcapGlobalHeader(std::FILE* pcap, std::uint32_t link_type) {
  WriteWords(pcap, {kMagic, kVersion, kTimeZoneCorrection, kTimestampAccuracy, kSnapshotLength,
                    link_type});
}

void WritePcapRecord(std::FILE* pcap, RecordTime time, SignalSpan payload) {
  // Both are truncated toward zero and have the sign of the record's milliseconds. So a negative
  // time gives negative microseconds, unlike the fraction of the line stamp.
  const std::int32_t seconds = time.milliseconds / 1000;
  const std::int32_t microseconds = time.milliseconds % 1000 * 1000;
  const auto length = static_cast<std::uint32_t>(payload.size());
  WriteWords(pcap, {time.timeBase + static_cast<std::uint32_t>(seconds),
                    static_cast<std::uint32_t>(microseconds), length, length});
  WriteBytes(payload.data(), length, pcap);
}
