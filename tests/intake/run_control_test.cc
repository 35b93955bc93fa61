#include "intake/run_control.h"

#include <gtest/gtest.h>

#include <string>

#include "base/program_name.h"
#include "support/capture_stream.h"
#include "support/process.h"

namespace {

// A shell cannot start a process with such argument vectors.
TEST(RunControl, AbsentArguments) {
  EXPECT_STREQ(ResolveProgramName(nullptr), "vrkt_wlan_udi_log_decode");
  const char* const kEmptyVector[] = {nullptr};
  std::string out;
  const std::string err = CaptureStandardError(
      [&] { out = CaptureStandardOutput([&] { EXPECT_EQ(RunLogDecoder(0, kEmptyVector), -1); }); });
  EXPECT_EQ(out, kBanner);
  EXPECT_TRUE(err.starts_with("Usage   : vrkt_wlan_udi_log_decode <filename|stdin> [--pcap]\n"));
}

TEST(RunControl, ProgramName) {
  EXPECT_STREQ(ResolveProgramName("/a/b/tool"), "tool");
  EXPECT_STREQ(ResolveProgramName("tool"), "tool");
  EXPECT_STREQ(ResolveProgramName("a//b"), "b");
  EXPECT_STREQ(ResolveProgramName("/a/b/"), "");
  EXPECT_STREQ(ResolveProgramName(""), "");
}

}  // namespace
