#include "log/log_text.h"

#include <cstdio>

std::string GetLogEndPattern(const LogEnd& end) {
  static_assert(kLogFormatVersion == 6, "the version in a text below");
  switch (end.kind) {
    case LogEnd::Kind::kComplete:
    case LogEnd::Kind::kCut:
      return {};
    case LogEnd::Kind::kWordUnreadable:
      return "QenWifiDriverLogReadUint32() not enough bytes read";
    case LogEnd::Kind::kPayloadUnreadable:
      return "fread(logData.data) not enough bytes read";
    case LogEnd::Kind::kNoMemory:
      return "malloc(logData.data) of %u bytes Failed";
    case LogEnd::Kind::kBadMagic:
      return "Bad Magic number detected in log. magic:0x%.8X";
    case LogEnd::Kind::kBadEventSize:
      return "size(%d" + std::string(end.event->wrong_size);
    case LogEnd::Kind::kOldFormat:
      return "Log File Format Version %d detected. Not Supported.";
    case LogEnd::Kind::kBadHeaderMagic:
      return "Bad Magic number detected in log file header. magic:0x%.8X";
    case LogEnd::Kind::kNewFormat:
      return "Incompatible version(%d) detected in log file header.\n"
             "This decoder supports version 6 and below.";
    case LogEnd::Kind::kUnknownHipVersion:
      return "Incompatible hip version(%u.%u.%u) detected in log file header.";
  }
  return {};
}

std::string DescribeLogEnd(const LogEnd& end) {
  const std::string pattern = GetLogEndPattern(end);
  const auto word = static_cast<unsigned>(end.value);
  char text[160];
  if (end.kind == LogEnd::Kind::kUnknownHipVersion) {
    std::snprintf(text, sizeof text, pattern.c_str(), word >> 24U, word >> 16U & 0xFFU,
                  word & 0xFFFFU);
  } else {
    std::snprintf(text, sizeof text, pattern.c_str(), word);
  }
  return text;
}
