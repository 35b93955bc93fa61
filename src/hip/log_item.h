#ifndef VRKT_HIP_LOG_ITEM_H_
#define VRKT_HIP_LOG_ITEM_H_

#include <cstdint>

#include "hip/driver_events.h"
#include "hip/hip_signal.h"

// What the reader of a log gives: a header or a record with what the log says of it. What a
// record is in the epoch's version is a Record, see record.h.

// The time of a record, as the log has it.
struct RecordTime {
  std::uint32_t timeBase;     // the clock reference, in seconds of Unix time
  std::int32_t milliseconds;  // relative to it, also negative
};

// A record's exact time. It differs from the line stamp if the milliseconds are negative:
// -1 ms is in the second before the clock reference.
struct ExactTime {
  std::int32_t second;       // of Unix time; wraps as the stamp's does
  std::int32_t millisecond;  // 0 to 999

  constexpr std::int64_t ToMs() const { return std::int64_t{1000} * second + millisecond; }
};

constexpr ExactTime GetExactTime(RecordTime time) {
  const std::int32_t rest = time.milliseconds % 1000;
  const std::int32_t seconds = time.milliseconds / 1000 - (rest < 0 ? 1 : 0);
  return {static_cast<std::int32_t>(time.timeBase + static_cast<std::uint32_t>(seconds)),
          rest < 0 ? rest + 1000 : rest};
}

// A complete record with a signal. It borrows the payload.
struct SignalRecord {
  std::uint16_t id;             // bytes that the payload lacks read as zero
  std::uint32_t signal_length;  // in bytes, as in the record; can exceed the payload
  SignalSpan payload;           // readable up to kMaxSignalEnd, as a HipSignal
};

struct LogItem {
  enum class Kind : std::uint8_t {
    kHeader,  // a header; the version is LogReader::version()
    kEvent,   // `event` and, if it has one, `uptime`
    kSignal,  // `signal`
  };

  bool IsEvent(DriverEventType type) const { return kind == Kind::kEvent && event->type == type; }

  // Whether the item has a line, which begins with its stamp.
  bool HasLine() const {
    return kind == Kind::kSignal || (kind == Kind::kEvent && !event->text.empty());
  }

  Kind kind = Kind::kHeader;
  RecordTime time{};  // of a record; that of a clock reference counts from the new base
  const DriverEvent* event = nullptr;
  std::int32_t uptime = 0;  // in seconds
  SignalRecord signal{};    // valid until the next Read
};

#endif  // VRKT_HIP_LOG_ITEM_H_
