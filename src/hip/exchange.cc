#include "hip/exchange.h"

#include <algorithm>

#include "fapi/vocabulary.h"
#include "hip/field_value.h"

namespace {

constexpr unsigned kBucketBits = 16;

}  // namespace

ExchangeTracker::ExchangeTracker(std::size_t kept)
    : kept_(kept),
      ring_(new Waiting[kept]),  // NOLINT(modernize-make-unique): it would initialise them
      buckets_(std::size_t{1} << kBucketBits) {}

std::optional<SentRequest> ExchangeTracker::Add(const SignalView& signal, SentRequest sent) {
  if (signal.version != version_) SelectVersion(signal.version);
  const Role& role = roles_[static_cast<std::size_t>(signal.layout - ListLayouts().data())];
  std::optional<SentRequest> answered;
  if (role.answers.answering_id != 0) {
    if (Place& first = FindFirst(MakeKey(signal, role.answers)); first != 0) {
      answered = ring_[first - 1].sent;
      Remove(first);
    }
  }
  if (role.waits.answering_id != 0) Remember(MakeKey(signal, role.waits), sent);
  if (role.waits_last.answering_id != 0) {
    const std::uint64_t key = MakeKey(signal, role.waits_last);
    if (Place& replaced = FindFirst(key); replaced != 0) Remove(replaced);
    Remember(key, sent);
  }
  return answered;
}

void ExchangeTracker::ForgetRequests() {
  if (count_ == 0) return;
  std::fill(buckets_.begin(), buckets_.end(), 0);
  count_ = 0;
}

void ExchangeTracker::SelectVersion(HipVersionTag version) {
  version_ = version;
  roles_.assign(ListLayouts().size(), {});
  const auto get_role = [this](const KnownSignal& signal) -> Role& {
    return roles_[static_cast<std::size_t>(signal.layout - ListLayouts().data())];
  };
  for (const Exchange& exchange : ListExchanges(version)) {
    Role& opening = get_role(exchange.opening);
    Part& waits = exchange.replaces ? opening.waits_last : opening.waits;
    Part& answers = get_role(exchange.answering).answers;
    waits.answering_id = answers.answering_id = exchange.answering.id;
    for (std::size_t i = 0; i < kMaxExchangeKeys; ++i) {
      waits.keys[i] = exchange.keys[i].opening;
      answers.keys[i] = exchange.keys[i].answering;
    }
  }
}

// No key is 0, because no signal has the id 0.
std::uint64_t ExchangeTracker::MakeKey(const SignalView& signal, const Part& part) {
  std::uint64_t key = part.answering_id;
  for (const CompiledField* const field : part.keys) {
    const auto value = field == nullptr ? 0 : ReadField(signal, *field).number;
    key = key << 16U | static_cast<std::uint16_t>(value);
  }
  return key;
}

// Returns the link to the first entry with this key, which is 0 if there is none.
ExchangeTracker::Place& ExchangeTracker::FindFirst(std::uint64_t key) {
  constexpr std::uint64_t kMixer = 0x9E3779B97F4A7C15;
  Place* link = &buckets_[key * kMixer >> (64 - kBucketBits)];
  while (*link != 0 && ring_[*link - 1].key != key) link = &ring_[*link - 1].next_in_bucket;
  return *link;
}

void ExchangeTracker::Remember(std::uint64_t key, SentRequest sent) {
  const std::size_t index = count_ % kept_;
  Waiting& waiting = ring_[index];
  if (count_ >= kept_ && waiting.key != 0) Remove(FindFirst(waiting.key));
  ++count_;
  const auto place = static_cast<Place>(index + 1);
  Place& first = FindFirst(key);
  waiting = {.sent = sent, .key = key, .next = 0, .last = place, .next_in_bucket = 0};
  if (first == 0) {
    first = place;
    return;
  }
  Place& last = ring_[first - 1].last;
  ring_[last - 1].next = place;
  last = place;
}

// Removes the first entry with its key.
void ExchangeTracker::Remove(Place& first) {
  Waiting& removed = ring_[first - 1];
  removed.key = 0;
  if (removed.next == 0) {
    first = removed.next_in_bucket;
    return;
  }
  Waiting& next = ring_[removed.next - 1];
  next.last = removed.last;
  next.next_in_bucket = removed.next_in_bucket;
  first = removed.next;
}
