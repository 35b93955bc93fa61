#ifndef VRKT_TESTS_SUPPORT_CAPTURE_STDOUT_H_
#define VRKT_TESTS_SUPPORT_CAPTURE_STDOUT_H_

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

// What `print` writes to this process's standard output. glibc lets the stream be
// replaced, here by one in memory; tests and fuzzers need glibc.
inline std::string CaptureStandardOutput(const std::function<void()>& print) {
  char* text = nullptr;
  std::size_t size = 0;
  std::FILE* const kept = stdout;
  stdout = open_memstream(&text, &size);
  if (stdout == nullptr) std::abort();
  print();
  std::fclose(stdout);
  stdout = kept;
  std::string captured(text, size);
  std::free(text);
  return captured;
}

#endif  // VRKT_TESTS_SUPPORT_CAPTURE_STDOUT_H_
