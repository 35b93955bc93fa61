#ifndef VRKT_FUZZ_CAPTURE_STDOUT_H_
#define VRKT_FUZZ_CAPTURE_STDOUT_H_

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

// What `print` writes to standard output, which becomes a stream in memory for
// the process's life. (glibc lets the stream be replaced; the fuzzers run
// nowhere else.)
inline std::string CaptureStdout(const std::function<void()>& print) {
  static char* text = nullptr;
  static std::size_t size = 0;
  static std::FILE* const memory = open_memstream(&text, &size);
  stdout = memory;
  std::rewind(memory);
  print();
  std::fflush(memory);
  return {text, static_cast<std::size_t>(std::ftell(memory))};
}

// Ends the fuzzer's run, for it to keep the input.
inline void Expect(bool holds, const char* what, const std::string& text) {
  if (holds) return;
  std::fprintf(stderr, "%s: \"%s\"\n", what, text.c_str());
  std::abort();
}

#endif  // VRKT_FUZZ_CAPTURE_STDOUT_H_
