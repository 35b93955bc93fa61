#ifndef VRKT_TESTS_SUPPORT_DECODE_IN_PROCESS_H_
#define VRKT_TESTS_SUPPORT_DECODE_IN_PROCESS_H_

#include <string>

#include "support/process.h"

// Runs the tool on standard input within this process, for tests that need
// thousands of runs. Stamps are in this process's time zone. The result has no
// `pcap`.
ToolResult DecodeInProcess(std::string log);

#endif  // VRKT_TESTS_SUPPORT_DECODE_IN_PROCESS_H_
