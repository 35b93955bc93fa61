#include "log/log_reader.h"

#include <algorithm>
#include <cstring>

#include "base/little_endian.h"
#include "base/sanitizers.h"
#include "fapi/compiled_signal.h"
#include "hip/signal_routing.h"

LogReader::~LogReader() { AllowAccess(small_payload_.data(), small_payload_.size()); }

LogPosition LogReader::position() const {
  LogPosition position = at_;
  position.offset = source_.offset();
  return position;
}

bool LogReader::Seek(const LogPosition& position) {
  if (!source_.Seek(position.offset)) return false;
  at_ = position;
  end_ = {};
  return true;
}

bool LogReader::Read(LogItem& item) {
  large_payload_.reset();
  at_.offset = source_.offset();
  const Outcome outcome = at_.header_follows ? ReadLogFileHeader(item) : ReadRecords(item);
  return outcome == Outcome::kItem;
}

LogReader::Outcome LogReader::End(LogEnd::Kind kind, std::uint32_t value,
                                  const DriverEvent* event) {
  end_ = {kind, value, event};
  return Outcome::kEnd;
}

LogReader::Outcome LogReader::EndAtShortRead(LogEnd::Kind failure) {
  if (source_.has_failed()) return End(failure);
  return End(source_.offset() == at_.offset ? LogEnd::Kind::kComplete : LogEnd::Kind::kCut);
}

// Reads little-endian words. Returns false if the log ends before the last byte.
template <std::size_t kCount>
bool LogReader::ReadWords(std::array<std::uint32_t, kCount>& words) {
  std::array<std::uint8_t, 4 * kCount> bytes;
  if (source_.Read(bytes.data(), bytes.size()) < bytes.size()) {
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
  std::uint32_t magic = 0;
  std::uint32_t format_version = 0;
  std::uint32_t hip_version = 0;
  if (!QenWifiDriverLogReadUint32(magic)) return Outcome::kEnd;
  if (!QenWifiDriverLogReadUint32(format_version)) return Outcome::kEnd;
  if (format_version < kLogFormatVersion) return End(LogEnd::Kind::kOldFormat, format_version);
  if (!QenWifiDriverLogReadUint32(hip_version)) return Outcome::kEnd;
  if (magic != kHeaderMagic) return End(LogEnd::Kind::kBadHeaderMagic, magic);
  if (format_version != kLogFormatVersion) return End(LogEnd::Kind::kNewFormat, format_version);
  if (!SelectHipVersion(hip_version, at_.hipCursor)) {
    return End(LogEnd::Kind::kUnknownHipVersion, hip_version);
  }
  at_.header_follows = false;
  item.kind = LogItem::Kind::kHeader;
  return Outcome::kItem;
}

// Reads records up to one that is an item. Reads all four words before the magic is checked, so
// a log that ends within them is cut, whatever the magic is.
LogReader::Outcome LogReader::ReadRecords(LogItem& item) {
  for (;; at_.offset = source_.offset()) {
    std::array<std::uint32_t, 4> words{};
    if (!ReadWords(words)) return Outcome::kEnd;
    const auto [magic, time, type_or_length, size_or_signal_length] = words;
    Outcome outcome = Outcome::kNoItem;
    switch (magic) {
      case kSignalRecordMagic:
        outcome = HandleSignalRecord(type_or_length, size_or_signal_length, item);
        break;
      case kDriverEventMagic:
        outcome = HandleDriverEvent(type_or_length, size_or_signal_length, item);
        break;
      default:
        return End(LogEnd::Kind::kBadMagic, magic);
    }
    item.time = {at_.timeBase, static_cast<std::int32_t>(time)};
    if (outcome != Outcome::kNoItem) return outcome;
  }
}

// The source is at the first byte after the event's size word.
LogReader::Outcome LogReader::HandleDriverEvent(std::uint32_t type, std::uint32_t size,
                                                LogItem& item) {
  const DriverEvent* const event = FindDriverEvent(type, size);
  // The size of an unknown event is not trusted: the next record is expected directly after
  // the four words.
  if (event == nullptr) return Outcome::kNoItem;
  if (event->size != size) return End(LogEnd::Kind::kBadEventSize, size, event);
  item.kind = LogItem::Kind::kEvent;
  item.event = event;
  switch (event->type) {
    case DriverEventType::kTimeRef: {
      std::uint32_t uptime = 0;
      if (!QenWifiDriverLogReadUint32(at_.timeBase)) return Outcome::kEnd;
      if (size == 8 && !QenWifiDriverLogReadUint32(uptime)) return Outcome::kEnd;
      item.uptime = static_cast<std::int32_t>(uptime);
      break;
    }
    case DriverEventType::kLoad:
      at_.header_follows = at_.driverUnloaded;
      at_.driverUnloaded = false;
      break;
    case DriverEventType::kUnload:
      at_.driverUnloaded = true;
      break;
  }
  return Outcome::kItem;
}

// The source is at the first byte of the record's payload.
LogReader::Outcome LogReader::HandleSignalRecord(std::uint32_t length, std::uint32_t signal_length,
                                                 LogItem& item) {
  const std::size_t size = std::max<std::size_t>(length, kMaxSignalEnd);
  std::uint8_t* const payload = FindRoomForPayload(size);
  if (payload == nullptr) return End(LogEnd::Kind::kNoMemory, length);
  if (source_.Read(payload, length) < length) {
    return EndAtShortRead(LogEnd::Kind::kPayloadUnreadable);
  }
  // Fields of a signal that is too short read as zero.
  if (length < size) std::memset(payload + length, 0, size - length);

  item.kind = LogItem::Kind::kSignal;
  item.signal = {LoadU16(payload), signal_length, {payload, length}};
  if (IsDriverSide(item.signal.id)) DecodeDriverSignal(item.signal.payload, at_.driverUnloaded);
  return Outcome::kItem;
}

// Returns null if there is no memory.
std::uint8_t* LogReader::FindRoomForPayload(std::size_t size) {
  if (size <= small_payload_.size()) {
    AllowAccess(small_payload_.data(), size);
    ForbidAccess(small_payload_.data() + size, small_payload_.size() - size);
    return small_payload_.data();
  }
  large_payload_.reset(static_cast<std::uint8_t*>(std::malloc(size)));
  return large_payload_.get();
}
