#ifndef VRKT_HIP_EXCHANGE_H_
#define VRKT_HIP_EXCHANGE_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <list>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "fapi/compiled_signal.h"
#include "fapi/hip_version_tags.h"
#include "hip/exchange_rules.h"
#include "hip/hip_signal.h"

// Finds the signal that another answers, by the rules in exchange_rules.h. Both are called a
// request and its answer here, although the first can be an indication. After a Load event,
// nothing answers an earlier signal.
//
// The memory is limited, whatever the length of the log: a request that was not answered
// is forgotten after a number of later ones. A request counts once per answer that it waits for.

// A request as the caller knows it.
struct SentRequest {
  std::uint64_t record;
  std::int64_t time_ms;
};

class ExchangeTracker {
 public:
  // `kept` is the number of requests after which one is forgotten. The default takes up to
  // 8 MiB.
  explicit ExchangeTracker(std::size_t kept = 65536) : kept_(kept) {}

  // Takes each signal of the log, in order. It must have a layout and not be too short.
  // Remembers it if it can be answered. Returns what it answers, if anything. The versions of
  // the signals do not decrease.
  std::optional<SentRequest> Add(const SignalView& signal, SentRequest sent);

  // Call it at each Load event.
  void ForgetRequests();

 private:
  // A signal's part in an exchange.
  struct Part {
    std::uint16_t answering_id = 0;  // identifies the exchange; 0 is none
    std::array<const CompiledField*, kMaxExchangeKeys> keys{};  // null after the last
  };

  // What a signal of a version has to do with exchanges.
  struct Role {
    Part answers;
    Part waits;       // for the answer to the oldest with the same keys
    Part waits_last;  // for the answer to the newest
  };

  // By exchange and the values of its keys: the requests that wait, the oldest first.
  using Waiting = std::unordered_map<std::uint64_t, std::list<SentRequest>>;

  void SelectVersion(HipVersionTag version);
  static std::uint64_t MakeKey(const SignalView& signal, const Part& part);
  void Remember(std::uint64_t key, SentRequest sent);
  void RemoveOldest(Waiting::iterator requests);

  const std::size_t kept_;
  std::optional<HipVersionTag> version_;
  std::vector<Role> roles_;  // by layout, for `version_`
  Waiting waiting_;
  // The keys and records of the last `kept_` requests, also of those that do not wait any more.
  std::deque<std::pair<std::uint64_t, std::uint64_t>> last_;
};

#endif  // VRKT_HIP_EXCHANGE_H_
