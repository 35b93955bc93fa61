#ifndef VRKT_HIP_EXCHANGE_RULES_H_
#define VRKT_HIP_EXCHANGE_RULES_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "fapi/compiled_signal.h"
#include "fapi/hip_version_tags.h"
#include "fapi/vocabulary.h"

// Which signal answers which.
//
// - A confirm answers the request of the same name, and a response the indication. (Their ids
//   differ by 0x0100 in most families, but not in all.) If a version has no confirm for a
//   request, the indication of the same name answers it. vif and host_tag must be equal, as far
//   as both signals have them. The oldest that waits is answered. One that has waited for more
//   than kGiveUpMs when the next one with the same values is sent is given up: its answer is
//   lost, and all later answers would go to the request before their own.
// - An indication completes a request that was confirmed before: the pairs and their keys are a
//   table in exchange_rules.cc. The newest request is answered, because one that was refused
//   or aborted is never completed: it would shift all later pairs.
//
// So a signal answers at most one other. It waits for at most two answers, one by each of
// these rules.

inline constexpr std::size_t kMaxExchangeKeys = 2;

// In milliseconds of the log's time, forward or backward, because the clock can be set.
inline constexpr std::int64_t kGiveUpMs = 5000;

// A field that has the same value in both signals. It has at most 16 bits.
struct ExchangeKey {
  const CompiledField* opening = nullptr;  // null after the last key
  const CompiledField* answering = nullptr;
};

struct Exchange {
  KnownSignal opening;
  KnownSignal answering;
  std::array<ExchangeKey, kMaxExchangeKeys> keys;
  bool replaces;  // whether a new opening replaces one that waits with the same keys
};

// The exchanges of a version, in ascending order of the answering id.
std::vector<Exchange> ListExchanges(HipVersionTag version);

#endif  // VRKT_HIP_EXCHANGE_RULES_H_
