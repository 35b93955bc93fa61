#ifndef VRKT_TOOLS_DECODE_IN_PROCESS_H_
#define VRKT_TOOLS_DECODE_IN_PROCESS_H_

#include <cstdio>
#include <string>

// Opens bytes for reading, as a stream that does not own them.
std::FILE* OpenBytes(std::string& bytes);

struct DecodedLog {
  int status = 0;  // exit status
  std::string out{};
  std::string err{};
};

// Runs the tool on standard input within this process, for tests and fuzzers that need
// thousands of runs. Stamps are in this process's time zone. A capture file is written to
// the working directory.
DecodedLog DecodeInProcess(std::string log, bool writes_pcap = false);

#endif  // VRKT_TOOLS_DECODE_IN_PROCESS_H_
