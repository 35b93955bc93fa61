#ifndef VRKT_TESTS_SUPPORT_REFERENCE_LOG_H_
#define VRKT_TESTS_SUPPORT_REFERENCE_LOG_H_

#include <cstdint>
#include <string>
#include <vector>

#include "fapi/hip_version_tags.h"
#include "log_builder.h"

// Records that bring out everything a version can print. Whatever a row or a
// label says changes the text of at least one of them:
//
// - Each signal appears one byte too short, at its exact least length, with
//   bytes after its last field, and with bulk. Every byte of it differs from
//   every other one, with the top bit clear in one record and set in another, so
//   a form, a width, a sign, an offset or a skipped byte shows in the values.
// - Each enumerated field takes labelled values that tell its table from every
//   other table of the version. Each U16 field takes values that tell it from an
//   enumerated one.
// - Each label of each table appears, and so does the value on each side of it.
//
// A version's records depend on that version's rows and labels alone.

struct ReferenceRecord {
  std::uint16_t id;
  std::string payload;
  std::uint32_t signal_length;  // in bytes; the rest of the payload is bulk
};

// In ascending order of ids. The labels of a table follow the first signal that
// has them.
std::vector<ReferenceRecord> MakeReferenceRecords(HipVersionTag version);

// The records as a log: a header, then record n at n milliseconds.
Log MakeReferenceLog(HipVersionTag version);

#endif  // VRKT_TESTS_SUPPORT_REFERENCE_LOG_H_
