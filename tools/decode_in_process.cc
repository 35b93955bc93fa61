#include "decode_in_process.h"

#include "capture_stream.h"
#include "tool/run_control.h"

std::FILE* OpenBytes(std::string& bytes) {
  // fmemopen rejects an empty buffer.
  return bytes.empty() ? std::fopen("/dev/null", "r") : fmemopen(bytes.data(), bytes.size(), "r");
}

DecodedLog DecodeInProcess(std::string log, bool writes_pcap) {
  const char* const kArguments[] = {"vrkt_wlan_udi_log_decode", "stdin", "--pcap", nullptr};
  DecodedLog result;
  std::FILE* const kept_input = stdin;
  stdin = OpenBytes(log);
  result.err = CaptureStandardError([&] {
    result.out = CaptureStandardOutput(
        [&] { result.status = RunLogDecoder(writes_pcap ? 3 : 2, kArguments) & 0xFF; });
  });
  std::fclose(stdin);
  stdin = kept_input;
  return result;
}
