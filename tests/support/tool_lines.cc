#include "support/tool_lines.h"

#include <string_view>

#include "support/decode_in_process.h"
#include "support/process.h"

namespace {

// As "2026/06/01-07:00:02.181 " does. No name has these characters there.
bool StartsWithStamp(std::string_view text) {
  return text.size() >= 24 && text[4] == '/' && text[13] == ':' && text[23] == ' ';
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
