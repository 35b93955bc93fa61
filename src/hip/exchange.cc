#include "hip/exchange.h"

#include <cstdlib>

#include "fapi/vocabulary.h"
#include "hip/field_value.h"

std::optional<SentRequest> ExchangeTracker::Add(const SignalView& signal, SentRequest sent) {
  if (signal.version != version_) SelectVersion(signal.version);
  const Role& role = roles_[static_cast<std::size_t>(signal.layout - ListLayouts().data())];
  std::optional<SentRequest> answered;
  if (role.answers.answering_id != 0) {
    const auto requests = waiting_.find(MakeKey(signal, role.answers));
    if (requests != waiting_.end()) {
      answered = requests->second.front();
      RemoveOldest(requests);
    }
  }
  if (role.waits.answering_id != 0) {
    const std::uint64_t key = MakeKey(signal, role.waits);
    std::list<SentRequest>& requests = waiting_[key];
    while (!requests.empty() && std::abs(sent.time_ms - requests.front().time_ms) > kGiveUpMs) {
      requests.pop_front();
    }
    Remember(key, sent);
  }
  if (role.waits_last.answering_id != 0) {
    const std::uint64_t key = MakeKey(signal, role.waits_last);
    waiting_[key].clear();
    Remember(key, sent);
  }
  return answered;
}

void ExchangeTracker::ForgetRequests() {
  waiting_.clear();
  last_.clear();
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

std::uint64_t ExchangeTracker::MakeKey(const SignalView& signal, const Part& part) {
  std::uint64_t key = part.answering_id;
  for (const CompiledField* const field : part.keys) {
    const auto value = field == nullptr ? 0 : ReadField(signal, *field).number;
    key = key << 16U | static_cast<std::uint16_t>(value);
  }
  return key;
}

void ExchangeTracker::Remember(std::uint64_t key, SentRequest sent) {
  waiting_[key].push_back(sent);
  last_.emplace_back(key, sent.record);
  if (last_.size() <= kept_) return;
  const auto [oldest_key, record] = last_.front();
  last_.pop_front();
  const auto requests = waiting_.find(oldest_key);
  if (requests != waiting_.end() && requests->second.front().record == record) {
    RemoveOldest(requests);
  }
}

// Of the requests with a key.
void ExchangeTracker::RemoveOldest(Waiting::iterator requests) {
  requests->second.pop_front();
  if (requests->second.empty()) waiting_.erase(requests);
}
