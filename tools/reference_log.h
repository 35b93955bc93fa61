#ifndef VRKT_TOOLS_REFERENCE_LOG_H_
#define VRKT_TOOLS_REFERENCE_LOG_H_

#include <cstdint>
#include <string>
#include <vector>

#include "fapi/hip_version_tags.h"
#include "log_builder.h"

// Records for which a version prints everything it can print. Any change of a row or a
// label changes the text of at least one record:
//
// - Each signal appears one byte too short, at its exact minimum length, with bytes after
//   its last field, and with bulk. All its bytes differ from each other, and the top bit
//   is clear in one record and set in another. So a change of a form, a width, a sign,
//   an offset or a skipped byte changes the text.
// - Each enumerated field has labelled values for which every other table of the version
//   prints another text. Each U16 field has values for which an enumerated field prints
//   another text.
// - Each label of each table appears, and so do the values next to it.
//
// A version's records depend only on that version's rows and labels.

struct ReferenceRecord {
  std::uint16_t id;
  std::string payload;
  std::uint32_t signal_length;  // in bytes; the rest of the payload is bulk
};

// Returns the records in ascending order of id. The records for the labels of a table
// follow the first signal that uses the table.
std::vector<ReferenceRecord> MakeReferenceRecords(HipVersionTag version);

// Returns the records as a log: a header, then record n at n milliseconds.
Log MakeReferenceLog(HipVersionTag version);

#endif  // VRKT_TOOLS_REFERENCE_LOG_H_
