// What holds for every row of every version. A row that got lost, doubled or
// mixed up with its neighbour breaks one of these.

#include "fapi/vocabulary.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

struct KnownSignal {
  char version;
  std::uint16_t id;
  std::string name;
  const SignalLayout* layout;

  bool IsIn(HipVersionSet versions) const {
    return versions.Contains(static_cast<std::size_t>(version - 'A'));
  }
};

std::vector<KnownSignal> KnownSignals() {
  std::vector<KnownSignal> signals;
  for (std::size_t version = 0; version < kHipVersionCount; ++version) {
    for (unsigned id = 0; id <= 0xFFFF; ++id) {
      const auto id16 = static_cast<std::uint16_t>(id);
      const SignalLayout* layout = FindSignal(static_cast<HipVersionTag>(version), id16);
      if (layout == nullptr) continue;
      signals.push_back(
          {TagLetter(version), id16, std::string(TextOf(layout->name).text()), layout});
    }
  }
  return signals;
}

std::string Describe(const KnownSignal& signal) { return signal.name + " in " + signal.version; }

TEST(Vocabulary, AnIdTellsFamilyAndRole) {
  const std::map<std::string, unsigned> kRoles = {
      {"_req", 0}, {"_cfm", 1}, {"_res", 2}, {"_ind", 3}};
  const std::map<std::string, std::string> kFamilies = {
      {"ma", "1"},       {"mlme", "2"},  {"debug", "89"}, {"test", "9"},
      {"wlanlite", "9"}, {"radio", "9"}, {"phy", "9"}};
  for (const KnownSignal& signal : KnownSignals()) {
    const auto role = kRoles.find(signal.name.substr(signal.name.size() - 4));
    ASSERT_NE(role, kRoles.end()) << Describe(signal);
    EXPECT_EQ(signal.id >> 8 & 0xF, role->second) << Describe(signal);
    const auto family = kFamilies.find(signal.name.substr(0, signal.name.find('_')));
    ASSERT_NE(family, kFamilies.end()) << Describe(signal);
    EXPECT_NE(family->second.find(static_cast<char>('0' + (signal.id >> 12))), std::string::npos)
        << Describe(signal);
  }
}

TEST(Vocabulary, TheSpareTripleLiesDirectlyAboveAllOtherIdsOfItsBlock) {
  std::map<std::pair<char, unsigned>, std::vector<KnownSignal>> blocks;
  for (const KnownSignal& signal : KnownSignals()) {
    blocks[{signal.version, signal.id >> 8}].push_back(signal);
  }
  EXPECT_EQ(blocks.size(), kHipVersionCount * 16);
  for (const auto& [block, signals] : blocks) {
    ASSERT_GE(signals.size(), 3U);
    const std::size_t below = signals.size() - 3;
    for (std::size_t i = 0; i < signals.size(); ++i) {
      const bool is_of_triple = signals[i].name.find("_spare_signal") != std::string::npos;
      EXPECT_EQ(is_of_triple, i >= below) << Describe(signals[i]);
      if (i < below) continue;
      EXPECT_NE(signals[i].name.find("_spare_signal" + std::to_string(i - below + 1) + "_"),
                std::string::npos)
          << Describe(signals[i]);
      EXPECT_EQ(signals[i].id, signals.back().id - (signals.size() - 1 - i));
    }
    // Nothing but ids that were given up lies between the others and the triple.
    if (below > 0) {
      EXPECT_EQ(signals[below].id, signals[below - 1].id + 1);
    }
  }
}

TEST(Vocabulary, EverySignalEndsInASpare) {
  for (const KnownSignal& signal : KnownSignals()) {
    const auto fields = FieldsOf(*signal.layout);
    ASSERT_FALSE(fields.empty()) << Describe(signal);
    const FieldLayout& last = fields.back();
    const bool is_triple = last.renderer == FieldRenderer::kSpares;
    EXPECT_TRUE(is_triple || last.renderer == FieldRenderer::kU32) << Describe(signal);
    EXPECT_EQ(TextOf(last.head).text(), is_triple ? " spare_1:" : " spare_3:") << Describe(signal);
  }
}

