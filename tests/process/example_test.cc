#include <gtest/gtest.h>

#include <string>

#include "files.h"
#include "session_log.h"
#include "support/process.h"

namespace {

std::string Example(const char* name) {
  return ReadFile(std::string(VRKT_SOURCE "/examples/") + name);
}

TEST(Example, LogMatchesItsSource) {
  EXPECT_TRUE(SessionLog().bytes() == Example("session.udi"))
      << "To make the log and its text again from tools/session_log.cc, run\n\n    "
      << ShellCommand(VRKT_MAKE_SESSION_LOG)
      << " >examples/session.udi\n    ./dev demo >examples/session.txt\n";
}

TEST(Example, TextMatchesItsLog) {
  const ToolResult result = RunTool({.arguments = {VRKT_SOURCE "/examples/session.udi"}});
  EXPECT_EQ(result.out, Example("session.txt"))
      << "To make the text again, run\n\n    ./dev demo >examples/session.txt\n";
  EXPECT_EQ(result.err,
            "decode: Log File Hip Version 14.3.10 detected\n"
            "decode: Decode Error: Unknown Signal 0xCCDD::0x0042\n"
            "decode: Log File Hip Version 14.5.12 detected\n");
  EXPECT_EQ(result.status, 0);
}

}  // namespace
