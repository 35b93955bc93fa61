#include "log/log_text.h"

#include <cstdint>
#include <cstdio>

namespace {

// `format` has one conversion.
template <typename Value>
std::string Format(const char* format, Value value) {
  char text[128];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

}  // namespace

std::string DescribeLogEnd(const LogEnd& end) {
  const auto number = static_cast<std::int32_t>(end.value);
  const auto word = static_cast<unsigned>(end.value);
  switch (end.kind) {
    case LogEnd::Kind::kComplete:
    case LogEnd::Kind::kCut:
      return {};
    case LogEnd::Kind::kWordUnreadable:
      return "QenWifiDriverLogReadUint32() not enough bytes read";
    case LogEnd::Kind::kPayloadUnreadable:
      return "fread(logData.data) not enough bytes read";
    case LogEnd::Kind::kNoMemory:
      return Format("malloc(logData.data) of %u bytes Failed", word);
    case LogEnd::Kind::kBadMagic:
      return Format("Bad Magic number detected in log. magic:0x%.8X", word);
    case LogEnd::Kind::kBadEventSize:
      return "size(" + std::to_string(number) + std::string(end.event->wrong_size);
    case LogEnd::Kind::kOldFormat:
      return Format("Log File Format Version %d detected. Not Supported.", number);
    case LogEnd::Kind::kBadHeaderMagic:
      return Format("Bad Magic number detected in log file header. magic:0x%.8X", word);
    case LogEnd::Kind::kNewFormat:
      return Format("Incompatible version(%d) detected in log file header.\n", number) +
             Format("This decoder supports version %d and below.",
                    static_cast<int>(kLogFormatVersion));
    case LogEnd::Kind::kUnknownHipVersion: {
      const std::string dotted = std::to_string(word >> 24U) + '.' +
                                 std::to_string(word >> 16U & 0xFFU) + '.' +
                                 std::to_string(word & 0xFFFFU);
      return "Incompatible hip version(" + dotted + ") detected in log file header.";
    }
  }
  return {};
}
