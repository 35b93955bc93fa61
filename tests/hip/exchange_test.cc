#include "hip/exchange.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <utility>

#include "hip/record.h"
#include "log_builder.h"
#include "support/padded_payload.h"

namespace {

enum Id : std::uint16_t { kRequest = 0x2010, kConfirm = 0x2110, kCompletion = 0x230C };

// The same by a search among the last entries. A new request to complete replaces an earlier one.
struct Search {
  struct Entry {
    Id answer;
    unsigned vif;
    unsigned tag;
    SentRequest sent;
    bool is_open = true;
  };

  Entry* Find(Id answer, unsigned vif, unsigned tag) {
    const auto found = std::ranges::find_if(entries, [&](const Entry& entry) {
      return entry.is_open && entry.answer == answer && entry.tag == tag &&
             (entry.vif == vif || answer == kCompletion);
    });
    return found == entries.end() ? nullptr : &*found;
  }

  void Send(unsigned vif, unsigned tag, SentRequest sent, std::size_t kept) {
    if (Entry* const replaced = Find(kCompletion, vif, tag)) replaced->is_open = false;
    for (Entry* old = Find(kConfirm, vif, tag);
         old != nullptr && std::abs(sent.time_ms - old->sent.time_ms) > kGiveUpMs;
         old = Find(kConfirm, vif, tag)) {
      old->is_open = false;
      ++given_up;
    }
    for (const Id answer : {kConfirm, kCompletion}) entries.push_back({answer, vif, tag, sent});
    for (; entries.size() > kept; entries.pop_front()) {
      if (entries.front().is_open) ++forgotten[entries.front().answer];
    }
  }

  std::deque<Entry> entries;
  std::map<Id, unsigned> forgotten;
  unsigned given_up = 0;
};

TEST(ExchangeTracker, EqualsASearch) {
  constexpr std::size_t kKept = 50;
  ExchangeTracker tracker(kKept);
  Search search;
  std::mt19937 random(1);
  const auto below = [&random](unsigned limit) { return static_cast<unsigned>(random()) % limit; };
  std::map<Id, unsigned> answered;
  std::int64_t time_ms = 0;
  for (std::uint64_t record = 1; record <= 20000; ++record) {
    if (below(200) == 0) {
      tracker.ForgetRequests();
      search.entries.clear();
    }
    const unsigned vif = below(3);
    const unsigned tag = below(10);
    const unsigned kind = below(8);
    const Id id = kind == 0 ? kConfirm : kind == 1 ? kCompletion : kRequest;
    if (below(40) == 0) time_ms += static_cast<std::int64_t>(below(20000)) - 10000;
    const SentRequest sent = {record, time_ms};
    const PaddedPayload payload(Fapi(id).U16(vif, tag).PadTo(40).signal());
    const std::optional<SentRequest> found =
        tracker.Add(UnderstandSignal(kLastHipVersionTag, {payload.span(), {}, {}}).signal, sent);
    if (id == kRequest) {
      ASSERT_FALSE(found);
      search.Send(vif, tag, sent, kKept);
      continue;
    }
    Search::Entry* const entry = search.Find(id, vif, tag);
    ASSERT_EQ(found.has_value(), entry != nullptr) << record;
    if (!found) continue;
    ASSERT_EQ(found->record, entry->sent.record);
    ASSERT_EQ(found->time_ms, entry->sent.time_ms);
    entry->is_open = false;
    ++answered[id];
  }
  for (const Id id : {kConfirm, kCompletion}) {
    EXPECT_GT(answered[id], 1000U);
    EXPECT_GT(search.forgotten[id], 50U);
  }
  EXPECT_GT(search.given_up, 50U);
}

// What the tracker and the Wireshark plugin rely on.
TEST(ExchangeRules, AreUnambiguousInEveryVersion) {
  for (const HipVersionName& version : kHipVersionNames) {
    std::set<unsigned> answering;
    std::set<std::pair<unsigned, bool>> opening;
    for (const Exchange& exchange : ListExchanges(version.tag)) {
      SCOPED_TRACE(std::string(version.dotted) + " " +
                   std::string(GetText(exchange.answering.layout->name).text()));
      EXPECT_TRUE(answering.insert(exchange.answering.id).second);
      EXPECT_TRUE(opening.emplace(exchange.opening.id, exchange.replaces).second);
      std::size_t keys = 0;
      for (const ExchangeKey& key : exchange.keys) {
        if (key.opening == nullptr) break;
        ++keys;
        for (const CompiledField* const field : {key.opening, key.answering}) {
          EXPECT_EQ(GetWidth(*field), 2U);
          EXPECT_NE(field->form, FieldRenderer::kDump);
        }
      }
      EXPECT_TRUE(keys > 0 || !exchange.replaces);
    }
    EXPECT_GT(answering.size(), 50U);
  }
}

}  // namespace
