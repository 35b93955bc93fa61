#ifndef VRKT_HIP_EXCHANGE_H_
#define VRKT_HIP_EXCHANGE_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "fapi/compiled_signal.h"
#include "fapi/hip_version_tags.h"
#include "hip/signal_view.h"

// Finds the request that a confirm answers.
//
// A confirm answers the oldest waiting request of the same name (mlme_connect_cfm answers
// mlme_connect_req; their ids differ by 0x0100 in most families, but not in all) with the
// same values of vif and host_tag, as far as both signals have these fields. After a Load
// event, no confirm answers an earlier request.
//
// The memory is limited, whatever the length of the log: a request that was not answered
// is forgotten after a number of later requests. The requests are in a ring, in the order of
// the log, so the request that a new one replaces is the oldest of all, and so the first
// in the queue of its own key. Each key that has requests is in a hash table by the first
// of its requests.

// A request as the caller knows it.
struct SentRequest {
  std::uint64_t record;
  std::int64_t time_ms;
};

class ExchangeTracker {
 public:
  // `kept` is the number of requests after which one is forgotten. The default takes up to
  // 8 MiB.
  explicit ExchangeTracker(std::size_t kept = 200000);

  // Takes each signal of the log, in order. It must have a layout and not be too short.
  // Remembers a request. Returns what a confirm answers, if anything. The versions of the
  // signals do not decrease.
  std::optional<SentRequest> Add(const SignalView& signal, SentRequest sent);

  // Call it at each Load event.
  void ForgetRequests();

 private:
  // What a signal of a version has to do with exchanges.
  struct Role {
    enum class Kind : std::uint8_t { kNone, kRequest, kConfirm };
    Kind kind = Kind::kNone;
    std::uint16_t request_id = 0;
    const CompiledField* vif = nullptr;  // null if one of the two signals lacks it
    const CompiledField* host_tag = nullptr;
  };

  // Places in the ring; in `buckets_` and in links plus 1, so that 0 is none.
  using Place = std::uint32_t;

  struct Waiting {
    SentRequest sent;
    std::uint64_t key;  // 0 if the request was answered
    Place next;         // the next request with this key
    // Of the first request with a key:
    Place last;            // the last request with this key
    Place next_in_bucket;  // the first request with another key
  };

  void SelectVersion(HipVersionTag version);
  static std::uint64_t MakeKey(const SignalView& signal, const Role& role);
  Place& FindFirst(std::uint64_t key);
  void Remember(std::uint64_t key, SentRequest sent);
  void Remove(Place& first);

  const std::size_t kept_;
  std::optional<HipVersionTag> version_;
  std::vector<Role> roles_;  // by layout, for `version_`
  // Not initialised: the memory of a place that was never used is not resident.
  std::unique_ptr<Waiting[]> ring_;
  std::vector<Place> buckets_;
  std::uint64_t count_ = 0;  // of requests since the last Load event
};

#endif  // VRKT_HIP_EXCHANGE_H_
