#include "tool/pcap_writer.h"

#include <array>

#include "base/little_endian.h"
#include "base/unlocked_stdio.h"

namespace {

// The fields of a classic pcap file's global header.
constexpr std::uint32_t kMagic = 0xA1B2C3D4;
constexpr std::uint16_t kMajorVersion = 2;
constexpr std::uint16_t kMinorVersion = 4;
constexpr std::uint32_t kTimeZoneCorrection = 0;
constexpr std::uint32_t kTimestampAccuracy = 0;
constexpr std::uint32_t kSnapshotLength = 65535;  // not applied: longer records are complete

void WriteU16(std::uint16_t value, std::FILE* pcap) {
  std::array<std::uint8_t, 2> bytes{};
  StoreU16(value, bytes.data());
  WriteBytes(bytes.data(), bytes.size(), pcap);
}

void WriteU32(std::uint32_t value, std::FILE* pcap) {
  std::array<std::uint8_t, 4> bytes{};
  StoreU32(value, bytes.data());
  WriteBytes(bytes.data(), bytes.size(), pcap);
}

}  // namespace

void WritePcapGlobalHeader(std::FILE* pcap, std::uint32_t link_type) {
  WriteU32(kMagic, pcap);
  WriteU16(kMajorVersion, pcap);
  WriteU16(kMinorVersion, pcap);
  WriteU32(kTimeZoneCorrection, pcap);
  WriteU32(kTimestampAccuracy, pcap);
  WriteU32(kSnapshotLength, pcap);
  WriteU32(link_type, pcap);
}

void WritePcapRecord(std::FILE* pcap, RecordTime time, SignalSpan payload) {
  // Both are truncated toward zero and have the sign of the record's milliseconds. So a negative
  // time gives negative microseconds, unlike the fraction of the line stamp.
  const std::int32_t seconds = time.milliseconds / 1000;
  const std::int32_t milliseconds = time.milliseconds % 1000;
  const auto length = static_cast<std::uint32_t>(payload.size());
  WriteU32(time.timeBase + static_cast<std::uint32_t>(seconds), pcap);
  WriteU32(static_cast<std::uint32_t>(milliseconds * 1000), pcap);
  WriteU32(length, pcap);
  WriteU32(length, pcap);
  WriteBytes(payload.data(), length, pcap);
}
