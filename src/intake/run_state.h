#ifndef VRKT_INTAKE_RUN_STATE_H_
#define VRKT_INTAKE_RUN_STATE_H_

#include <cstdint>
#include <cstdio>

#include "hip/hip_versions.h"

// The state of one run, except programName, which is global.
struct RunState {
  std::FILE* input = nullptr;
  std::FILE* pcap = nullptr;  // null if no capture file is written

  // The row of the epoch's HIP version. It only moves forward.
  const HipVersionEntry* hipCursor = HipVersionTable.data();

  std::uint32_t timeBase = 0;  // seconds of the last TimeRef; kept across epochs
  bool driverUnloaded = false;
};

#endif  // VRKT_INTAKE_RUN_STATE_H_
