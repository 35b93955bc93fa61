#include "intake/run_control.h"

#include <gtest/gtest.h>

#include <string>

#include "capture_stream.h"
#include "support/process.h"

namespace {

// A shell cannot start a process with such an argument vector.
TEST(RunControl, AbsentArguments) {
  const char* const kEmptyVector[] = {nullptr};
  std::string out;
  const std::string err = CaptureStandardError(
      [&] { out = CaptureStandardOutput([&] { EXPECT_EQ(RunLogDecoder(0, kEmptyVector), -1); }); });
  EXPECT_EQ(out, kBanner);
  EXPECT_TRUE(err.starts_with("Usage   : vrkt_wlan_udi_log_decode <filename|stdin> [--pcap]\n"));
}

}  // namespace
