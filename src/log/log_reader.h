#ifndef VRKT_LOG_LOG_READER_H_
#define VRKT_LOG_LOG_READER_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <utility>

#include "hip/hip_versions.h"
#include "hip/log_item.h"
#include "log/byte_source.h"

// Reads a log. It prints and reports nothing, and never ends the process: each output
// is a loop over the items of a log.
//
//   LogReader log(STDIN_FILENO);
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

// How the reading of a log ended.
struct LogEnd {
  enum class Kind : std::uint8_t {
    kComplete,           // after a whole record or header, or an empty log
    kCut,                // within a record or header
    kWordUnreadable,     // a read failed within a header, a record's header or an event
    kPayloadUnreadable,  // a read failed within a payload
    kNoMemory,           // for a payload of `value` bytes
    kBadMagic,           // `value` instead of a record's magic number
    kBadEventSize,       // `value` is the size of an event of the type of `event`
    kOldFormat,          // `value` is the header's format version
    kBadHeaderMagic,     // `value` instead of a header's magic number
    kNewFormat,          // `value` is the header's format version
    kUnknownHipVersion,  // `value` is the packed version; unknown, or lower than before
  };

  Kind kind = Kind::kComplete;
  std::uint32_t value = 0;
  const DriverEvent* event = nullptr;
};

// A place between two items of a log, and what the reader knows there from those before.
struct LogPosition {
  std::uint64_t offset = 0;  // in bytes, of the next item
  // The row of the epoch's HIP version. It only moves forward.
  const HipVersionEntry* hipCursor = HipVersionTable.data();
  std::uint32_t timeBase = 0;  // seconds of the last TimeRef; kept across epochs
  bool driverUnloaded = false;
  bool header_follows = true;
};

class LogReader {
 public:
  // Does not take ownership of the descriptor.
  explicit LogReader(int descriptor) : source_(descriptor) {}
  explicit LogReader(ByteSource::ReadFunction read) : source_(std::move(read)) {}
  ~LogReader();
  LogReader(const LogReader&) = delete;
  LogReader& operator=(const LogReader&) = delete;

  // Reads the next item: a header or a record, but no event of an unknown type. Returns as soon
  // as a pipe has the item's last byte. Returns false if there is no further item; end() has the
  // reason then, and Read must not be called again, except after Seek.
  bool Read(LogItem& item);

  const LogEnd& end() const { return end_; }

  // The version of the epoch, from the first header on.
  const HipVersionEntry& version() const { return *at_.hipCursor; }

  // Where the next item begins, for Seek. After the last item, the offset is the number of bytes
  // of the log that were read.
  LogPosition position() const;

  // Continues at a position of the same log. Returns false, and reads on where it was, if the log
  // is no file.
  bool Seek(const LogPosition& position);

  // Sets the descriptor's offset to the end of what was read, if it is a file.
  void ReturnUnread() { source_.ReturnUnread(); }

 private:
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
  Outcome HandleDriverEvent(std::uint32_t type, std::uint32_t size, LogItem& item);
  Outcome HandleSignalRecord(std::uint32_t length, std::uint32_t signal_length, LogItem& item);
  std::uint8_t* FindRoomForPayload(std::size_t size);
  Outcome End(LogEnd::Kind kind, std::uint32_t value = 0, const DriverEvent* event = nullptr);
  Outcome EndAtShortRead(LogEnd::Kind failure);

  LogEnd end_;
  LogPosition at_;  // `offset` is that of the header or record that is being read

  // The payloads of most records fit into this and need no allocation. The address sanitizer
  // detects access after a payload and its zeros.
  alignas(8) std::array<std::uint8_t, 8192> small_payload_;
  // A larger payload. It comes from malloc, which does not write to it: an overstated
  // length only reserves address space. It is released before the next record is read.
  std::unique_ptr<std::uint8_t[], FreeBlock> large_payload_;

  ByteSource source_;
};

#endif  // VRKT_LOG_LOG_READER_H_
