#include "support/decode_in_process.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "support/capture_stream.h"
#include "tool/run_control.h"

ByteSource::ReadFunction ReadFrom(std::string_view bytes) {
  return [bytes](void* destination, std::size_t size) mutable {
    const std::size_t count = std::min(size, bytes.size());
    std::memcpy(destination, bytes.data(), count);
    bytes.remove_prefix(count);
    return static_cast<ssize_t>(count);
  };
}

DecodedLog DecodeInProcess(std::string_view log, bool writes_pcap) {
  const char* const kArguments[] = {"vrkt_wlan_udi_log_decode", "stdin", "--pcap", nullptr};
  const int kept_input = dup(STDIN_FILENO);
  const int input = memfd_create("log", MFD_CLOEXEC);
  if (write(input, log.data(), log.size()) != static_cast<ssize_t>(log.size()) ||
      lseek(input, 0, SEEK_SET) != 0 || dup2(input, STDIN_FILENO) < 0) {
    std::abort();
  }
  close(input);
  DecodedLog result;
  result.err = CaptureStandardError([&] {
    result.out = CaptureStandardOutput(
        [&] { result.status = RunLogDecoder(writes_pcap ? 3 : 2, kArguments) & 0xFF; });
  });
  dup2(kept_input, STDIN_FILENO);
  close(kept_input);
  return result;
}
