// The tool on streams that are live, fail, or lie about what follows.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "support/log_builder.h"
#include "support/process.h"

namespace {

// Reads until `text` has arrived, or nothing has for ten seconds.
std::string ReadUntil(int descriptor, const std::string& text) {
  std::string seen;
  while (seen.find(text) == std::string::npos) {
    pollfd ready{descriptor, POLLIN, 0};
    char buffer[4096];
    if (poll(&ready, 1, 10000) <= 0) break;
    const ssize_t count = read(descriptor, buffer, sizeof buffer);
    if (count <= 0) break;
    seen.append(buffer, static_cast<std::size_t>(count));
  }
  return seen;
}

TEST(Streams, ALiveRecordShowsOnATerminalOnceItsLastByteIsThere) {
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_GE(terminal, 0);
  ASSERT_EQ(grantpt(terminal), 0);
  ASSERT_EQ(unlockpt(terminal), 0);
  const int line = open(ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_GE(line, 0);
  termios raw{};
  tcgetattr(line, &raw);
  raw.c_oflag &= ~static_cast<tcflag_t>(OPOST);
  tcsetattr(line, TCSANOW, &raw);
  int input[2];
  ASSERT_EQ(pipe2(input, O_CLOEXEC), 0);
  const TemporaryDirectory directory;
  const int process = StartTool({.directory = directory.path()}, input[0], line, line);
  close(input[0]);

  const auto send = [&](const std::string& bytes) {
    ASSERT_EQ(write(input[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  };
  send(Log().Header("14.5.12").bytes());
  EXPECT_NE(ReadUntil(terminal, "detected\n").find("14.5.12"), std::string::npos);
  const std::string record = Log().Signal(5ms, Fapi(0x1100).PadTo(32)).bytes();
  for (int i = 0; i < 3; ++i) {
    for (const char byte : record) send(std::string(1, byte));
    const std::string shown = ReadUntil(terminal, "\n");
    EXPECT_TRUE(shown.starts_with("1970/01/01-00:00:00.005 ma_unitdata_cfm vif:0 ")) << shown;
    EXPECT_TRUE(shown.ends_with(" spare_3:0\n")) << shown;
  }
  close(input[1]);
  EXPECT_EQ(WaitForTool(process), 0);
  close(line);
  close(terminal);
}

TEST(Streams, AReadErrorIsNoEnd) {
  const ToolResult result = RunTool({.arguments = {"."}});
  EXPECT_EQ(result.out, kBanner);
  EXPECT_EQ(result.err, "decode: QenWifiDriverLogReadUint32() not enough bytes read\n");
  EXPECT_EQ(result.status, 255);
}

TEST(Streams, AFullDiskChangesNothing) {
  std::string input = Log().Header("14.5.12").bytes();
  for (int i = 0; i < 1000; ++i) input += Log().Signal(0ms, Fapi(0x1100).PadTo(32)).bytes();
  const TemporaryDirectory directory;
  ASSERT_EQ(symlink("/dev/full", (directory.path() + "/udi_fapi.pcap").c_str()), 0);
  const ToolResult result = RunTool({.arguments = {"stdin", "--pcap"},
                                     .input = input,
                                     .directory = directory.path(),
                                     .output_path = "/dev/full"});
  EXPECT_EQ(result.err, "decode: Log File Hip Version 14.5.12 detected\n");
  EXPECT_EQ(result.status, 0);
}

TEST(Streams, ALengthThatLiesCostsNothing) {
  const std::string cut = Log()
                              .Header("14.5.12")
                              .Load(0ms)
                              .Words({Log::kSignalMagic, 0, 0xFFFFFFFF, 10})
                              .Bytes(std::string(100, 'x'))
                              .bytes();
  const std::string out = std::string(kBanner) + "1970/01/01-00:00:00.000 Driver: Loaded\n";
  if constexpr (sizeof(void*) > 4) {
    const ToolResult result = RunTool({.input = cut});
    EXPECT_EQ(result.out, out);
    EXPECT_EQ(result.err, "decode: Log File Hip Version 14.5.12 detected\n");
    EXPECT_EQ(result.status, 0);
  }
#if !defined(VRKT_SANITIZED) && !defined(VRKT_TEST_EMULATOR)
  // The sanitizers and emulators take more address space than this themselves.
  const ToolResult result = RunTool({.input = cut, .before_exec = [] {
                                       const rlimit limit{300 << 20, 300 << 20};
                                       setrlimit(RLIMIT_AS, &limit);
                                     }});
  EXPECT_EQ(result.out, out);
  EXPECT_EQ(result.err,
            "decode: Log File Hip Version 14.5.12 detected\n"
            "decode: malloc(logData.data) of 4294967295 bytes Failed\n");
  EXPECT_EQ(result.status, 0);
#endif
}

}  // namespace
