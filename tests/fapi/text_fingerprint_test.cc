// Detects any change of a version's text: names, ids, forms and offsets of fields,
// minimum lengths and labels.
//
// A table of expected lines would be a second copy of the vocabulary. One hash per
// version detects the same mistakes, and `./dev text-diff` shows the lines that
// changed.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "hip/hip_versions.h"
#include "reference_log.h"
#include "support/capture_stream.h"
#include "support/padded_payload.h"

namespace {

// To add a version, add the line that the failing test prints. The constants of
// older versions stay as they are.
// clang-format off
constexpr struct {
  std::string_view version;
  std::uint64_t hash;
} kFingerprints[] = {
    {"13.1.0", 0xA329AC1197C4042F},
    {"13.2.0", 0x39F6F5F3AE3DCB3D},
    {"13.3.0", 0xFB48DAE5B4327A8F},
    {"14.0.0", 0x6CCA28170265BBA5},
    {"14.0.4", 0xD4A0CA21CAEF17F1},
    {"14.0.6", 0xBDC374C7EE2E55EA},
    {"14.1.8", 0x3EEE0502F46B3F1C},
    {"14.2.9", 0x8039290334444745},
    {"14.3.10", 0x59F897C89849CEFB},
    {"14.4.11", 0x03BA8D37026F9B54},
    {"14.4.12", 0x9B565F548871A0FB},
    {"14.5.12", 0xF28BC4202527F26A},
};
// clang-format on

// The reference text of one version: its name and packed number, then each record with
// its id and lengths.
std::string PrintReferenceText(const HipVersionEntry& version) {
  const std::vector<ReferenceRecord> records = MakeReferenceRecords(version.tag);
  return CaptureStandardOutput([&] {
    std::printf("%s 0x%08X\n", version.name, static_cast<unsigned>(version.version));
    for (const ReferenceRecord& record : records) {
      const auto length = static_cast<std::uint32_t>(record.payload.size());
      const PaddedPayload payload(record.payload);
      const std::uint8_t* const bytes = payload.bytes();
      std::printf("0x%04X %u %u ", static_cast<unsigned>(record.id),
                  static_cast<unsigned>(record.signal_length), static_cast<unsigned>(length));
      version.decoder(record.signal_length, bytes, length - record.signal_length,
                      bytes + record.signal_length, 0, nullptr);
    }
  });
}

// FNV-1a, 64 bits.
std::uint64_t HashText(const std::string& text) {
  std::uint64_t hash = 0xCBF29CE484222325U;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
  return hash;
}

TEST(TextFingerprint, OfEachVersion) {
  std::string names;
  std::string constants;
  for (const HipVersionEntry& version : HipVersionTable) {
    const std::size_t i = GetIndex(version.tag);
    const std::string name = version.name;
    const std::uint64_t hash = HashText(PrintReferenceText(version));
    if (i < std::size(kFingerprints) && kFingerprints[i].version == name &&
        kFingerprints[i].hash == hash) {
      continue;
    }
    char line[64];
    std::snprintf(line, sizeof line, "    {\"%s\", 0x%016llX},\n", name.c_str(),
                  static_cast<unsigned long long>(hash));
    names += ' ' + name;
    constants += line;
  }
  EXPECT_TRUE(names.empty()) << "The text of these versions changed:" << names
                             << "\nTo see the lines that differ, run\n\n    ./dev text-diff\n\n"
                                "If every change is intended, these are the new constants for "
                                "tests/fapi/text_fingerprint_test.cc:\n\n"
                             << constants;
  EXPECT_EQ(std::size(kFingerprints), kHipVersionCount);
}

}  // namespace
