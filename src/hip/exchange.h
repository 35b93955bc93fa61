#ifndef VRKT_HIP_EXCHANGE_H_
#define VRKT_HIP_EXCHANGE_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
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
// is forgotten after a number of later ones. It takes an entry for each answer that it waits
// for. The entries are in a ring, in the order of the log, so the entry that a new one
// overwrites is the oldest of all, and so the first in the queue of its own key. Each key that
// has entries is in a hash table by the first of them.

// A request as the caller knows it.
struct SentRequest {
  std::uint64_t record;
  std::int64_t time_ms;
};

class ExchangeTracker {
 public:
  // `kept` is the number of entries after which one is forgotten. The default takes up to
  // 8 MiB.
  explicit ExchangeTracker(std::size_t kept = 200000);

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

  // The index of an entry in the ring plus 1; 0 is none.
  using Place = std::uint32_t;

  struct Waiting {
    SentRequest sent;
    std::uint64_t key;  // 0 if the request was answered or replaced
    Place next;         // the next entry with this key
    // Of the first entry with a key:
    Place last;            // the last entry with this key
    Place next_in_bucket;  // the first entry with another key
  };

  void SelectVersion(HipVersionTag version);
  static std::uint64_t MakeKey(const SignalView& signal, const Part& part);
  Place& FindFirst(std::uint64_t key);
  void Remember(std::uint64_t key, SentRequest sent);
  void Remove(Place& first);

  const std::size_t kept_;
  std::optional<HipVersionTag> version_;
  std::vector<Role> roles_;  // by layout, for `version_`
  // Not initialised: the memory of a place that was never used is not resident.
  std::unique_ptr<Waiting[]> ring_;
  std::vector<Place> buckets_;
  std::uint64_t count_ = 0;  // of entries since the last Load event
};

#endif  // VRKT_HIP_EXCHANGE_H_
