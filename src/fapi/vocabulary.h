#ifndef VRKT_FAPI_VOCABULARY_H_
#define VRKT_FAPI_VOCABULARY_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "base/padded_text.h"
#include "fapi/compiled_signal.h"
#include "fapi/hip_version_tags.h"

// The checked and compiled vocabularies of all versions.

// Returns the signal with this id in this version, or null. Takes constant time.
const CompiledSignal* FindSignal(HipVersionTag version, std::uint16_t id);

// The fields of a signal, in print order.
std::span<const CompiledField> GetFields(const CompiledSignal& signal);

// Returns the label of exactly this value in this version, or an empty text. Bit sets
// are looked up as a whole, not bit by bit. `enum_index` is from a kEnum16 field.
PaddedText FindLabel(std::uint8_t enum_index, std::uint16_t value, HipVersionTag version);

// All layouts of all signals in all versions, each once.
std::span<const CompiledSignal> ListSignals();

// The labels of an enumeration in all versions, in ascending order of value.
std::span<const CompiledLabel> ListLabels(std::uint8_t enum_index);

// All names and labels, each once. It is an array of fixed size because a pointer to
// the text would have to be relocated and loaded.
inline constexpr std::size_t kVocabularyTextCapacity = std::size_t{48} * 1024;
extern const std::array<char, kVocabularyTextCapacity> kVocabularyText;

inline PaddedText GetText(TextRange range) {
  return {kVocabularyText.data() + range.start, range.length};
}

#endif  // VRKT_FAPI_VOCABULARY_H_
