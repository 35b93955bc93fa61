#ifndef VRKT_TESTS_SUPPORT_CAPTURE_STREAM_H_
#define VRKT_TESTS_SUPPORT_CAPTURE_STREAM_H_

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

// Returns what `print` writes to a stream of this process. It replaces the stream by one
// in memory, which only glibc allows for standard streams. So tests and fuzzers need
// glibc.
inline std::string CaptureStream(std::FILE*& stream, const std::function<void()>& print) {
  char* text = nullptr;
  std::size_t size = 0;
  std::FILE* const kept = stream;
  stream = open_memstream(&text, &size);
  if (stream == nullptr) std::abort();
  print();
  std::fclose(stream);
  stream = kept;
  std::string captured(text, size);
  std::free(text);
  return captured;
}

inline std::string CaptureStandardOutput(const std::function<void()>& print) {
  return CaptureStream(stdout, print);
}

inline std::string CaptureStandardError(const std::function<void()>& print) {
  return CaptureStream(stderr, print);
}

#endif  // VRKT_TESTS_SUPPORT_CAPTURE_STREAM_H_
