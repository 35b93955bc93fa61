// Rules for every row of every version. A failure names the row that breaks a rule.
// text_fingerprint_test.cc detects all other mistakes in rows and labels.

#include "fapi/vocabulary.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace {

struct NamedSignal {
  char version;
  std::uint16_t id;
  std::string name;
  const CompiledSignal* layout;
};

std::vector<NamedSignal> FindAllSignals() {
  std::vector<NamedSignal> signals;
  for (const HipVersionName& version : kHipVersionNames) {
    for (const KnownSignal& signal : ListSignals(version.tag)) {
      signals.push_back({GetLetter(version.tag), signal.id,
                         std::string(GetText(signal.layout->name).text()), signal.layout});
    }
  }
  return signals;
}

std::string Describe(const NamedSignal& signal) { return signal.name + " in " + signal.version; }

TEST(Vocabulary, IdsMatchFamilyAndRole) {
  const std::map<std::string, unsigned> kRoles = {
      {"_req", 0}, {"_cfm", 1}, {"_res", 2}, {"_ind", 3}};
  const std::map<std::string, std::string> kFamilies = {
      {"ma", "1"},       {"mlme", "2"},  {"debug", "89"}, {"test", "9"},
      {"wlanlite", "9"}, {"radio", "9"}, {"phy", "9"}};
  for (const NamedSignal& signal : FindAllSignals()) {
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
  std::map<std::pair<char, unsigned>, std::vector<NamedSignal>> blocks;
  for (const NamedSignal& signal : FindAllSignals()) {
    blocks[{signal.version, signal.id >> 8}].push_back(signal);
  }
  for (const auto& [block, signals] : blocks) {
    const std::string_view role =
        std::string_view(signals.front().name).substr(signals.front().name.size() - 4);
    for (unsigned number = 1; number <= 3; ++number) {
      const std::string name = "_spare_signal" + std::to_string(number) + std::string(role);
      const auto spare = std::ranges::find_if(
          signals, [&](const NamedSignal& signal) { return signal.name.ends_with(name); });
      ASSERT_NE(spare, signals.end())
          << "block 0x" << std::hex << block.second << " of " << block.first << " lacks " << name;
      EXPECT_EQ(spare->id, signals.back().id - 3 + number) << Describe(*spare);
    }
  }
}

TEST(Vocabulary, SignalsEndInSpares) {
  for (const NamedSignal& signal : FindAllSignals()) {
    ASSERT_FALSE(GetFields(*signal.layout).empty()) << Describe(signal);
    EXPECT_EQ(GetText(GetFields(*signal.layout).back().name).text(), "spare_3") << Describe(signal);
  }
}

}  // namespace
