// The tool with live streams, failing streams and wrong lengths.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/resource.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <iterator>
#include <string>

#include "log_builder.h"
#include "support/process.h"

namespace {

const std::string kLoaded = kBanner + "1970/01/01-00:00:00.000 Driver: Loaded\n";

// A terminal that does not change the output.
struct Terminal {
  Terminal() {
    termios raw{};
    cfmakeraw(&raw);
    EXPECT_EQ(openpty(&controller, &line, nullptr, &raw, nullptr), 0);
  }
  int controller = -1;
  int line = -1;
};

TEST(Streams, TerminalShowsEachCompleteRecord) {
  const Terminal terminal;
  int input[2];
  ASSERT_EQ(pipe2(input, O_CLOEXEC), 0);
  const TemporaryDirectory directory;
  const int process = StartTool({.directory = directory.path(), .before_exec = [&] {
                                   dup2(input[0], STDIN_FILENO);
                                   dup2(terminal.line, STDOUT_FILENO);
                                   dup2(terminal.line, STDERR_FILENO);
                                 }});
  close(input[0]);
  const auto send = [&](const std::string& bytes) {
    ASSERT_EQ(write(input[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  };
  send(Log().Header("14.5.12").bytes());
  EXPECT_NE(ReadUntil(terminal.controller, "detected\n").find("14.5.12"), std::string::npos);
  const std::string record = Log().Signal(5ms, Fapi(0x1100).PadTo(32)).bytes();
  for (int i = 0; i < 3; ++i) {
    for (const char byte : record) send(std::string(1, byte));
    const std::string shown = ReadUntil(terminal.controller, "\n");
    EXPECT_TRUE(shown.starts_with("1970/01/01-00:00:00.005 ma_unitdata_cfm vif:0 ")) << shown;
    EXPECT_TRUE(shown.ends_with(" spare_3:0\n")) << shown;
  }
  close(input[1]);
  EXPECT_EQ(WaitForTool(process), 0);
  close(terminal.line);
  close(terminal.controller);
}

// After the other end of a terminal is closed, every read from it fails.
TEST(Streams, ReadErrorAfterARecord) {
  const Log log = Log().Header("14.5.12").Load(0ms);
  const struct {
    std::string bytes;
    std::string err;
    int status;
  } kCases[] = {
      {log.bytes() + "ab", "decode: QenWifiDriverLogReadUint32() not enough bytes read\n", 255},
      {Log(log).Words({kSignalRecordMagic, 0, 100, 100}).bytes() + "cut off",
       "decode: fread(logData.data) not enough bytes read\n", 0},
  };
  for (const auto& c : kCases) {
    const Terminal terminal;
    ASSERT_EQ(write(terminal.line, c.bytes.data(), c.bytes.size()), std::ssize(c.bytes));
    close(terminal.line);
    EXPECT_EQ(RunTool({.before_exec = [&] { dup2(terminal.controller, STDIN_FILENO); }}),
              (ToolResult{c.status, kLoaded, kDetected + c.err}));
    close(terminal.controller);
  }
}

// A file that the tool opens must not get the descriptor of a closed stream.
TEST(Streams, ClosedStandardStreams) {
  const std::string log = Log().Header("14.5.12").Signal(0ms, Fapi(0x1100).PadTo(32)).bytes();
  for (const int closed : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    const bool reads_nothing = closed == STDIN_FILENO;
    const ToolResult result =
        RunTool({.arguments = {"stdin", "--pcap"}, .input = log, .before_exec = [closed] {
                   close(closed);
                 }});
    EXPECT_EQ(result.status, reads_nothing ? 255 : 0) << closed;
    EXPECT_EQ(result.pcap.size(), reads_nothing ? 0U : 24U + 16U + 32U) << closed;
    EXPECT_EQ(result.err, closed == STDERR_FILENO ? ""
                          : reads_nothing
                              ? "decode: QenWifiDriverLogReadUint32() not enough bytes read\n"
                              : kDetected);
  }
}

TEST(Streams, ClosedOutputPipeEndsTheTool) {
  int output[2];
  ASSERT_EQ(pipe2(output, O_CLOEXEC), 0);
  close(output[0]);
  const ToolResult result = RunTool({.before_exec = [&] { dup2(output[1], STDOUT_FILENO); }});
  close(output[1]);
  EXPECT_EQ(result.status, 128 + SIGPIPE);
}

TEST(Streams, FullDiskIsIgnored) {
  std::string input = Log().Header("14.5.12").bytes();
  for (int i = 0; i < 1000; ++i) input += Log().Signal(0ms, Fapi(0x1100).PadTo(32)).bytes();
  const TemporaryDirectory directory;
  ASSERT_EQ(symlink("/dev/full", (directory.path() + "/udi_fapi.pcap").c_str()), 0);
  const ToolResult result = RunTool(
      {.arguments = {"stdin", "--pcap"},
       .input = input,
       .directory = directory.path(),
       .before_exec = [] { dup2(open("/dev/full", O_WRONLY | O_CLOEXEC), STDOUT_FILENO); }});
  EXPECT_EQ(result, (ToolResult{0, "", kDetected}));
}

TEST(Streams, OverstatedLength) {
  const Log cut = Log()
                      .Header("14.5.12")
                      .Load(0ms)
                      .Words({kSignalRecordMagic, 0, 0xFFFFFFFF, 10})
                      .Bytes(std::string(100, 'x'));
  if constexpr (sizeof(void*) > 4) {
    EXPECT_EQ(RunTool({.input = cut.bytes()}), (ToolResult{0, kLoaded, kDetected}));
  }
#if !defined(VRKT_SANITIZED) && !defined(VRKT_TEST_EMULATOR)
  // Sanitizers and emulators need more address space than this limit.
  const auto limit_memory = [] {
    const rlimit limit{300 << 20, 300 << 20};
    setrlimit(RLIMIT_AS, &limit);
  };
  EXPECT_EQ(RunTool({.input = cut.bytes(), .before_exec = limit_memory}),
            (ToolResult{0, kLoaded,
                        kDetected + "decode: malloc(logData.data) of 4294967295 bytes Failed\n"}));
#endif
}

}  // namespace
