#include "named_signal.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <span>

#include "log_builder.h"

namespace {

using SignalsByName = std::map<std::string, KnownSignal, std::less<>>;

const SignalsByName& GetSignals() {
  static const SignalsByName kSignals = [] {
    SignalsByName signals;
    for (const KnownSignal& signal : ListSignals(NamedSignal::kVersion)) {
      signals.emplace(GetText(signal.layout->name).text(), signal);
    }
    return signals;
  }();
  return kSignals;
}

[[noreturn]] void FailForName(std::string_view name) {
  std::fprintf(stderr, "no such signal: %.*s\n", static_cast<int>(name.size()), name.data());
  std::abort();
}

}  // namespace

NamedSignal::NamedSignal(std::string_view name) {
  const auto found = GetSignals().find(name);
  if (found == GetSignals().end()) FailForName(name);
  layout_ = found->second.layout;
  signal_length_ = std::max(layout_->min, layout_->end);
  payload_ = ToBytes(found->second.id, 2);
  payload_.resize(signal_length_);
}

NamedSignal& NamedSignal::Set(std::string_view field, std::int64_t value) {
  const CompiledField& f = Get(field);
  const std::size_t width = GetWidth(f);
  if (width > 4) Fail(field, "is no number");
  payload_.replace(f.offset, width, ToBytes(static_cast<std::uint32_t>(value), width));
  return *this;
}

NamedSignal& NamedSignal::Set(std::string_view field, std::string_view text) {
  const CompiledField& f = Get(field);
  if (f.form == FieldRenderer::kEnum16) {
    for (const CompiledLabel& label : ListLabels(f.enum_index)) {
      if (label.versions.Contains(kVersion) && GetText(label.text).text() == text) {
        return Set(field, label.value);
      }
    }
    Fail(field, text);
  }
  const std::string bytes = FromHex(text);
  if (bytes.size() != GetWidth(f)) Fail(field, text);
  payload_.replace(f.offset, bytes.size(), bytes);
  return *this;
}

NamedSignal& NamedSignal::Bulk(std::string_view bytes) {
  payload_.resize(signal_length_);
  payload_ += bytes;
  return *this;
}

const CompiledField* NamedSignal::Find(std::string_view field) const {
  for (const CompiledField& f : GetFields(*layout_)) {
    if (f.form != FieldRenderer::kDump && GetText(f.name).text() == field) return &f;
  }
  return nullptr;
}

const CompiledField& NamedSignal::Get(std::string_view field) const {
  const CompiledField* const found = Find(field);
  if (found == nullptr) Fail(field, "no such field");
  return *found;
}

void NamedSignal::Fail(std::string_view field, std::string_view reason) const {
  const std::string name(GetText(layout_->name).text());
  std::fprintf(stderr, "%s, %.*s: %.*s\n", name.c_str(), static_cast<int>(field.size()),
               field.data(), static_cast<int>(reason.size()), reason.data());
  std::abort();
}
