#ifndef VRKT_TESTS_SUPPORT_LINES_H_
#define VRKT_TESTS_SUPPORT_LINES_H_

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

using Lines = std::vector<std::string>;

inline Lines SplitLines(std::string_view text) {
  Lines lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return lines;
}

// Returns the first line that differs, with its number and both wordings, or nothing if
// the lines are equal. A whole text is too long for a test's report.
inline std::string FindDifference(const Lines& actual, const Lines& expected) {
  const std::string kNone = "(no line)";
  const std::size_t count = std::max(actual.size(), expected.size());
  for (std::size_t i = 0; i < count; ++i) {
    const std::string& line = i < actual.size() ? actual[i] : kNone;
    const std::string& wanted = i < expected.size() ? expected[i] : kNone;
    if (i < actual.size() && i < expected.size() && line == wanted) continue;
    return "line " + std::to_string(i + 1) + "\n  is:       " + line + "\n  expected: " + wanted;
  }
  return {};
}

#endif  // VRKT_TESTS_SUPPORT_LINES_H_
