// The look-ups in the compiled vocabulary. The files in compile/ check the rows of all
// signals against each other and convert rows and labels to constant tables. All of that
// happens at compile time, so the tool builds nothing when it starts.

#include "fapi/vocabulary.h"

#include "fapi/compile/checks.h"
#include "fapi/compile/tables.h"
#include "fapi/compile/text.h"

namespace {

using compile::kCompiledEnums;
using compile::kFields;
using compile::kIdBlocks;
using compile::kLabels;
using compile::kSignals;
using compile::kSlots;

// Returns the index of the first label whose value is not below `value`. There is no
// branch on the comparison, because the processor cannot predict it.
std::size_t FindFirstNotBelow(std::span<const CompiledLabel> labels, std::uint16_t value) {
  std::size_t first = 0;
  std::size_t count = labels.size();
  while (count > 1) {
    const std::size_t half = count / 2;
    first += half * static_cast<std::size_t>(labels[first + half - 1].value < value);
    count -= half;
  }
  return first + static_cast<std::size_t>(labels[first].value < value);
}

}  // namespace

constinit const std::array<char, kVocabularyTextCapacity> kVocabularyText = compile::JoinTexts();

const CompiledSignal* FindSignal(HipVersionTag version, std::uint16_t id) {
  const compile::IdBlock block = kIdBlocks[id >> 8U];
  const unsigned low_byte = id & 0xFFU;
  if (low_byte >= block.slot_count) return nullptr;
  const std::uint16_t slot = kSlots[GetIndex(version)][block.first_slot + low_byte];
  return slot == 0 ? nullptr : &kSignals[slot - 1U];
}

std::span<const CompiledField> GetFields(const CompiledSignal& signal) {
  return std::span(kFields).subspan(signal.first_field, signal.field_count);
}

bool HoldsSecret(const CompiledField& field) {
  return compile::kFieldsAreSecret[static_cast<std::size_t>(&field - kFields.data())];
}

PaddedText FindLabel(std::size_t enum_index, std::uint16_t value, HipVersionTag version) {
  const std::span<const CompiledLabel> labels = ListLabels(enum_index);
  const bool is_dense = value < kCompiledEnums[enum_index].dense_count;
  std::size_t i = is_dense ? value : FindFirstNotBelow(labels, value);
  for (; i < labels.size() && labels[i].value == value; ++i) {
    if (labels[i].versions.Contains(version)) return GetText(labels[i].text);
  }
  return {};
}

std::vector<KnownSignal> ListSignals(HipVersionTag version) {
  std::vector<KnownSignal> signals;
  for (unsigned id = 0; id <= 0xFFFF; ++id) {
    const auto id16 = static_cast<std::uint16_t>(id);
    if (const CompiledSignal* layout = FindSignal(version, id16)) signals.push_back({id16, layout});
  }
  return signals;
}

std::span<const CompiledSignal> ListLayouts() { return kSignals; }

std::size_t CountEnumerations() { return kCompiledEnums.size(); }

std::span<const CompiledLabel> ListLabels(std::size_t enum_index) {
  const compile::CompiledEnum& compiled = kCompiledEnums[enum_index];
  return std::span(kLabels).subspan(compiled.first_label, compiled.label_count);
}
