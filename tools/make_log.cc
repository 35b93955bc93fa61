// Writes the log of a workload to standard output. Implements `./dev make-log`.
//
// usage: make_log WORKLOAD RECORDS

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <string_view>

#include "workloads.h"

namespace {

int PrintUsage() {
  std::fprintf(stderr,
               "usage: ./dev make-log WORKLOAD RECORDS >FILE\n\n"
               "RECORDS is from 1 to 4294967295. The workloads:\n");
  for (const std::string_view name : kWorkloads) {
    std::fprintf(stderr, "  %.*s\n", static_cast<int>(name.size()), name.data());
  }
  return 2;
}

// Returns 0 if the text is no number or a larger one than an std::uint32_t.
std::uint32_t ParseCount(std::string_view text) {
  std::uint32_t count = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, count);
  return error == std::errc() && rest == end ? count : 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3 || std::ranges::find(kWorkloads, argv[1]) == std::end(kWorkloads)) {
    return PrintUsage();
  }
  const std::uint32_t records = ParseCount(argv[2]);
  if (records == 0) return PrintUsage();
  if (!WriteWorkload(argv[1], records, stdout)) {
    std::perror("make_log: standard output");
    return 1;
  }
}
