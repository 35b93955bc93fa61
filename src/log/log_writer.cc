#include "log/log_writer.h"

#include <algorithm>
#include <cstddef>

#include "base/little_endian.h"

void AppendWords(std::initializer_list<std::uint32_t> words, std::string& log) {
  std::size_t end = log.size();
  log.resize(end + 4 * words.size());
  for (const std::uint32_t word : words) {
    StoreU32(word, reinterpret_cast<std::uint8_t*>(log.data()) + end);
    end += 4;
  }
}

void AppendHeader(std::uint32_t hip_version, std::string& log) {
  AppendWords({kHeaderMagic, kLogFormatVersion, hip_version}, log);
}

void AppendEvent(DriverEventType type, std::int32_t time,
                 std::initializer_list<std::uint32_t> words, std::string& log) {
  AppendWords({kDriverEventMagic, static_cast<std::uint32_t>(time),
               static_cast<std::uint32_t>(type), static_cast<std::uint32_t>(4 * words.size())},
              log);
  AppendWords(words, log);
}

void AppendSignalHeader(std::int32_t time, std::uint32_t length, std::uint32_t signal_length,
                        std::string& log) {
  AppendWords({kSignalRecordMagic, static_cast<std::uint32_t>(time), length, signal_length}, log);
}

void AppendItem(const LogItem& item, std::string& log, std::uint32_t max_payload) {
  switch (item.kind) {
    case LogItem::Kind::kEvent:
      AppendWords({kDriverEventMagic, static_cast<std::uint32_t>(item.time.milliseconds),
                   static_cast<std::uint32_t>(item.event->type), item.event->size},
                  log);
      if (item.event->size >= 4) AppendWords({item.time.timeBase}, log);
      if (item.event->size >= 8) AppendWords({static_cast<std::uint32_t>(item.uptime)}, log);
      break;
    case LogItem::Kind::kSignal: {
      const SignalSpan payload = item.signal.payload;
      AppendSignalHeader(item.time.milliseconds, static_cast<std::uint32_t>(payload.size()),
                         item.signal.signal_length, log);
      log.append(reinterpret_cast<const char*>(payload.data()),
                 std::min<std::size_t>(payload.size(), max_payload));
      break;
    }
    case LogItem::Kind::kHeader:
      break;
  }
}
