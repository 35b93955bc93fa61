#include "intake/log_stream.h"

#include <gtest/gtest.h>

#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "intake/run_control.h"
#include "session_log.h"
#include "support/capture_stream.h"
#include "support/process.h"

namespace {

// The tool ends its process by exit. The linker redirects that call to __wrap_exit, so
// a test can run the tool a few thousand times without starting a process. __wrap_exit
// jumps and does not throw, because exit is declared noexcept.
bool exit_is_caught = false;
int exit_status = 0;
std::jmp_buf exit_called;

}  // namespace

extern "C" {
[[noreturn]] void __real_exit(int status);
[[noreturn]] void __wrap_exit(int status);
void __wrap_exit(int status) {
  if (!exit_is_caught) __real_exit(status);
  exit_status = status;
  std::longjmp(exit_called, 1);
}
}

namespace {

int RunUntilExit() {
  const char* const kArguments[] = {"decode", "stdin", nullptr};
  exit_is_caught = true;
  if (setjmp(exit_called) == 0) exit_status = RunLogDecoder(2, kArguments);
  exit_is_caught = false;
  return exit_status & 0xFF;
}

// Runs the tool on standard input. The result has no `pcap`.
ToolResult Decode(std::string log) {
  ToolResult result;
  std::FILE* const kept_input = stdin;
  // fmemopen rejects an empty buffer.
  stdin = log.empty() ? std::fopen("/dev/null", "r") : fmemopen(log.data(), log.size(), "r");
  result.err = CaptureStandardError(
      [&] { result.out = CaptureStandardOutput([&] { result.status = RunUntilExit(); }); });
  std::fclose(stdin);
  stdin = kept_input;
  return result;
}

// A truncated log decodes up to its last complete record, without a report.
TEST(LogStream, CutAtEachByte) {
  ::setenv("TZ", "UTC0", 1);
  const Log log = SessionLog();
  const std::string& bytes = log.bytes();
  const ToolResult whole = Decode(bytes);
  ToolResult expected{.status = 0, .out = std::string(kBanner)};
  auto next_end = log.ends().begin();
  for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
    const ToolResult result = Decode(bytes.substr(0, cut));
    if (next_end != log.ends().end() && cut == *next_end) {
      ++next_end;
      // Each header and record of this log prints something.
      EXPECT_GT(result.out.size() + result.err.size(), expected.out.size() + expected.err.size());
      EXPECT_TRUE(whole.out.starts_with(result.out)) << result.out;
      EXPECT_TRUE(whole.err.starts_with(result.err)) << result.err;
      expected = result;
    }
    ASSERT_EQ(result.status, 0) << "cut at byte " << cut;
    ASSERT_EQ(result.out, expected.out) << "cut at byte " << cut;
    ASSERT_EQ(result.err, expected.err) << "cut at byte " << cut;
  }
  EXPECT_EQ(next_end, log.ends().end());
  EXPECT_EQ(expected.out, ReadFile(VRKT_SOURCE "/examples/session.txt"));
}

}  // namespace
