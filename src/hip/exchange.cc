#include "hip/exchange.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

#include "fapi/vocabulary.h"
#include "hip/field_value.h"

namespace {

constexpr unsigned kBucketBits = 16;

const CompiledField* FindNumber(const CompiledSignal& layout, std::string_view name) {
  for (const CompiledField& field : GetFields(layout)) {
    if (field.form != FieldRenderer::kDump && GetText(field.name).text() == name) return &field;
  }
  return nullptr;
}

}  // namespace

ExchangeTracker::ExchangeTracker(std::size_t kept)
    : kept_(kept),
      ring_(new Waiting[kept]),  // NOLINT(modernize-make-unique): it would initialise them
      buckets_(std::size_t{1} << kBucketBits) {}

std::optional<SentRequest> ExchangeTracker::Add(const SignalView& signal, SentRequest sent) {
  if (signal.version != version_) SelectVersion(signal.version);
  const Role& role = roles_[static_cast<std::size_t>(signal.layout - ListLayouts().data())];
  if (role.kind == Role::Kind::kNone) return std::nullopt;
  const std::uint64_t key = MakeKey(signal, role);
  if (role.kind == Role::Kind::kRequest) {
    Remember(key, sent);
    return std::nullopt;
  }
  Place& first = FindFirst(key);
  if (first == 0) return std::nullopt;
  const SentRequest answered = ring_[first - 1].sent;
  Remove(first);
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
  std::map<std::string_view, KnownSignal> requests;
  constexpr std::string_view kRequest = "_req";
  constexpr std::string_view kConfirm = "_cfm";
  const std::vector<KnownSignal> signals = ListSignals(version);
  const auto split = [kRequest](const KnownSignal& signal) {
    const std::string_view name = GetText(signal.layout->name).text();
    const std::size_t stem = name.size() - std::min(name.size(), kRequest.size());
    return std::pair(name.substr(0, stem), name.substr(stem));
  };
  for (const KnownSignal& signal : signals) {
    if (const auto [stem, role] = split(signal); role == kRequest) requests[stem] = signal;
  }
  const auto set_role = [this](const KnownSignal& own, const CompiledSignal& other, Role role) {
    const auto find = [&](const char* name) {
      return FindNumber(other, name) == nullptr ? nullptr : FindNumber(*own.layout, name);
    };
    role.vif = find("vif");
    role.host_tag = find("host_tag");
    roles_[static_cast<std::size_t>(own.layout - ListLayouts().data())] = role;
  };
  for (const KnownSignal& confirm : signals) {
    const auto [stem, role] = split(confirm);
    const auto request = requests.find(stem);
    if (role != kConfirm || request == requests.end()) continue;
    const KnownSignal& sent = request->second;
    set_role(sent, *confirm.layout, {.kind = Role::Kind::kRequest, .request_id = sent.id});
    set_role(confirm, *sent.layout, {.kind = Role::Kind::kConfirm, .request_id = sent.id});
  }
}

// No key is 0, because no signal has the id 0.
std::uint64_t ExchangeTracker::MakeKey(const SignalView& signal, const Role& role) {
  const auto read = [&signal](const CompiledField* field) {
    return field == nullptr ? 0 : static_cast<std::uint32_t>(ReadField(signal, *field).number);
  };
  return std::uint64_t{role.request_id} << 48U |
         std::uint64_t{static_cast<std::uint16_t>(read(role.vif))} << 32U | read(role.host_tag);
}

// Returns the link to the first request with this key, which is 0 if there is none.
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

// Removes the first request with its key.
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
