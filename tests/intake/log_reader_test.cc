#include "intake/log_reader.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "files.h"
#include "session_log.h"
#include "support/decode_in_process.h"
#include "support/process.h"

namespace {

// A truncated log decodes up to its last complete record, without a report.
TEST(LogReader, CutAtEachByte) {
  ::setenv("TZ", "UTC0", 1);
  const Log log = SessionLog();
  const std::string& bytes = log.bytes();
  const ToolResult whole = DecodeInProcess(bytes);
  ToolResult expected{.status = 0, .out = kBanner};
  auto next_end = log.ends().begin();
  for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
    const ToolResult result = DecodeInProcess(bytes.substr(0, cut));
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
