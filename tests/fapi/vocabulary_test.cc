// Rules for every row of every version. A failure names the row that breaks a rule.
// text_fingerprint_test.cc detects all other mistakes in rows and labels.

#include "fapi/vocabulary.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

struct KnownSignal {
  char version;
  std::uint16_t id;
  std::string name;
  const CompiledSignal* layout;
};

std::vector<KnownSignal> FindKnownSignals() {
  std::vector<KnownSignal> signals;
  for (std::size_t version = 0; version < kHipVersionCount; ++version) {
    for (unsigned id = 0; id <= 0xFFFF; ++id) {
      const auto id16 = static_cast<std::uint16_t>(id);
      const CompiledSignal* layout = FindSignal(static_cast<HipVersionTag>(version), id16);
      if (layout == nullptr) continue;
      signals.push_back(
          {GetTagLetter(version), id16, std::string(GetText(layout->name).text()), layout});
    }
  }
  return signals;
}

std::string Describe(const KnownSignal& signal) { return signal.name + " in " + signal.version; }

TEST(Vocabulary, IdsMatchFamilyAndRole) {
  const std::map<std::string, unsigned> kRoles = {
      {"_req", 0}, {"_cfm", 1}, {"_res", 2}, {"_ind", 3}};
  const std::map<std::string, std::string> kFamilies = {
      {"ma", "1"},       {"mlme", "2"},  {"debug", "89"}, {"test", "9"},
      {"wlanlite", "9"}, {"radio", "9"}, {"phy", "9"}};
  for (const KnownSignal& signal : FindKnownSignals()) {
    const auto role = kRoles.find(signal.name.substr(signal.name.size() - 4));
    ASSERT_NE(role, kRoles.end()) << Describe(signal);
    EXPECT_EQ(signal.id >> 8 & 0xF, role->second)
        << Describe(signal) << " has an id of another role";
    const auto family = kFamilies.find(signal.name.substr(0, signal.name.find('_')));
    ASSERT_NE(family, kFamilies.end()) << Describe(signal);
    const char digit = static_cast<char>('0' + (signal.id >> 12));
    EXPECT_TRUE(family->second.find(digit) != std::string::npos)
        << Describe(signal) << " has an id of another family: " << digit;
  }
}

TEST(Vocabulary, ThreeSpareSignalsHaveTheHighestIdsOfTheirBlock) {
  std::map<std::pair<char, unsigned>, std::vector<KnownSignal>> blocks;
  for (const KnownSignal& signal : FindKnownSignals()) {
    blocks[{signal.version, signal.id >> 8}].push_back(signal);
  }
  for (const auto& [block, signals] : blocks) {
    const std::string_view role =
        std::string_view(signals.front().name).substr(signals.front().name.size() - 4);
    for (unsigned number = 1; number <= 3; ++number) {
      const std::string name = "_spare_signal" + std::to_string(number) + std::string(role);
      const auto spare = std::ranges::find_if(
          signals, [&](const KnownSignal& signal) { return signal.name.ends_with(name); });
      ASSERT_NE(spare, signals.end())
          << "block 0x" << std::hex << block.second << " of " << block.first << " lacks " << name;
      EXPECT_EQ(spare->id, signals.back().id - 3 + number) << Describe(*spare);
    }
  }
}

TEST(Vocabulary, SignalsEndInThreeSpares) {
  for (const KnownSignal& signal : FindKnownSignals()) {
    ASSERT_FALSE(GetFields(*signal.layout).empty()) << Describe(signal);
    const CompiledField& last = GetFields(*signal.layout).back();
    const bool is_triple = last.renderer == FieldRenderer::kSpares;
    EXPECT_EQ(GetText(last.prefix).text(), is_triple ? " spare_1:" : " spare_3:")
        << Describe(signal);
  }
}

// FindLabel uses an index for values without a gap from zero and a binary search for
// the others. The result must be that of a linear search.
TEST(Vocabulary, LookUpFindsEachLabel) {
  std::set<std::uint8_t> enums;
  for (const KnownSignal& signal : FindKnownSignals()) {
    for (const CompiledField& field : GetFields(*signal.layout)) {
      if (field.renderer == FieldRenderer::kEnum16) enums.insert(field.enum_index);
    }
  }
  for (const std::uint8_t index : enums) {
    // Each value with a label in any version, its neighbours, and some far from any.
    std::set<std::uint16_t> values;
    for (unsigned value = 0; value <= 0xFFFF; value += 0xFF) {
      values.insert(static_cast<std::uint16_t>(value));
    }
    for (const CompiledLabel& label : ListLabels(index)) {
      for (const int step : {-1, 0, 1}) {
        values.insert(static_cast<std::uint16_t>(label.value + step));
      }
    }
    for (std::size_t version = 0; version < kHipVersionCount; ++version) {
      for (const std::uint16_t value : values) {
        std::string_view expected;
        for (const CompiledLabel& label : ListLabels(index)) {
          if (label.value != value || !label.versions.Contains(version)) continue;
          expected = GetText(label.text).text();
        }
        ASSERT_EQ(FindLabel(index, value, static_cast<HipVersionTag>(version)).text(), expected)
            << "value " << value << " in " << GetTagLetter(version);
      }
    }
  }
}

}  // namespace
