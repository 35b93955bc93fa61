#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "log_builder.h"
#include "support/process.h"

namespace {

std::string SupportedVersions() {
  std::string text = "decode: This decoder supports hip versions:\n";
  for (const HipVersionName& version : kHipVersionNames) {
    text += std::string("decode:      ") + version.dotted + "\n";
  }
  return text;
}

std::string TimeRefSize(const std::string& size) {
  return "decode: size(" + size +
         ") detected in TimeRef log entry. Expected size == 4 || Expected size == 8\n";
}

TEST(LogStream, Headers) {
  constexpr std::uint32_t kGood = kHeaderMagic;
  constexpr std::uint32_t kL = 0x0E05000C;
  const struct {
    Log log;
    std::string err;
    int status;
    std::string out{};
  } kCases[] = {
      // Below 6, nothing else of the header is checked, and the last word may be missing.
      {Log().Words({0xDEADBEEF, 5}), "decode: Log File Format Version 5 detected. Not Supported.\n",
       255},
      {Log().Words({kGood, 0, kL}), "decode: Log File Format Version 0 detected. Not Supported.\n",
       255},
      {Log().Words({0xDEADBEEF, 7}), "", 0},
      {Log().Words({0x00ABCDEF, 7, kL}),
       "decode: Bad Magic number detected in log file header. magic:0x00ABCDEF\n", 255},
      {Log().Words({0xDEADBEEF, 6, 0}),
       "decode: Bad Magic number detected in log file header. magic:0xDEADBEEF\n", 255},
      {Log().Words({kGood, 7, 0}),
       "decode: Incompatible version(7) detected in log file header.\nThis decoder supports "
       "version 6 and below.\n",
       255},
      {Log().Words({kGood, 0x80000006, kL}),
       "decode: Incompatible version(-2147483642) detected in log file header.\nThis decoder "
       "supports version 6 and below.\n",
       255},
      {Log().Words({kGood, 6, 0x0E04000D}),
       "decode: Incompatible hip version(14.4.13) detected in log file header.\n" +
           SupportedVersions(),
       255},
      {Log().Words({kGood, 6, 0xFFFFFFFF}),
       "decode: Incompatible hip version(255.255.65535) detected in log file header.\n" +
           SupportedVersions(),
       255},
      // After a reload the version may not be lower.
      {Log().Header("14.5.12").Unload(0ms).Load(0ms).Header("14.4.12"),
       kDetected + "decode: Incompatible hip version(14.4.12) detected in log file header.\n" +
           SupportedVersions(),
       255, "1970/01/01-00:00:00.000 Driver: Unloaded\n1970/01/01-00:00:00.000 Driver: Loaded\n"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(RunTool({.input = c.log.bytes()}), (ToolResult{c.status, kBanner + c.out, c.err}));
  }
}

// The records after the header and the text after the banner, in runs that end with
// status 0.
TEST(LogStream, Records) {
  const std::string kOnes(100, '\xFF');  // what a short payload must not show
  const Fapi driver_side = Fapi(0).PadTo(2).Bytes("3412");
  const std::string kDriverSideText = "Unknown Driver Signal : 0x0000\n";
  const std::string kDriverSideReport = "decode: Decode Error: Unknown Signal 0x1234::0x0000\n";
  const struct {
    const char* what;
    Log records;
    std::string out;
    std::string err;
  } kCases[] = {
      {"stamps count from the newest clock, which has no line",
       Log().TimeRef(1000).Load(1500ms).TimeRef(5).Load(-1ms),
       "1970/01/01-00:16:41.500 Driver: Loaded\n1970/01/01-00:00:05.999 Driver: Loaded\n", ""},
      {"an uptime, stamped from the clock that it brings",
       Log().TimeRef(1000, 0xFFFFFFFF, 250ms).TimeRef(1000, 77, 0ms),
       "1970/01/01-00:16:40.250 Driver: Uptime: -1 seconds\n"
       "1970/01/01-00:16:40.000 Driver: Uptime: 77 seconds\n",
       ""},
      {"a clock of 0 bytes", Log().Words({kDriverEventMagic, 0, 0, 0}).Load(0ms), "",
       TimeRefSize("0")},
      {"a clock of 5 bytes", Log().Words({kDriverEventMagic, 0, 0, 5}).Load(0ms), "",
       TimeRefSize("5")},
      {"a clock of a negative size", Log().Words({kDriverEventMagic, 0, 0, 0x80000008}).Load(0ms),
       "", TimeRefSize("-2147483640")},
      {"a Load with a payload", Log().Words({kDriverEventMagic, 0, 1, 0x80000000}).Load(0ms), "",
       "decode: size(-2147483648) detected in Driver Load log entry. Expected size == 0\n"},
      {"an Unload with a payload", Log().Words({kDriverEventMagic, 0, 2, 4}).Load(0ms), "",
       "decode: size(4 detected in Driver Unload log entry. Expected size == 0\n"},
      {"event 3 with a payload, which is read as a record",
       Log().Words({kDriverEventMagic, 0, 3, 4, 0xABCD}).Load(0ms), "",
       "decode: Bad Magic number detected in log. magic:0x0000ABCD\n"},
      {"no record, and the log ends before 16 bytes", Log().Words({0, 1, 2}).Bytes("abc"), "", ""},
      {"no record", Log().Words({0, 1, 2, 3}), "",
       "decode: Bad Magic number detected in log. magic:0x00000000\n"},
      {"a header without a reload", Log().Header("14.5.12").Load(0ms), "",
       "decode: Bad Magic number detected in log. magic:0x1289ABEF\n"},
      {"an empty record has id 0", Log().Record(0ms, "", 0).Load(0ms),
       "1970/01/01-00:00:00.000 Unknown Driver Signal : 0x0000\n"
       "1970/01/01-00:00:00.000 Driver: Loaded\n",
       "decode: Decode Error: Unknown Signal 0x0000::0x0000\n"},
      {"no byte of an earlier payload shows",
       Log().Record(0ms, kOnes, 0).Record(0ms, "\x12", 0).Record(0ms, "\x13\xA0\x56", 3),
       "1970/01/01-00:00:00.000 Unknown Driver Signal : 0xffff\n"
       "1970/01/01-00:00:00.000 Unknown Driver Signal : 0x0012\n"
       "1970/01/01-00:00:00.000 Unknown Driver Signal : 0xa013\n",
       "decode: Decode Error: Unknown Signal 0xFFFF::0xFFFF\n"
       "decode: Decode Error: Unknown Signal 0x0000::0x0012\n"
       "decode: Decode Error: Unknown Signal 0x0056::0xA013\n"},
      {"signal length above length", Log().Record(1ms, Fapi(0x1000).signal(), 11).Load(2ms),
       "1970/01/01-00:00:00.001 decode: Invalid length in data reference\n"
       "1970/01/01-00:00:00.002 Driver: Loaded\n",
       ""},
      {"the driver side ignores the signal length",
       Log().Record(1ms, FromHex("0000 0000"), 0xFFFFFFFF),
       "1970/01/01-00:00:00.001 Unknown Driver Signal : 0x0000\n",
       "decode: Decode Error: Unknown Signal 0x0000::0x0000\n"},
      {"a short signal prints its stamp only", Log().Signal(1ms, Fapi(0x1000).PadTo(33)).Load(2ms),
       "1970/01/01-00:00:00.001 1970/01/01-00:00:00.002 Driver: Loaded\n", ""},
      {"signal length 0: fields are those of the bulk, then zeros",
       Log().Record(0ms, kOnes, 0).Record(0ms, Fapi(0x1100).U16(7).PadTo(12).signal(), 0),
       "1970/01/01-00:00:00.000 Unknown Driver Signal : 0xffff\n"
       "1970/01/01-00:00:00.000 ma_unitdata_cfm vif:7 transmission_status:successful "
       "host_tag:0x0000 sequence_number:0 peer_index:0 spare_1:0 spare_2:0 spare_3:0\n",
       "decode: Decode Error: Unknown Signal 0xFFFF::0xFFFF\n"},
      {"three Loads, of which one is a reload",
       Log().Load(0ms).Unload(1ms).Load(2ms).Header("14.5.12").Load(3ms).Load(4ms),
       "1970/01/01-00:00:00.000 Driver: Loaded\n1970/01/01-00:00:00.001 Driver: Unloaded\n"
       "1970/01/01-00:00:00.002 Driver: Loaded\n1970/01/01-00:00:00.003 Driver: Loaded\n"
       "1970/01/01-00:00:00.004 Driver: Loaded\n",
       kDetected},
      {"no reload: a driver-side signal between Unload and Load",
       Log().Unload(1ms).Signal(2ms, driver_side).Load(3ms).Header("14.5.12").Load(4ms),
       "1970/01/01-00:00:00.001 Driver: Unloaded\n1970/01/01-00:00:00.002 " + kDriverSideText +
           "1970/01/01-00:00:00.003 Driver: Loaded\n",
       kDriverSideReport + "decode: Bad Magic number detected in log. magic:0x1289ABEF\n"},
      {"a reload: a HIP-side signal between Unload and Load",
       Log().Unload(1ms).Signal(2ms, Fapi(0x8010)).Load(3ms).Header("14.5.12"),
       "1970/01/01-00:00:00.001 Driver: Unloaded\n"
       "1970/01/01-00:00:00.002 Unknown Hip Signal : 0x8010\n"
       "1970/01/01-00:00:00.003 Driver: Loaded\n",
       kDetected},
      {"stamps after a reload without a new clock",
       Log().TimeRef(60).Unload(0ms).Load(0ms).Header("14.5.12").Load(0ms),
       "1970/01/01-00:01:00.000 Driver: Unloaded\n1970/01/01-00:01:00.000 Driver: Loaded\n"
       "1970/01/01-00:01:00.000 Driver: Loaded\n",
       kDetected},
  };
  const std::string header = Log().Header("14.5.12").bytes();
  for (const auto& c : kCases) {
    EXPECT_EQ(RunTool({.input = header + c.records.bytes()}),
              (ToolResult{0, kBanner + c.out, kDetected + c.err}))
        << c.what;
  }
}

}  // namespace
