#include "tool/run_control.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string_view>

#include "base/little_endian.h"
#include "base/program_name.h"
#include "base/unlocked_stdio.h"
#include "hip/hip_versions.h"
#include "hip/record.h"
#include "log/line_stamp.h"
#include "log/log_reader.h"
#include "log/log_text.h"
#include "tool/pcap_writer.h"
#include "tool/standard_streams.h"

namespace {

constexpr int kSuccess = 0;
constexpr int kRejected = -1;
constexpr int kNoArguments = 1;
constexpr std::string_view kStandardInput = "stdin";
constexpr std::string_view kPcapOption = "--pcap";

// The streams of one run. The state of the log is in a LogReader.
struct RunState {
  int input = STDIN_FILENO;
  std::FILE* pcap = nullptr;  // null if no capture file is written
};

// Returns the name used in reports: the part of argument 0 after its last "/", which may
// be empty. Without an argument 0, the name is that of the tool.
const char* ResolveProgramName(const char* argument) {
  if (argument == nullptr) return "vrkt_wlan_udi_log_decode";
  const char* const last_slash = std::strrchr(argument, '/');
  return last_slash == nullptr ? argument : last_slash + 1;
}

void PrintBanner() { std::printf("Decode Tool version:%s.%d\n", HipVersionTable.back().name, 1); }

void PrintUsage() {
  std::fprintf(stderr, "Usage   : %s <filename|stdin> [--pcap]\n", programName);
  std::fprintf(stderr, "        : where\n");
  std::fprintf(stderr, "        :     <filename> is the file to log to decode.\n");
  std::fprintf(stderr, "        :     <filename> == 'stdin' the data is read raw from stdin.\n");
  std::fprintf(stderr, "        :     --pcap can be given to generate a pcap file [optional]\n");
  std::fprintf(stderr,
               "        :            This must be given as the last parameter(after the "
               "<filename|stdin>)\n");
  std::fprintf(stderr, "        : Live logging example\n");
  std::fprintf(stderr, "        :     vrkt_wlan_udi_log stdout | %s stdin\n", programName);
  std::fprintf(stderr, "        : Supported Hip Versions\n");
  for (const HipVersionEntry& entry : HipVersionTable) {
    std::fprintf(stderr, "        :     %s\n", entry.name);
  }
}

bool OpenInput(RunState& state, const char* argument) {
  if (argument == kStandardInput) return true;
  state.input = ::open(argument, O_RDONLY | O_CLOEXEC);
  if (state.input >= 0) return true;
  std::fprintf(stderr, "%s: fopen(%s) Failed errno:%d\n", programName, argument, errno);
  return false;
}

// If no capture file can be opened, the run continues without one.
void OpenPcap(RunState& state) {
  state.pcap = std::fopen("udi_fapi.pcap", "w");
  if (state.pcap == nullptr) state.pcap = std::fopen("/sdcard/udi_fapi.pcap", "w");
  if (state.pcap == nullptr) {
    std::fprintf(stderr, "%s: fopen(output.pcap|/sdcard/udi_fapi.pcap) Failed errno:%d\n",
                 programName, errno);
  }
}

// Returns the exit status if the arguments end the run.
std::optional<int> ReadArguments(int argc, const char* const* argv, RunState& state) {
  if (argc < 2) {
    PrintUsage();
    return argc == 1 ? kNoArguments : kRejected;
  }
  if (argv[1] == kPcapOption) {
    std::fprintf(stderr, "i%s: --pcap must be given after filename/stdin\n", programName);
    PrintUsage();
    return kRejected;
  }
  if (!OpenInput(state, argv[1])) return kRejected;
  if (argc > 2 && argv[2] == kPcapOption) OpenPcap(state);
  return std::nullopt;
}

// Prints what follows the stamp.
void PrintRecord(const Record& record) {
  LinePiece piece;
  RenderRecord(record, piece, PrintPiece);
  piece.Append('\n');
  PrintPiece(piece.text());
}

void ShowItem(const LogItem& item, const HipVersionEntry& version, std::FILE* pcap) {
  const Record record = UnderstandRecord(item, version);
  if (item.HasLine()) PrintLineStamp(item.time);
  if (pcap != nullptr && item.kind == LogItem::Kind::kSignal) {
    WritePcapRecord(pcap, item.time, item.signal.payload);
  }
  switch (record.kind) {
    case Record::Kind::kHeader:
      std::fprintf(stderr, "%s: Log File Hip Version %s detected\n", programName, version.name);
      if (pcap != nullptr) WritePcapGlobalHeader(pcap, version.pcap_link_type);
      break;
    case Record::Kind::kSilentEvent:
    case Record::Kind::kTooShort:  // the next stamp follows on the same line
      break;
    case Record::Kind::kEvent:
    case Record::Kind::kSignal:
    case Record::Kind::kUnknownSignal:
    case Record::Kind::kInvalidLength:
    case Record::Kind::kDriverSignal:
      PrintRecord(record);
      break;
    case Record::Kind::kUnknownDriverSignal:
      PrintRecord(record);
      std::fprintf(stderr, "%s: Decode Error: Unknown Signal 0x%.4X::0x%.4X\n", programName,
                   static_cast<unsigned>(LoadU16(record.signal.bytes + 2)),
                   static_cast<unsigned>(record.id));
      break;
  }
}

void ReportEnd(const LogEnd& end) {
  const std::string report = DescribeLogEnd(end);
  if (!report.empty()) std::fprintf(stderr, "%s: %s\n", programName, report.c_str());
  if (end.kind != LogEnd::Kind::kUnknownHipVersion) return;
  std::fprintf(stderr, "%s: This decoder supports hip versions:\n", programName);
  for (const HipVersionEntry& entry : HipVersionTable) {
    std::fprintf(stderr, "%s:      %s\n", programName, entry.name);
  }
}

// A rejected header and a failure to read a word are failures of the run. A damaged log is
// not: only the report distinguishes it from a good one.
int GetExitStatus(const LogEnd& end) {
  switch (end.kind) {
    case LogEnd::Kind::kWordUnreadable:
    case LogEnd::Kind::kOldFormat:
    case LogEnd::Kind::kBadHeaderMagic:
    case LogEnd::Kind::kNewFormat:
    case LogEnd::Kind::kUnknownHipVersion:
      return kRejected;
    default:
      return kSuccess;
  }
}

int DecodeLog(const RunState& state) {
  LogReader log(state.input);
  LogItem item;
  while (log.Read(item)) ShowItem(item, log.version(), state.pcap);
  log.ReturnUnread();
  ReportEnd(log.end());
  return GetExitStatus(log.end());
}

void CloseStreams(const RunState& state) {
  if (state.input != STDIN_FILENO) ::close(state.input);
  if (state.pcap != nullptr) std::fclose(state.pcap);
}

}  // namespace

int RunLogDecoder(int argc, const char* const* argv) {
  PrintBanner();
  programName = ResolveProgramName(argc > 0 ? argv[0] : nullptr);
  OccupyClosedStandardStreams();
  RunState state;
  if (const std::optional<int> status = ReadArguments(argc, argv, state)) return *status;
  const int status = DecodeLog(state);
  CloseStreams(state);
  return status;
}
