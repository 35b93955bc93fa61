#include "support/decode_in_process.h"

#include <csetjmp>
#include <cstdio>

#include "intake/run_control.h"
#include "support/capture_stream.h"

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
  const char* const kArguments[] = {"vrkt_wlan_udi_log_decode", "stdin", nullptr};
  exit_is_caught = true;
  if (setjmp(exit_called) == 0) exit_status = RunLogDecoder(2, kArguments);
  exit_is_caught = false;
  return exit_status & 0xFF;
}

}  // namespace

ToolResult DecodeInProcess(std::string log) {
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
