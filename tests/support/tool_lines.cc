#include "support/tool_lines.h"

#include <string_view>

#include "decode_in_process.h"
#include "support/process.h"

namespace {

// As in "2026/06/01-07:00:02.181 ", at the start of the text.
bool StartsWithStamp(std::string_view text) {
  constexpr std::string_view kForm = "dddd/dd/dd-dd:dd:dd.ddd ";
  if (text.size() < kForm.size()) return false;
  for (std::size_t i = 0; i < kForm.size(); ++i) {
    const bool is_digit = text[i] >= '0' && text[i] <= '9';
    if (kForm[i] == 'd' ? !is_digit : text[i] != kForm[i]) return false;
  }
  return true;
}

}  // namespace

Lines ToolLines(const std::string& log, bool with_stamps) {
  constexpr std::size_t kStampSize = 24;
  const DecodedLog result = DecodeInProcess(log);
  Lines lines;
  for (std::string_view line : SplitLines(result.out.substr(kBanner.size()))) {
    while (StartsWithStamp(line)) {
      const std::string_view stamp = line.substr(0, kStampSize);
      line.remove_prefix(kStampSize);
      const std::string_view rest = StartsWithStamp(line) ? std::string_view() : line;
      lines.push_back(with_stamps ? std::string(stamp) + std::string(rest) : std::string(rest));
    }
  }
  return lines;
}
