// Cuts any log, as it is and redacted. The first byte of the input selects the first record.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cut_log.h"
#include "expect.h"
#include "log/log_writer.h"
#include "support/decode_in_process.h"

namespace {

// The records from a number on, each with its version and clock reference before it. A part can
// have an Unload that the log does not have, so these are left out.
std::vector<std::string> ListRecords(const std::string& log, unsigned first = 0) {
  std::vector<std::string> records;
  LogReader reader(ReadFrom(log));
  LogItem item;
  for (unsigned number = 1; reader.Read(item); ++number) {
    if (!item.HasLine()) --number;
    if (!item.HasLine() || number < first || item.IsEvent(DriverEventType::kUnload)) continue;
    // A part that begins with the Load of a reload has the later version from there on.
    const bool is_load = item.IsEvent(DriverEventType::kLoad);
    std::string& record = records.emplace_back();
    AppendWords({is_load ? 0 : reader.version().version, item.time.timeBase}, record);
    AppendItem(item, record);
  }
  return records;
}

std::string Cut(const std::string& log, unsigned first, bool redact) {
  std::string part;
  Selection selection{.from = ParsePlace(std::to_string(first))};
  const auto write = [&part](std::string_view bytes) {
    part += bytes;
    return 0;
  };
  std::optional<Redactor> redactor;
  if (redact) redactor.emplace(false);
  const CutResult result = CutLog(ReadFrom(log), write, selection, std::move(redactor));
  Expect(result.is_empty == part.empty(), "an empty part", log);
  return part;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const unsigned first = data[0];
  const std::string log(data + 1, data + size);
  const std::vector<std::string> records = ListRecords(log, first);
  const std::string part = Cut(log, first, false);
  Expect(ListRecords(part) == records, "another part", log);
  Expect(Cut(part, 0, false) == part, "the part of a part", log);

  const std::string redacted = Cut(log, first, true);
  Expect(redacted.size() == part.size(), "another length", log);
  Expect(Cut(redacted, 0, true) == redacted, "redacted twice", log);
  // Everything up to the id of a signal is kept.
  const std::vector<std::string> redacted_records = ListRecords(redacted);
  Expect(redacted_records.size() == records.size(), "another number of records", log);
  for (std::size_t i = 0; i < records.size(); ++i) {
    constexpr std::size_t kIdEnd = 8 + 16 + 2;
    Expect(redacted_records[i].substr(0, kIdEnd) == records[i].substr(0, kIdEnd), "another record",
           log);
  }
  return 0;
}
