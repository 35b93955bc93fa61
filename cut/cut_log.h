#ifndef VRKT_CUT_CUT_LOG_H_
#define VRKT_CUT_CUT_LOG_H_

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

#include "hip/log_item.h"
#include "log/byte_source.h"
#include "log/log_reader.h"
#include "redactor.h"
#include "selection.h"

// Writes bytes of the part. Returns 0, or the error number of a failure, which ends the work.
using WriteFunction = std::function<int(std::string_view bytes)>;

struct CutResult {
  bool is_empty = true;  // whether no record is selected
  int write_error = 0;   // the error number if not everything could be written
  // How the log ended. Nothing if it was not read to its end, because no later record can be
  // selected or because the part cannot be written.
  std::optional<LogEnd> end{};

  // The records that were read.
  std::uint64_t count = 0;
  RecordTime first{};
  RecordTime last{};
};

// Reads a log in one pass and writes the selected records as a log of their own. Before it waits
// for more of the log, it writes what it has. The redactor is empty if payloads are copied.
CutResult CutLog(const ByteSource::ReadFunction& read, const WriteFunction& write,
                 Selection& selection, std::optional<Redactor> redactor);

#endif  // VRKT_CUT_CUT_LOG_H_