TEST(Vocabulary, ResultCodesStandInConfirms) {
  const std::set<std::string> kConfirmsWithout = {"ma_unitdata_cfm",  "mlme_get_cfm",
                                                  "mlme_set_cfm",     "debug_generic_cfm",
                                                  "test_pmalloc_cfm", "test_check_fw_alive_cfm",
                                                  "test_suspend_cfm", "test_resume_cfm"};
  const struct {
    const char* name;
    HipVersionSet versions;
  } kOthersWith[] = {{"mlme_connect_ind", "A-"},     {"mlme_reassociate_ind", "A-"},
                     {"mlme_roam_ind", "A-"},        {"mlme_synchronised_res", "E-F,H-"},
                     {"mlme_ndp_setup_ind", "E-F"},  {"mlme_ndp_setup_response_ind", "E-F"},
                     {"mlme_ndp_request_ind", "H-"}, {"mlme_ndp_response_ind", "H-"}};
  std::set<std::string> names;
  for (const KnownSignal& signal : KnownSignals()) {
    const bool has_result =
        std::ranges::any_of(FieldsOf(*signal.layout), [](const FieldLayout& field) {
          return TextOf(field.head).text() == " result_code:" &&
                 field.renderer == FieldRenderer::kEnum16;
        });
    bool expected = signal.name.ends_with("_cfm") && !kConfirmsWithout.contains(signal.name);
    if (signal.name == "mlme_set_packet_filter_cfm") expected = signal.IsIn("A-B");
    for (const auto& other : kOthersWith) {
      if (signal.name == other.name) expected = signal.IsIn(other.versions);
    }
    EXPECT_EQ(has_result, expected) << Describe(signal);
    if (has_result) names.insert(signal.name);
  }
  EXPECT_EQ(names.size(), 119U);
}

// How far Min lies above the end of the last field.
int ExpectedSurplus(const KnownSignal& signal) {
  const std::set<std::string> kWordsAreNotCounted = {
      "debug_generic_req",         "debug_generic_cfm",    "debug_generic_ind",
      "mlme_get_key_sequence_cfm", "mlme_mic_failure_ind", "mlme_setkeys_req"};
  const std::set<std::string> kNoSurplusInE = {
      "ma_unitdata_cfm",       "mlme_roam_req",      "mlme_set_traffic_parameters_req",
      "mlme_set_pno_list_req", "mlme_del_range_req", "mlme_connected_ind",
      "mlme_tdls_peer_ind",    "mlme_nan_event_ind"};
  if (signal.version <= 'C' && kWordsAreNotCounted.contains(signal.name)) return -16;
  if (signal.version <= 'C' && signal.name == "debug_word12_ind") return -24;
  if (signal.version == 'E' && signal.layout->dump_count > 0) {
    return kNoSurplusInE.contains(signal.name) ? 0 : 4;
  }
  if (signal.version != 'A') return 0;
  if (signal.name == "mlme_tdls_action_req") return -12;
  if (signal.name == "ma_tx_failure_ind" || signal.name == "mlme_monitor_rssi_req") return -2;
  if (signal.name.starts_with("ma_spare_signal") && signal.name.ends_with("_res")) return 2;
  return signal.name == "mlme_connect_res" ? 2 : 0;
}

TEST(Vocabulary, MinIsTheEndOfTheFieldsButForAFew) {
  std::size_t dumps_in_e = 0;
  std::size_t two_dumps_in_e = 0;
  for (const KnownSignal& signal : KnownSignals()) {
    EXPECT_EQ(signal.layout->min - signal.layout->end, ExpectedSurplus(signal)) << Describe(signal);
    const unsigned dumps = signal.layout->dump_count;
    EXPECT_LE(dumps, signal.version == 'E'   ? 2U
                     : signal.version == 'G' ? 0U
                                             : 1U)
        << Describe(signal);
    if (signal.version == 'E' && dumps > 0) ++dumps_in_e;
    if (signal.version == 'E' && dumps > 1) ++two_dumps_in_e;
  }
  EXPECT_EQ(dumps_in_e, 92U);
  EXPECT_EQ(two_dumps_in_e, 43U);
}

TEST(Vocabulary, EachLabelIsFoundInItsVersionsAndNoOther) {
  std::set<const EnumTable*> tables;
  for (const KnownSignal& signal : KnownSignals()) {
    for (const FieldLayout& field : FieldsOf(*signal.layout)) {
      if (field.labels == nullptr) continue;
      tables.insert(field.labels);
      EXPECT_TRUE(signal.IsIn(field.labels->versions())) << Describe(signal);
    }
  }
  EXPECT_EQ(tables.size(), 47U);
  for (const EnumTable* table : tables) {
    for (std::size_t version = 0; version < kHipVersionCount; ++version) {
      std::map<std::uint16_t, std::string_view> expected;
      for (std::size_t row = 0; row < table->size(); ++row) {
        if (!table->versions(row).Contains(version)) continue;
        expected[table->value(row)] = table->text(row).text();
      }
      for (unsigned value = 0; value <= 0xFFFF; ++value) {
        const auto label = expected.find(static_cast<std::uint16_t>(value));
        ASSERT_EQ(
            table->Find(static_cast<std::uint16_t>(value), static_cast<HipVersionTag>(version))
                .text(),
            label == expected.end() ? std::string_view() : label->second)
            << value;
      }
    }
  }
}

}  // namespace
