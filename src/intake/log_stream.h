#ifndef VRKT_INTAKE_LOG_STREAM_H_
#define VRKT_INTAKE_LOG_STREAM_H_

#include <cstdint>
#include <cstdio>

#include "intake/run_state.h"

// Reads the log strictly forward, so that it can be a pipe. A log has one or more
// epochs; an epoch is a 12-byte header followed by records.

// Reads an epoch's header and returns its packed HIP version. If the header is not
// valid, reports that and ends the process with status -1.
std::uint32_t ReadLogFileHeader(std::FILE* stream);

// Reads and handles the records of an epoch. Returns true if a driver reload ended the
// epoch, so that the next header follows in the stream. Returns false if the run ends
// with status 0. The end of the log outside a payload ends the process instead, with
// status 0.
bool ReadRecords(RunState& state);

#endif  // VRKT_INTAKE_LOG_STREAM_H_
