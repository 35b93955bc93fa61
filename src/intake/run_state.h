#ifndef VRKT_INTAKE_RUN_STATE_H_
#define VRKT_INTAKE_RUN_STATE_H_

#include <cstdint>
#include <cstdio>

#include "hip/hip_versions.h"
#include "intake/line_stamp.h"

// The state of one run, from the start of the process to its end. (programName
// is the process's, see base/program_name.h.)
struct RunState {
  std::FILE* input = nullptr;
  const char* input_argument = nullptr;  // "stdin" or the path of the log
  std::FILE* pcap = nullptr;             // null: no capture file is written

  // The row of the epoch's HIP version. Never moves back.
  const HipVersionEntry* hipCursor = &HipVersionTable[0];

  std::uint32_t timeBase = 0;  // seconds of the last TimeRef; outlives an epoch
  bool driverUnloaded = false;
  StampedSecond stamped_second;
};

#endif  // VRKT_INTAKE_RUN_STATE_H_
