#include <gtest/gtest.h>

#include <string>

#include "session_log.h"
#include "support/process.h"

namespace {

#ifdef VRKT_TEST_EMULATOR
constexpr std::size_t kCutStep = 13;  // an emulator takes its time to start
#else
constexpr std::size_t kCutStep = 1;
#endif

std::string Example(const char* name) {
  return ReadFile(std::string(VRKT_SOURCE "/examples/") + name);
}

TEST(Example, IsWhatItsSourceMakes) { EXPECT_EQ(SessionLog().bytes(), Example("session.udi")); }

TEST(Example, ReadsAsItsText) {
  const ToolResult result = RunTool({.arguments = {VRKT_SOURCE "/examples/session.udi"}});
  EXPECT_EQ(result.out, Example("session.txt"));
  EXPECT_EQ(result.err,
            "decode: Log File Hip Version 14.3.10 detected\n"
            "decode: Decode Error: Unknown Signal 0xCCDD::0x0042\n"
            "decode: Log File Hip Version 14.5.12 detected\n");
  EXPECT_EQ(result.status, 0);
}

// Wherever a log is cut, it reads as far as its last whole record, and quietly.
TEST(Example, CutAtEachByte) {
  const Log log = SessionLog();
  const std::string whole = Example("session.txt");
  std::size_t shown_before = 0;
  std::string shown_at_end(kBanner);
  auto next_end = log.ends().begin();
  for (std::size_t cut = 0; cut <= log.bytes().size(); ++cut) {
    const bool at_an_end = next_end != log.ends().end() && cut == *next_end;
    if (cut % kCutStep != 0 && !at_an_end) continue;
    const ToolResult result = RunTool({.input = log.bytes().substr(0, cut)});
    ASSERT_EQ(result.status, 0) << cut;
    if (at_an_end) {
      shown_at_end = result.out;
      EXPECT_GE(shown_at_end.size(), shown_before) << cut;
      shown_before = shown_at_end.size();
      ++next_end;
    }
    ASSERT_EQ(result.out, shown_at_end) << cut;
    ASSERT_TRUE(whole.starts_with(result.out)) << cut;
  }
  EXPECT_EQ(shown_at_end, whole);
}

}  // namespace
