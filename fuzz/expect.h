#ifndef VRKT_FUZZ_EXPECT_H_
#define VRKT_FUZZ_EXPECT_H_

#include <cstdio>
#include <cstdlib>
#include <string>

// If `holds` is false, prints `what` and `text` and aborts, so the fuzzer keeps the input.
inline void Expect(bool holds, const char* what, const std::string& text) {
  if (holds) return;
  std::fprintf(stderr, "%s: \"%s\"\n", what, text.c_str());
  std::abort();
}

#endif  // VRKT_FUZZ_EXPECT_H_
