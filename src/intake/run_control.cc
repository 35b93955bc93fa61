#include "intake/run_control.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string_view>

#include "base/program_name.h"
#include "capture/pcap_writer.h"
#include "hip/hip_versions.h"
#include "intake/log_stream.h"
#include "intake/run_state.h"
#include "intake/standard_streams.h"

namespace {

constexpr int kRejected = -1;
constexpr int kNoArguments = 1;
constexpr std::string_view kStandardInput = "stdin";
constexpr std::string_view kPcapOption = "--pcap";

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
  if (argument == kStandardInput) {
    state.input = stdin;
    return true;
  }
  state.input = std::fopen(argument, "r");
  if (state.input != nullptr) return true;
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

void DecodeEpochs(RunState& state) {
  do {
    SelectHipVersion(ReadLogFileHeader(state.input), state.hipCursor);
    if (state.pcap != nullptr) {
      WritePcapGlobalHeader(state.pcap, state.hipCursor->pcap_link_type);
    }
  } while (ReadRecords(state));
}

void CloseStreams(const RunState& state) {
  if (state.input != stdin) std::fclose(state.input);
  if (state.pcap != nullptr) std::fclose(state.pcap);
}

}  // namespace

int RunLogDecoder(int argc, const char* const* argv) {
  PrintBanner();
  programName = ResolveProgramName(argc > 0 ? argv[0] : nullptr);
  OccupyClosedStandardStreams();
  RunState state;
  if (const std::optional<int> status = ReadArguments(argc, argv, state)) return *status;
  DecodeEpochs(state);
  CloseStreams(state);
  return 0;
}
