#ifndef VRKT_LOG_LOG_READER_H_
#define VRKT_LOG_LOG_READER_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "base/sanitizers.h"
#include "hip/hip_versions.h"
#include "hip/signal_routing.h"

// Reads a log. It prints and reports nothing, and never ends the process: each output
// is a loop over the items of a log.
//
//   LogReader log(stream);
//   LogItem item;
//   while (log.Read(item)) ShowItem(item);
//   ReportEnd(log.end());
//
// A log has one or more epochs. An epoch is a header of 12 bytes followed by records. All
// words are little-endian and have 32 bits. A driver reload, which is an Unload event and
// then a Load event, ends an epoch.

inline constexpr std::uint32_t kHeaderMagic = 0x1289ABEF;
inline constexpr std::uint32_t kLogFormatVersion = 6;

// A record begins with one of these.
inline constexpr std::uint32_t kDriverEventMagic = 0x13572467;
inline constexpr std::uint32_t kSignalRecordMagic = 0x13572468;

enum class DriverEventType : std::uint32_t { kTimeRef = 0, kLoad = 1, kUnload = 2 };

// A header or a record that prints a line.
struct LogItem {
  enum class Kind : std::uint8_t {
    kHeader,    // a header; the version is LogReader::version()
    kUptime,    // a clock reference with the uptime
    kLoaded,    // the driver was loaded
    kUnloaded,  // the driver was unloaded
    kSignal,    // `signal`
  };

  Kind kind = Kind::kHeader;
  // The time of a record: the clock reference in seconds of Unix time, and milliseconds
  // relative to it.
  std::uint32_t timeBase = 0;
  std::int32_t time = 0;
  std::int32_t uptime = 0;  // in seconds, for kUptime
  SignalRecord signal{};    // for kSignal; valid until the next Read
};

// How the reading of a log ended.
struct LogEnd {
  enum class Kind : std::uint8_t {
    kComplete,           // after a whole record or header, or an empty log
    kCut,                // within a record or header
    kWordUnreadable,     // a read failed within a header, a record's header or an event
    kPayloadUnreadable,  // a read failed within a payload
    kNoMemory,           // for a payload of `value` bytes
    kBadMagic,           // `value` instead of a record's magic number
    kBadTimeRefSize,     // `value` is the size of the event
    kBadLoadSize,
    kBadUnloadSize,
    kOldFormat,          // `value` is the header's format version
    kBadHeaderMagic,     // `value` instead of a header's magic number
    kNewFormat,          // `value` is the header's format version
    kUnknownHipVersion,  // `value` is the packed version; unknown, or lower than before
  };

  Kind kind = Kind::kComplete;
  std::uint32_t value = 0;
};

class LogReader {
 public:
  // Does not take ownership of the stream.
  explicit LogReader(std::FILE* stream) : stream_(stream) {}
  LogReader(const LogReader&) = delete;
  LogReader& operator=(const LogReader&) = delete;

  // Reads up to the last byte of the next item, strictly forward and no byte further, so
  // the stream can be a pipe. Returns false if there is no further item; end() has the
  // reason then, and Read must not be called again.
  bool Read(LogItem& item);

  const LogEnd& end() const { return end_; }

  // The version of the epoch, from the first header on.
  const HipVersionEntry& version() const { return *hipCursor_; }

  // The number of bytes read.
  std::uint64_t position() const { return position_; }

 private:
  // A record with its four words read. The meaning of the last two depends on the magic
  // number.
  struct LogRecord {
    std::uint32_t magic;
    std::int32_t time;
    std::uint32_t type_or_length;
    std::uint32_t size_or_signal_length;
  };

  // What came of a header or record.
  enum class Outcome : std::uint8_t { kItem, kNoItem, kEnd };

  struct FreeBlock {
    void operator()(std::uint8_t* block) const { std::free(block); }
  };

  template <std::size_t kCount>
  bool ReadWords(std::array<std::uint32_t, kCount>& words);
  bool QenWifiDriverLogReadUint32(std::uint32_t& word);
  Outcome ReadLogFileHeader(LogItem& item);
  Outcome ReadRecords(LogItem& item);
  bool ReadRecordWords(LogRecord& record);
  Outcome HandleDriverEvent(const LogRecord& record, LogItem& item);
  Outcome HandleTimeRef(std::uint32_t size, LogItem& item);
  Outcome HandleSignalRecord(const LogRecord& record, LogItem& item);
  std::uint8_t* FindRoomForPayload(std::uint32_t length);
  Outcome End(LogEnd::Kind kind, std::uint32_t value = 0);
  Outcome EndAtShortRead(LogEnd::Kind failure);

  // The payloads of most records fit into this number of bytes and need no allocation.
  // With the address sanitizer, each payload has a block of its own, so that a read past
  // its end is detected.
  static constexpr std::size_t kSmallPayload = kHasAddressSanitizer ? 0 : 8192;

  std::FILE* stream_;
  LogEnd end_;
  std::uint64_t position_ = 0;
  std::uint64_t start_of_unit_ = 0;  // of the header or record that is being read

  // The row of the epoch's HIP version. It only moves forward.
  const HipVersionEntry* hipCursor_ = HipVersionTable.data();
  std::uint32_t timeBase_ = 0;  // seconds of the last TimeRef; kept across epochs
  bool driverUnloaded_ = false;
  bool header_follows_ = true;

  std::array<std::uint8_t, kSmallPayload> small_payload_;
  // A larger payload. It comes from malloc, which does not write to it: an overstated
  // length only reserves address space. It is released before the next record is read.
  std::unique_ptr<std::uint8_t[], FreeBlock> large_payload_;
};

#endif  // VRKT_LOG_LOG_READER_H_
