#include "log/log_reader.h"

#include <algorithm>
#include <cstring>

#include "base/little_endian.h"
#include "base/unlocked_stdio.h"
#include "fapi/compiled_signal.h"

bool LogReader::Read(LogItem& item) {
  large_payload_.reset();
  const Outcome outcome = header_follows_ ? ReadLogFileHeader(item) : ReadRecords(item);
  return outcome == Outcome::kItem;
}

LogReader::Outcome LogReader::End(LogEnd::Kind kind, std::uint32_t value) {
  end_ = {kind, value};
  return Outcome::kEnd;
}

LogReader::Outcome LogReader::EndAtShortRead(LogEnd::Kind failure) {
  if (std::feof(stream_) == 0) return End(failure);
  return End(position_ == start_of_unit_ ? LogEnd::Kind::kComplete : LogEnd::Kind::kCut);
}

// Reads little-endian words. Returns false if the log ends before the last byte.
template <std::size_t kCount>
bool LogReader::ReadWords(std::array<std::uint32_t, kCount>& words) {
  std::array<std::uint8_t, 4 * kCount> bytes;
  const std::size_t count = ReadBytes(bytes.data(), bytes.size(), stream_);
  position_ += count;
  if (count < bytes.size()) {
    EndAtShortRead(LogEnd::Kind::kWordUnreadable);
    return false;
  }
  for (std::size_t i = 0; i < kCount; ++i) words[i] = LoadU32(bytes.data() + 4 * i);
  return true;
}

bool LogReader::QenWifiDriverLogReadUint32(std::uint32_t& word) {
  std::array<std::uint32_t, 1> words{};
  if (!ReadWords(words)) return false;
  word = words[0];
  return true;
}

LogReader::Outcome LogReader::ReadLogFileHeader(LogItem& item) {
  // Users see the report of the first check that fails, so the checks keep this order.
  // Below version 6, the third word need not be there.
  start_of_unit_ = position_;
  std::uint32_t magic = 0;
  std::uint32_t format_version = 0;
  std::uint32_t hip_version = 0;
  if (!QenWifiDriverLogReadUint32(magic)) return Outcome::kEnd;
  if (!QenWifiDriverLogReadUint32(format_version)) return Outcome::kEnd;
  if (format_version < kLogFormatVersion) return End(LogEnd::Kind::kOldFormat, format_version);
  if (!QenWifiDriverLogReadUint32(hip_version)) return Outcome::kEnd;
  if (magic != kHeaderMagic) return End(LogEnd::Kind::kBadHeaderMagic, magic);
  if (format_version != kLogFormatVersion) return End(LogEnd::Kind::kNewFormat, format_version);
  if (!SelectHipVersion(hip_version, hipCursor_)) {
    return End(LogEnd::Kind::kUnknownHipVersion, hip_version);
  }
  header_follows_ = false;
  item.kind = LogItem::Kind::kHeader;
  return Outcome::kItem;
}

// Reads records up to one that prints a line.
LogReader::Outcome LogReader::ReadRecords(LogItem& item) {
  for (;;) {
    start_of_unit_ = position_;
    LogRecord record{};
    if (!ReadRecordWords(record)) return Outcome::kEnd;
    item.time = record.time;
    Outcome outcome = Outcome::kNoItem;
    switch (record.magic) {
      case kSignalRecordMagic:
        outcome = HandleSignalRecord(record, item);
        break;
      case kDriverEventMagic:
        outcome = HandleDriverEvent(record, item);
        break;
      default:
        return End(LogEnd::Kind::kBadMagic, record.magic);
    }
    item.timeBase = timeBase_;
    if (outcome != Outcome::kNoItem) return outcome;
  }
}

// Reads all four words before the magic is checked, so a log that ends within them is
// cut, whatever the magic is.
bool LogReader::ReadRecordWords(LogRecord& record) {
  std::array<std::uint32_t, 4> words{};
  if (!ReadWords(words)) return false;
  record = {words[0], static_cast<std::int32_t>(words[1]), words[2], words[3]};
  return true;
}

// The stream is at the first byte after the event's size word.
LogReader::Outcome LogReader::HandleDriverEvent(const LogRecord& record, LogItem& item) {
  const std::uint32_t size = record.size_or_signal_length;
  switch (static_cast<DriverEventType>(record.type_or_length)) {
    case DriverEventType::kTimeRef:
      return HandleTimeRef(size, item);
    case DriverEventType::kLoad:
      if (size != 0) return End(LogEnd::Kind::kBadLoadSize, size);
      header_follows_ = driverUnloaded_;
      driverUnloaded_ = false;
      item.kind = LogItem::Kind::kLoaded;
      return Outcome::kItem;
    case DriverEventType::kUnload:
      if (size != 0) return End(LogEnd::Kind::kBadUnloadSize, size);
      driverUnloaded_ = true;
      item.kind = LogItem::Kind::kUnloaded;
      return Outcome::kItem;
    default:
      // The size of an unknown event is not trusted: the next record is expected
      // directly after the four words.
      return Outcome::kNoItem;
  }
}

LogReader::Outcome LogReader::HandleTimeRef(std::uint32_t size, LogItem& item) {
  if (size != 4 && size != 8) return End(LogEnd::Kind::kBadTimeRefSize, size);
  if (!QenWifiDriverLogReadUint32(timeBase_)) return Outcome::kEnd;
  if (size == 4) return Outcome::kNoItem;
  std::uint32_t uptime = 0;
  if (!QenWifiDriverLogReadUint32(uptime)) return Outcome::kEnd;
  item.kind = LogItem::Kind::kUptime;
  item.uptime = static_cast<std::int32_t>(uptime);
  return Outcome::kItem;
}

// The stream is at the first byte of the record's payload.
LogReader::Outcome LogReader::HandleSignalRecord(const LogRecord& record, LogItem& item) {
  const std::uint32_t length = record.type_or_length;
  std::uint8_t* const payload = FindRoomForPayload(length);
  if (payload == nullptr) return End(LogEnd::Kind::kNoMemory, length);
  const std::size_t count = ReadBytes(payload, length, stream_);
  position_ += count;
  if (count < length) return EndAtShortRead(LogEnd::Kind::kPayloadUnreadable);
  // Fields of a signal that is too short read as zero.
  if (length < kMaxSignalEnd) std::memset(payload + length, 0, kMaxSignalEnd - length);

  item.kind = LogItem::Kind::kSignal;
  item.signal = {LoadU16(payload), record.size_or_signal_length, {length, payload}};
  if (IsDriverSide(item.signal.id)) DecodeDriverSignal(item.signal.payload, driverUnloaded_);
  return Outcome::kItem;
}

// Returns null if there is no memory.
std::uint8_t* LogReader::FindRoomForPayload(std::uint32_t length) {
  const std::size_t size = std::max<std::size_t>(length, kMaxSignalEnd);
  if (size <= kSmallPayload) return small_payload_.data();
  large_payload_.reset(static_cast<std::uint8_t*>(std::malloc(size)));
  return large_payload_.get();
}
