#include <gtest/gtest.h>

#include <string>

#include "files.h"
#include "session_log.h"
#include "support/process.h"

namespace {

std::string Example(const char* name) {
  return ReadFile(std::string(VRKT_SOURCE "/examples/") + name);
}

TEST(Example, LogMatchesItsSource) { EXPECT_EQ(SessionLog().bytes(), Example("session.udi")); }

TEST(Example, TextMatchesItsLog) {
  const ToolResult result = RunTool({.arguments = {VRKT_SOURCE "/examples/session.udi"}});
  EXPECT_EQ(result.out, Example("session.txt"));
  EXPECT_EQ(result.err,
            "decode: Log File Hip Version 14.3.10 detected\n"
            "decode: Decode Error: Unknown Signal 0xCCDD::0x0042\n"
            "decode: Log File Hip Version 14.5.12 detected\n");
  EXPECT_EQ(result.status, 0);
}

}  // namespace
