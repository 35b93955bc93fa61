#ifndef VRKT_INTAKE_LOG_STREAM_H_
#define VRKT_INTAKE_LOG_STREAM_H_

#include <cstdint>
#include <cstdio>

#include "intake/run_state.h"

// The log: epochs of a 12-byte header and records, read strictly forward.

// Reads the header that opens an epoch and returns its packed HIP version. Ends
// the process with status -1, after a report, if the header is not acceptable.
std::uint32_t ReadLogFileHeader(std::FILE* stream);

// Reads and handles the records of an epoch. Returns true if a reload of the driver
// ended the epoch, so the next header follows in the stream, and false if the run
// ends with status 0.
bool ReadRecords(RunState& state);

#endif  // VRKT_INTAKE_LOG_STREAM_H_
