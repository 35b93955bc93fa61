#ifndef VRKT_FAPI_VOCABULARY_H_
#define VRKT_FAPI_VOCABULARY_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "base/padded_text.h"
#include "fapi/compiled_signal.h"
#include "fapi/hip_version_tags.h"

// The vocabularies of all versions, compiled and checked.

// The signal with this id in this version, in constant time; null if the version
// does not know the id.
const CompiledSignal* FindSignal(HipVersionTag version, std::uint16_t id);

// The fields of a signal, in print order.
std::span<const CompiledField> GetFields(const CompiledSignal& signal);

// The label of exactly this value in this version, empty if it has none. No bit
// of the value is looked up by itself. `enum_index` is that of a kEnum16 field.
PaddedText FindLabel(std::uint8_t enum_index, std::uint16_t value, HipVersionTag version);

// All signals of all versions, each once.
std::span<const CompiledSignal> ListSignals();

// The labels of an enumeration in all versions, in ascending order of values.
std::span<const CompiledLabel> ListLabels(std::uint8_t enum_index);

// All names and labels, each once. A fixed size lets callers address the text
// directly; a pointer to it would have to be relocated and loaded.
inline constexpr std::size_t kVocabularyTextCapacity = std::size_t{48} * 1024;
extern const std::array<char, kVocabularyTextCapacity> kVocabularyText;

inline PaddedText GetText(TextRange range) {
  return {kVocabularyText.data() + range.start, range.length};
}

#endif  // VRKT_FAPI_VOCABULARY_H_
