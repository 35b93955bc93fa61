#include "intake/log_stream.h"

#include <array>
#include <cstdlib>
#include <memory>

#include "base/little_endian.h"
#include "base/program_name.h"
#include "base/unlocked_stdio.h"
#include "capture/pcap_writer.h"
#include "hip/signal_routing.h"
#include "intake/line_stamp.h"

namespace {

constexpr std::uint32_t kHeaderMagic = 0x1289ABEF;
constexpr std::uint32_t kFormatVersion = 6;
constexpr std::uint32_t kDriverEventMagic = 0x13572467;
constexpr std::uint32_t kSignalRecordMagic = 0x13572468;

struct LogFileHeader {
  std::uint32_t magic;
  std::uint32_t format_version;
  std::uint32_t hip_version;
};

// The first four words of any record. The meaning of the last two depends on the
// magic.
struct LogRecord {
  std::uint32_t magic;
  std::int32_t time;  // milliseconds from the time base
  std::uint32_t type_or_length;
  std::uint32_t size_or_signal_length;
};

struct DriverEvent {
  std::int32_t time;   // milliseconds from the time base
  std::uint32_t type;  // a DriverEventType or an unknown value
  std::uint32_t size;  // bytes of payload that follow
};

struct SignalRecord {
  std::int32_t time;            // milliseconds from the time base
  std::uint32_t length;         // bytes of payload that follow
  std::uint32_t signal_length;  // bytes of the signal; the rest of the payload is bulk
};

enum DriverEventType : std::uint32_t { kTimeRef = 0, kLoad = 1, kUnload = 2 };

enum class RecordOutcome { kNextRecord, kNewEpoch, kOrderlyEnd };

struct FreeBlock {
  void operator()(std::uint8_t* block) const { std::free(block); }
};

// A record's payload. It comes from malloc, which does not write to it: an
// overstated length only reserves address space.
using PayloadBlock = std::unique_ptr<std::uint8_t[], FreeBlock>;

// Reads one little-endian word. At the end of the stream, also within a word, ends
// the process with status 0. This is the normal end of the tool. On a read failure,
// reports it and ends the process with status -1.
std::uint32_t QenWifiDriverLogReadUint32(std::FILE* stream) {
  std::array<std::uint8_t, 4> word{};
  for (std::uint8_t& byte : word) {
    const int c = ReadByte(stream);
    if (c == EOF) {
      if (std::feof(stream) != 0) std::exit(0);
      std::fprintf(stderr, "%s: QenWifiDriverLogReadUint32() not enough bytes read\n", programName);
      std::exit(-1);
    }
    byte = static_cast<std::uint8_t>(c);
  }
  return LoadU32(word.data());
}

void PrintDriverLine(const RunState& state, std::int32_t time, std::string_view line) {
  PrintLineStamp(state.timeBase, time);
  PrintPiece(line);
}

RecordOutcome HandleTimeRef(RunState& state, const DriverEvent& event) {
  if (event.size != 4 && event.size != 8) {
    std::fprintf(stderr,
                 "%s: size(%d) detected in TimeRef log entry. Expected size == 4 || Expected size "
                 "== 8\n",
                 programName, static_cast<std::int32_t>(event.size));
    return RecordOutcome::kOrderlyEnd;
  }
  state.timeBase = QenWifiDriverLogReadUint32(state.input);
  if (event.size == 8) {
    const auto uptime = static_cast<std::int32_t>(QenWifiDriverLogReadUint32(state.input));
    PrintLineStamp(state.timeBase, event.time);
    std::printf("Driver: Uptime: %d seconds\n", uptime);
  }
  return RecordOutcome::kNextRecord;
}

RecordOutcome HandleLoad(RunState& state, const DriverEvent& event) {
  if (event.size != 0) {
    std::fprintf(stderr, "%s: size(%d) detected in Driver Load log entry. Expected size == 0\n",
                 programName, static_cast<std::int32_t>(event.size));
    return RecordOutcome::kOrderlyEnd;
  }
  PrintDriverLine(state, event.time, "Driver: Loaded\n");
  if (!state.driverUnloaded) return RecordOutcome::kNextRecord;
  state.driverUnloaded = false;
  return RecordOutcome::kNewEpoch;
}

RecordOutcome HandleUnload(RunState& state, const DriverEvent& event) {
  if (event.size != 0) {
    std::fprintf(stderr, "%s: size(%d detected in Driver Unload log entry. Expected size == 0\n",
                 programName, static_cast<std::int32_t>(event.size));
    return RecordOutcome::kOrderlyEnd;
  }
  state.driverUnloaded = true;
  PrintDriverLine(state, event.time, "Driver: Unloaded\n");
  return RecordOutcome::kNextRecord;
}

// The stream is at the first byte after the event's size word.
RecordOutcome HandleDriverEvent(RunState& state, const DriverEvent& event) {
  switch (event.type) {
    case kTimeRef:
      return HandleTimeRef(state, event);
    case kLoad:
      return HandleLoad(state, event);
    case kUnload:
      return HandleUnload(state, event);
    default:
      // The size of an unknown event is not trusted: the next record is expected
      // directly after the four words.
      return RecordOutcome::kNextRecord;
  }
}

// The stream is at the first byte of the record's payload.
RecordOutcome HandleSignalRecord(RunState& state, const SignalRecord& record) {
  const PayloadBlock payload(static_cast<std::uint8_t*>(std::malloc(record.length)));
  if (payload == nullptr && record.length != 0) {
    std::fprintf(stderr, "%s: malloc(logData.data) of %u bytes Failed\n", programName,
                 static_cast<unsigned>(record.length));
    return RecordOutcome::kOrderlyEnd;
  }
  if (ReadBytes(payload.get(), record.length, state.input) < record.length) {
    if (std::feof(state.input) == 0) {
      std::fprintf(stderr, "%s: fread(logData.data) not enough bytes read\n", programName);
    }
    return RecordOutcome::kOrderlyEnd;
  }
  PrintLineStamp(state.timeBase, record.time);
  if (state.pcap != nullptr) {
    WritePcapRecord(state.pcap, state.timeBase, record.time, record.length, payload.get());
  }
  RouteSignal({record.length, payload.get()}, record.signal_length, *state.hipCursor,
              state.driverUnloaded);
  return RecordOutcome::kNextRecord;
}

// Reads all four words before the magic is checked, so a log that ends within them
// ends without a report.
LogRecord ReadRecordWords(std::FILE* stream) {
  LogRecord record{};
  record.magic = QenWifiDriverLogReadUint32(stream);
  record.time = static_cast<std::int32_t>(QenWifiDriverLogReadUint32(stream));
  record.type_or_length = QenWifiDriverLogReadUint32(stream);
  record.size_or_signal_length = QenWifiDriverLogReadUint32(stream);
  return record;
}

RecordOutcome ReadRecord(RunState& state) {
  const LogRecord record = ReadRecordWords(state.input);
  switch (record.magic) {
    case kSignalRecordMagic:
      return HandleSignalRecord(state,
                                {record.time, record.type_or_length, record.size_or_signal_length});
    case kDriverEventMagic:
      return HandleDriverEvent(state,
                               {record.time, record.type_or_length, record.size_or_signal_length});
    default:
      std::fprintf(stderr, "%s: Bad Magic number detected in log. magic:0x%.8X\n", programName,
                   static_cast<unsigned>(record.magic));
      return RecordOutcome::kOrderlyEnd;
  }
}

}  // namespace

