// The program of live captures, as a shell runs it. plugin_test.cc runs it in tshark.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "files.h"
#include "log_builder.h"
#include "session_log.h"
#include "support/process.h"

namespace {

std::string CaptureCommand(const std::string& fifo, const std::string& command) {
  return ShellCommand(VRKT_EXTCAP) + " --capture --extcap-interface udi --fifo " + fifo +
         " --command " + QuoteForShell(command);
}

bool GroupEndsSoon(pid_t leader) {
  for (int i = 0; i < 1000 && kill(-leader, 0) == 0; ++i) poll(nullptr, 0, 10);
  return kill(-leader, 0) != 0;
}

}  // namespace

// The log comes from standard input here.
TEST(Extcap, EachFrameAppearsBeforeTheNextRecord) {
  const TemporaryDirectory directory;
  const std::string path = directory.path() + "/log";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  std::FILE* const capture =
      popen((CaptureCommand("-", "-") + " <" + QuoteForShell(path)).c_str(), "r");
  const int log = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  const auto send = [log](const Log& part) {
    return write(log, part.bytes().data(), part.bytes().size()) > 0;
  };
  const auto expect_words = [capture](std::initializer_list<std::uint32_t> values) {
    const std::string words = Log().Words(values).bytes();
    EXPECT_EQ(ReadUntil(fileno(capture), words), words);
  };
  expect_words({0xA1B2C3D4, 0x40002, 0, 0, 262144, 148});
  ASSERT_TRUE(send(Log().Header("14.5.12").TimeRef(1000, 77, 1500ms)));
  expect_words(
      {1001, 500000, 40, 40, 1, 0x0E05000C, 1000, 0, kDriverEventMagic, 1500, 0, 8, 1000, 77});
  // The clock reference makes no frame. The seconds of a negative time are rounded down.
  ASSERT_TRUE(send(Log().TimeRef(2000).Record(-1ms, "abcd", 9)));
  expect_words({1999, 999000, 36, 36, 1, 0x0E05000C, 2000, 0, kSignalRecordMagic, 0xFFFFFFFF, 4, 9,
                0x64636261});
  close(log);
  EXPECT_EQ(pclose(capture), 0);
}

TEST(Extcap, StoppingEndsTheCommandWhileTheLogIsQuiet) {
  // In a shell that reads the fifo. The main shell, which is Wireshark here, starts the capture.
  for (const std::string stop :
       {"true", "kill $(cat capture); timeout 30 cat", "kill -9 $$; timeout 30 cat"}) {
    SCOPED_TRACE(stop);
    const TemporaryDirectory directory;
    WriteFile(directory.path() + "/log", Log().Header("14.5.12").Load(0ms).bytes());
    // The command has two processes.
    const std::string capture =
        CaptureCommand("fifo", "echo $$ >command; cat log; sleep 100 | sleep 100; true");
    const std::string script = "cd " + directory.path() + " && mkfifo fifo\n{ head -c 72; " + stop +
                               "; } <fifo >/dev/null &\nsh -c " +
                               QuoteForShell("echo $$ >capture; exec " + capture);
    const int status =
        std::system(("timeout 20 sh -c " + QuoteForShell(script) + " 2>/dev/null").c_str());
    EXPECT_TRUE(WEXITSTATUS(status) == 0 || WEXITSTATUS(status) == 137) << status;
    const int command = std::atoi(ReadFile(directory.path() + "/command").c_str());
    EXPECT_TRUE(command > 0 && GroupEndsSoon(command)) << command;
  }
}

TEST(Extcap, ReportsWhyTheLogEnded) {
  const TemporaryDirectory directory;
  WriteFile(directory.path() + "/log", SessionLog().bytes());
  WriteFile(directory.path() + "/adb", "#!/bin/sh\necho \"$#|$1|$2|$3|$4|\"\n");
  ASSERT_EQ(chmod((directory.path() + "/adb").c_str(), 0755), 0);
  const struct {
    const char* command;
    const char* report;  // its start
    const char* options = "";
  } kCases[] = {
      {"cat log", ""},
      {"cat log; exec >&-; sleep 100", ""},  // is ended, which is no failure
      {"nosuch", "The command 'nosuch' was not found: "},
      {"cat log; echo no >&2; echo 'device lost' >&2; exit 3",
       "The command 'cat log; echo no >&2; echo 'device lost' >&2; exit 3' ended with status "
       "3: device lost\n"},
      {"kill -9 $$", "The command 'kill -9 $$' was ended by signal 9.\n"},
      {"true", "The output of 'true' is empty.\n"},
      {"printf abc", "The output of 'printf abc' is no log: abc\n"},
      {"head -c 8 log", "The output of 'head -c 8 log' ends within the header of the log.\n"},
      {"cat /dev/zero",
       "The output of 'cat /dev/zero' is no log that can be read: Log File Format Version 0 "
       "detected. Not Supported.\n"},
      {"head -c 999 log", "The log is cut.\n"},
      {"cat log log; sleep 100",
       "The log is damaged: Bad Magic number detected in log. magic:0x1289ABEF\n"},
      {"cat 'a  b'",
       "The output of 'adb -s x y exec-out cat 'a  b'' is no log: 4|-s|x y|exec-out|cat 'a  "
       "b'|",
       " --serial 'x y'"},
      {"-", "Standard input cannot be read.\n", " </"},
      {"cat log", "Cannot write: ", " >/dev/full"},
      {"cat log", "There is no interface 'eth0'.\n", " --extcap-interface eth0"},
      {"cat log", "A UDI log has no capture filter. Use a display filter.\n",
       " --extcap-capture-filter tcp"},
  };
  for (const auto& [command, report, options] : kCases) {
    SCOPED_TRACE(command);
    const std::string line = "cd " + directory.path() + " && PATH=.:$PATH && " +
                             CaptureCommand("-", command) + " 2>report >frames" + options;
    const int status = std::system(line.c_str());
    const std::string expected = *report == '\0' ? "" : std::string("udi_extcap: ") + report;
    EXPECT_EQ(ReadFile(directory.path() + "/report").substr(0, expected.size()), expected);
    EXPECT_EQ(status == 0, expected.empty());
  }
}
