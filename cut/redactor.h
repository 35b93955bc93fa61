#ifndef VRKT_CUT_REDACTOR_H_
#define VRKT_CUT_REDACTOR_H_

#include <cstdint>
#include <string>
#include <vector>

#include "fapi/compiled_signal.h"
#include "hip/hip_versions.h"
#include "hip/log_item.h"
#include "piece.h"
#include "pseudonyms.h"

// Removes secrets from signals: keys, names, addresses, and what allows guessing them. It keeps
// what is known to be harmless and puts zeros in place of everything else, so a new signal or
// dump is safe. All lengths stay as they are.
//
// - Of a signal it keeps the id and the fields, except those that HoldsSecret names. A field
//   that is not within the signal shows bytes of the bulk, so it is not kept.
// - Addresses become pseudonyms.
// - Of a dump it keeps what frame_redaction.h says, if the version's layout shows what the dump is.
// - Of a signal without a layout, or with a wrong length, it keeps the id.
class Redactor {
 public:
  explicit Redactor(bool keeps_addresses);

  // Appends the payload of a record of this version, redacted.
  void AppendPayload(const SignalRecord& record, const HipVersionEntry& version, std::string& log);

 private:
  enum class Content : std::uint8_t { kUnknown, kFrame, kManagementFrame, kElements };

  // What the dumps of a layout contain.
  struct DumpContent {
    Content content = Content::kUnknown;
    const CompiledField* descriptor = nullptr;  // of a kFrame
  };

  static DumpContent FindContent(const CompiledSignal& layout);
  void RedactDump(const SignalView& signal, Piece fields, Piece dump);

  Pseudonyms pseudonyms_;
  std::vector<DumpContent> contents_;  // by layout
};

#endif  // VRKT_CUT_REDACTOR_H_
