// Runs the built program as a user does.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <string>

#include "files.h"
#include "session_log.h"
#include "support/process.h"

namespace {

TEST(Cut, ReportsAndExitStatuses) {
  const TemporaryDirectory directory;
  const std::string session = SessionLog().bytes();
  WriteFile(directory.path() + "/log", session);
  WriteFile(directory.path() + "/cut", session.substr(0, 999));
  WriteFile(directory.path() + "/damaged", session + "12345678901234567890");
  WriteFile(directory.path() + "/empty", "");
  WriteFile(directory.path() + "/text", "this is no log");
  const std::string kNothing =
      "log: nothing selected of 76 records, from 2026/06/01-07:00:00.000 to "
      "2026/06/01-07:01:06.500\n";
  const std::string kDamage = "damaged: Bad Magic number detected in log. magic:0x34333231\n";
  const struct {
    const char* arguments;
    int status;
    std::string report;  // without the name
  } kCases[] = {
      {"log", 0, ""},
      {"<log", 0, ""},
      {"--redact --keep-addresses --from 2 --to 07:00 - <log", 0, ""},
      {"--from 08: log", 1, kNothing},
      {"--from 99 --to 2 log", 1, kNothing},
      {"--records empty log", 1, kNothing},
      {"empty", 1, "empty: nothing selected of 0 records\n"},
      {"cut", 2, "cut: cut\n"},
      {"<cut", 2, "standard input: cut\n"},
      {"damaged", 2, kDamage},
      {"--to 2 damaged", 0, ""},
      {"--to 2026/06/01 damaged", 2, kDamage},
      {"text", 2, "text: Bad Magic number detected in log file header. magic:0x73696874\n"},
      {".", 2, ".: QenWifiDriverLogReadUint32() not enough bytes read\n"},
      {"nosuch", 1, "nosuch: No such file or directory\n"},
      {"log log", 1, "more than one log; try --help\n"},
      {"--from then log", 1, "not a record number, stamp or time: then\n"},
      {"--keep-addresses log", 1, "--keep-addresses needs --redact\n"},
      {"--records - - <log", 1, "standard input cannot be both the log and its record numbers\n"},
      {"--records - log <log", 1, "-: not a list of record numbers in ascending order\n"},
      {"--records nosuch log", 1, "nosuch: No such file or directory\n"},
      {"log >/dev/full", 1, "cannot write the part: No space left on device\n"},
      {"log >&-", 1, "cannot write the part: Bad file descriptor\n"},
      {"log >>log", 1, "log: is also the output\n"},
      {"- <log >>log", 1, "standard input: is also the output\n"},
  };
  const std::string program = ShellCommand(VRKT_CUT);
  const auto run = [&](const std::string& command) {
    return WEXITSTATUS(std::system(
        ("cd " + directory.path() + " && export TZ=UTC0; exec 2>report >part; " + command)
            .c_str()));
  };
  for (const auto& [arguments, status, report] : kCases) {
    SCOPED_TRACE(arguments);
    EXPECT_EQ(run(program + " " + arguments), status);
    const std::string expected = report.empty() ? "" : "vrkt_wlan_udi_log_cut: " + report;
    EXPECT_EQ(ReadFile(directory.path() + "/report"), expected);
    EXPECT_EQ(ReadFile(directory.path() + "/log"), session);
  }
  // A reader that is gone.
  EXPECT_EQ(run("{ sleep 0.3; " + program + " log; echo $? >status; } | :"), 0);
  EXPECT_EQ(ReadFile(directory.path() + "/status"), "1\n");
  EXPECT_EQ(ReadFile(directory.path() + "/report"),
            "vrkt_wlan_udi_log_cut: cannot write the part: Broken pipe\n");
  EXPECT_EQ(run(program + " --version"), 0);
  EXPECT_EQ(ReadFile(directory.path() + "/part"), "vrkt_wlan_udi_log_cut " VRKT_VERSION "\n");
  EXPECT_EQ(run(program + " --help"), 0);
  EXPECT_NE(ReadFile(directory.path() + "/part").find("--records FILE"), std::string::npos);
  if (!IsInstalled("script")) GTEST_SKIP() << "script (of bsdutils) is not installed";
  EXPECT_EQ(run("script -qec " + QuoteForShell(program + " log") + " typed </dev/null"), 1);
  EXPECT_NE(ReadFile(directory.path() + "/typed").find("the part is binary"), std::string::npos);
}

}  // namespace
