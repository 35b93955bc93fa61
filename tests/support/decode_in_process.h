#ifndef VRKT_TESTS_SUPPORT_DECODE_IN_PROCESS_H_
#define VRKT_TESTS_SUPPORT_DECODE_IN_PROCESS_H_

#include <string>
#include <string_view>

#include "log/byte_source.h"

// Reads bytes, which it does not own.
ByteSource::ReadFunction ReadFrom(std::string_view bytes);

struct DecodedLog {
  int status = 0;  // exit status
  std::string out{};
  std::string err{};
};

// Runs the tool on standard input within this process, for tests and fuzzers that need
// thousands of runs. Stamps are in this process's time zone. A capture file is written to
// the working directory.
DecodedLog DecodeInProcess(std::string_view log, bool writes_pcap = false);

#endif  // VRKT_TESTS_SUPPORT_DECODE_IN_PROCESS_H_
