#include "hip/exchange.h"

#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <random>
#include <utility>

#include "log_builder.h"
#include "padded_payload.h"

namespace {

SignalView View(const PaddedPayload& payload) {
  return ViewSignal(kLastHipVersionTag, {payload.span(), {}, {}});
}

// Compares with a queue per key, and with the rule for what is forgotten.
TEST(ExchangeTracker, EqualsAQueuePerKey) {
  constexpr std::size_t kKept = 50;
  ExchangeTracker tracker(kKept);
  std::map<std::pair<unsigned, unsigned>, std::deque<SentRequest>> queues;
  std::map<std::uint64_t, std::uint64_t> count_at;  // by record, how many requests it had before
  std::mt19937 random(1);
  const auto below = [&random](unsigned limit) { return static_cast<unsigned>(random()) % limit; };
  std::uint64_t requests = 0;
  std::size_t answered = 0;
  std::size_t forgotten = 0;
  for (std::uint64_t record = 1; record <= 20000; ++record) {
    if (below(200) == 0) {
      tracker.ForgetRequests();
      queues.clear();
    }
    const unsigned vif = below(3);
    const unsigned tag = below(10);
    const bool is_confirm = below(5) == 0;
    auto& queue = queues[{vif, tag}];
    const SentRequest sent = {record, static_cast<std::int64_t>(record / 7)};
    if (!is_confirm) {
      const PaddedPayload payload(Fapi(0x1000).U16(vif, tag).PadTo(34).signal());
      ASSERT_FALSE(tracker.Add(View(payload), sent));
      queue.push_back(sent);
      count_at[record] = requests++;
      continue;
    }
    while (!queue.empty() && requests - count_at[queue.front().record] > kKept) {
      queue.pop_front();
      ++forgotten;
    }
    const PaddedPayload payload(Fapi(0x1100).U16(vif, 0, tag).PadTo(32).signal());
    const std::optional<SentRequest> found = tracker.Add(View(payload), sent);
    ASSERT_EQ(found.has_value(), !queue.empty()) << record;
    if (!found) continue;
    ASSERT_EQ(found->record, queue.front().record);
    ASSERT_EQ(found->time_ms, queue.front().time_ms);
    queue.pop_front();
    ++answered;
  }
  EXPECT_GT(answered, 2000U);
  EXPECT_GT(forgotten, 500U);
}

}  // namespace
