#include "hip/exchange_rules.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace {

struct Completion {
  std::string_view request;
  std::string_view indication;
  std::string_view key;
};

constexpr Completion kCompletions[] = {
    {"mlme_add_range_req", "mlme_range_done_ind", "rtt_id"},
    {"mlme_add_scan_req", "mlme_scan_done_ind", "scan_id"},
    {"mlme_connect_req", "mlme_connect_ind", "vif"},
    {"mlme_reassociate_req", "mlme_reassociate_ind", "vif"},
    {"mlme_roam_req", "mlme_roam_ind", "vif"},
    {"mlme_send_frame_req", "mlme_frame_transmission_ind", "host_tag"},
};

using SignalsByName = std::map<std::string, KnownSignal, std::less<>>;

std::string_view GetName(const KnownSignal& signal) { return GetText(signal.layout->name).text(); }

std::optional<KnownSignal> Find(const SignalsByName& signals, std::string_view name) {
  const auto found = signals.find(name);
  if (found == signals.end()) return std::nullopt;
  return found->second;
}

const CompiledField* FindNumber(const KnownSignal& signal, std::string_view name) {
  for (const CompiledField& field : GetFields(*signal.layout)) {
    if (field.form != FieldRenderer::kDump && GetText(field.name).text() == name) return &field;
  }
  return nullptr;
}

// Adds a key if both signals have it.
void AddKey(Exchange& exchange, std::string_view name) {
  const ExchangeKey key = {FindNumber(exchange.opening, name),
                           FindNumber(exchange.answering, name)};
  if (key.opening == nullptr || key.answering == nullptr) return;
  const bool has_one = exchange.keys[0].opening != nullptr;
  exchange.keys[has_one ? 1 : 0] = key;
}

const Completion* FindCompletion(std::string_view indication) {
  for (const Completion& completion : kCompletions) {
    if (completion.indication == indication) return &completion;
  }
  return nullptr;
}

// Returns what a signal answers that completes no request.
std::optional<KnownSignal> FindOpening(const SignalsByName& signals, std::string_view answering) {
  constexpr std::size_t kRoleSize = 4;  // as of "_cfm"
  const std::size_t stem_size = answering.size() - std::min(answering.size(), kRoleSize);
  const std::string stem(answering.substr(0, stem_size));
  const std::string_view role = answering.substr(stem_size);
  if (role == "_cfm") return Find(signals, stem + "_req");
  if (role == "_res") return Find(signals, stem + "_ind");
  if (role == "_ind" && !Find(signals, stem + "_cfm")) return Find(signals, stem + "_req");
  return std::nullopt;
}

}  // namespace

std::vector<Exchange> ListExchanges(HipVersionTag version) {
  const std::vector<KnownSignal> all = ListSignals(version);
  SignalsByName signals;
  for (const KnownSignal& signal : all) signals.emplace(GetName(signal), signal);
  std::vector<Exchange> exchanges;
  for (const KnownSignal& answering : all) {
    const std::string_view name = GetName(answering);
    const Completion* const completion = FindCompletion(name);
    const std::optional<KnownSignal> opening =
        completion == nullptr ? FindOpening(signals, name) : Find(signals, completion->request);
    if (!opening) continue;
    Exchange exchange = {
        .opening = *opening, .answering = answering, .keys = {}, .replaces = completion != nullptr};
    if (completion != nullptr) {
      AddKey(exchange, completion->key);
    } else {
      AddKey(exchange, "vif");
      AddKey(exchange, "host_tag");
    }
    exchanges.push_back(exchange);
  }
  return exchanges;
}
