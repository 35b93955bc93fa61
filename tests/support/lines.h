#ifndef VRKT_TESTS_SUPPORT_LINES_H_
#define VRKT_TESTS_SUPPORT_LINES_H_

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

using Lines = std::vector<std::string>;

inline Lines SplitLines(const std::string& text) {
  Lines lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// Returns the first line that differs, with its number and both wordings, or nothing if
// the lines are equal. A whole text is too long for a test's report.
inline std::string FindDifference(const Lines& actual, const Lines& expected) {
  const auto [is, wanted] =
      std::mismatch(actual.begin(), actual.end(), expected.begin(), expected.end());
  if (is == actual.end() && wanted == expected.end()) return {};
  return "line " + std::to_string(is - actual.begin() + 1) +
         "\n  is:       " + (is == actual.end() ? "(no line)" : *is) +
         "\n  expected: " + (wanted == expected.end() ? "(no line)" : *wanted);
}

#endif  // VRKT_TESTS_SUPPORT_LINES_H_
