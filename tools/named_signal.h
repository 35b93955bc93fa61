#ifndef VRKT_TOOLS_NAMED_SIGNAL_H_
#define VRKT_TOOLS_NAMED_SIGNAL_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "fapi/vocabulary.h"

// Builds a signal of the last version by the names in the vocabulary:
//
//   NamedSignal("mlme_connect_cfm").Set("vif", 1).Set("result_code", "host_request_failed")
//
// What is not set is zero. An unknown name or label, or a text of another length than the
// field, ends the program with a message.
class NamedSignal {
 public:
  static constexpr HipVersionTag kVersion = kLastHipVersionTag;

  explicit NamedSignal(std::string_view name);

  bool Has(std::string_view field) const { return Find(field) != nullptr; }
  NamedSignal& Set(std::string_view field, std::int64_t value);
  // A label of an enumerated field, or the bytes of an address, timestamp or array as
  // hexadecimal digits in stored order.
  NamedSignal& Set(std::string_view field, std::string_view text);
  // The bytes after the signal, which its dump shows.
  NamedSignal& Bulk(std::string_view bytes);

  // The signal and its bulk.
  const std::string& payload() const { return payload_; }
  std::size_t signal_length() const { return signal_length_; }

 private:
  const CompiledField* Find(std::string_view field) const;
  const CompiledField& Get(std::string_view field) const;
  [[noreturn]] void Fail(std::string_view field, std::string_view reason) const;

  const CompiledSignal* layout_;
  std::size_t signal_length_;
  std::string payload_;
};

#endif  // VRKT_TOOLS_NAMED_SIGNAL_H_
