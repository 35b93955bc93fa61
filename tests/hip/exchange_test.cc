#include "hip/exchange.h"

#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>

#include "log_builder.h"
#include "padded_payload.h"

namespace {

SignalView View(const PaddedPayload& payload) {
  return ViewSignal(kLastHipVersionTag, {payload.span(), {}, {}});
}

// Compares with a queue per key, of length 1 where a new request replaces an earlier one, and
// with the rule for what is forgotten.
TEST(ExchangeTracker, EqualsAQueuePerKey) {
  constexpr std::size_t kKept = 50;
  ExchangeTracker tracker(kKept);
  struct Waiting {
    SentRequest sent;
    std::uint64_t entry;
  };
  using Queue = std::deque<Waiting>;
  std::map<std::pair<unsigned, unsigned>, Queue> unconfirmed;
  std::map<unsigned, Queue> incomplete;
  std::mt19937 random(1);
  const auto below = [&random](unsigned limit) { return static_cast<unsigned>(random()) % limit; };
  std::uint64_t entries = 0;
  std::size_t answered[2] = {};
  std::size_t forgotten[2] = {};
  for (std::uint64_t record = 1; record <= 20000; ++record) {
    if (below(200) == 0) {
      tracker.ForgetRequests();
      unconfirmed.clear();
      incomplete.clear();
    }
    const unsigned vif = below(3);
    const unsigned tag = below(10);
    const unsigned kind = below(8);
    const SentRequest sent = {record, static_cast<std::int64_t>(record / 7)};
    const auto add = [&](unsigned id) {  // one of the mlme_send_frame signals
      const PaddedPayload payload(
          Fapi(static_cast<std::uint16_t>(id)).U16(vif, tag).PadTo(40).signal());
      return tracker.Add(View(payload), sent);
    };
    if (kind > 1) {
      ASSERT_FALSE(add(0x2010));
      unconfirmed[{vif, tag}].push_back({sent, entries++});
      incomplete[tag] = {{sent, entries++}};
      continue;
    }
    const bool completes = kind == 1;
    Queue& queue = completes ? incomplete[tag] : unconfirmed[{vif, tag}];
    for (; !queue.empty() && entries - queue.front().entry > kKept; queue.pop_front()) {
      ++forgotten[kind];
    }
    const std::optional<SentRequest> found = add(completes ? 0x230C : 0x2110);
    ASSERT_EQ(found.has_value(), !queue.empty()) << record;
    if (!found) continue;
    ASSERT_EQ(found->record, queue.front().sent.record);
    ASSERT_EQ(found->time_ms, queue.front().sent.time_ms);
    queue.pop_front();
    ++answered[kind];
  }
  for (const std::size_t count : answered) EXPECT_GT(count, 1000U);
  for (const std::size_t count : forgotten) EXPECT_GT(count, 50U);
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
