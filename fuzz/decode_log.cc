// Runs the whole tool on any log. The first byte of the input selects whether it writes a
// capture file, the rest is the log.

#include <cstdint>
#include <string>

#include "expect.h"
#include "log/log_reader.h"
#include "support/decode_in_process.h"

namespace {

// Returns the number of lines that begin with a stamp.
std::size_t CountItems(const std::string& log, std::uint64_t& position) {
  std::size_t count = 0;
  LogReader reader(ReadFrom(log));
  LogItem item;
  while (reader.Read(item)) count += item.HasLine() ? 1 : 0;
  position = reader.position().offset;
  return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string log(data + 1, data + size);
  const DecodedLog result = DecodeInProcess(log, data[0] % 2 == 1);
  Expect(result.status == 0 || result.status == 255, "a status that the tool does not have",
         result.err);
  Expect(result.out.starts_with("Decode Tool version:"), "no banner", result.out);
  std::uint64_t position = 0;
  const std::size_t items = CountItems(log, position);
  Expect(position <= log.size(), "more bytes than the log has", result.err);
  constexpr std::size_t kStampLength = 24;
  Expect(result.out.size() >= items * kStampLength, "too few lines", result.out);
  return 0;
}