std::uint32_t ReadLogFileHeader(std::FILE* stream) {
  // An old format version is reported before the magic is checked and before the
  // last word is read. The order decides which report a damaged header gets.
  LogFileHeader header{};
  header.magic = QenWifiDriverLogReadUint32(stream);
  header.format_version = QenWifiDriverLogReadUint32(stream);
  if (header.format_version < kFormatVersion) {
    std::fprintf(stderr, "%s: Log File Format Version %d detected. Not Supported.\n", programName,
                 static_cast<std::int32_t>(header.format_version));
    std::exit(-1);
  }
  header.hip_version = QenWifiDriverLogReadUint32(stream);
  if (header.magic != kHeaderMagic) {
    std::fprintf(stderr, "%s: Bad Magic number detected in log file header. magic:0x%.8X\n",
                 programName, static_cast<unsigned>(header.magic));
    std::exit(-1);
  }
  if (header.format_version != kFormatVersion) {
    std::fprintf(stderr,
                 "%s: Incompatible version(%d) detected in log file header.\n"
                 "This decoder supports version %d and below.\n",
                 programName, static_cast<std::int32_t>(header.format_version),
                 static_cast<int>(kFormatVersion));
    std::exit(-1);
  }
  return header.hip_version;
}

bool ReadRecords(RunState& state) {
  RecordOutcome outcome = RecordOutcome::kNextRecord;
  while (outcome == RecordOutcome::kNextRecord) outcome = ReadRecord(state);
  return outcome == RecordOutcome::kNewEpoch;
}
