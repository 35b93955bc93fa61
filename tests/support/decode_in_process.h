#ifndef VRKT_TESTS_SUPPORT_DECODE_IN_PROCESS_H_
#define VRKT_TESTS_SUPPORT_DECODE_IN_PROCESS_H_

#include <cstdio>
#include <string>

#include "support/process.h"

// Opens bytes for reading, as a stream that does not own them.
std::FILE* OpenBytes(std::string& bytes);

// Runs the tool on standard input within this process, for tests that need
// thousands of runs. Stamps are in this process's time zone. A capture file is written to
// the working directory. The result has no `pcap`.
ToolResult DecodeInProcess(std::string log, bool writes_pcap = false);

#endif  // VRKT_TESTS_SUPPORT_DECODE_IN_PROCESS_H_
