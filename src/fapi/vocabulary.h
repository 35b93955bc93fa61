#ifndef VRKT_FAPI_VOCABULARY_H_
#define VRKT_FAPI_VOCABULARY_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "base/padded_text.h"
#include "fapi/compiled_signal.h"
#include "fapi/hip_version_tags.h"

// The checked and compiled vocabularies of all versions.

// Returns the signal with this id in this version, or null. Takes constant time.
const CompiledSignal* FindSignal(HipVersionTag version, std::uint16_t id);

// The dumps and fields of a signal, in print order.
std::span<const CompiledField> GetFields(const CompiledSignal& signal);

// Whether a log gives something away by this field of a signal, so that it is not kept when the
// log is redacted: see secret_fields.h. Dumps and addresses are not among these fields.
bool HoldsSecret(const CompiledField& field);

// Returns the label of exactly this value in this version, or an empty text. Bit sets
// are looked up as a whole, not bit by bit. `enum_index` is from a kEnum16 field.
PaddedText FindLabel(std::size_t enum_index, std::uint16_t value, HipVersionTag version);

struct KnownSignal {
  std::uint16_t id;
  const CompiledSignal* layout;
};

// The signals of a version, in ascending order of id.
std::vector<KnownSignal> ListSignals(HipVersionTag version);

// All layouts of all signals in all versions, each once.
std::span<const CompiledSignal> ListLayouts();

// The number of enumerations. Their indices count from 0.
std::size_t CountEnumerations();

// The labels of an enumeration in all versions, in ascending order of value.
std::span<const CompiledLabel> ListLabels(std::size_t enum_index);

// All names and labels, each once. A field's name has a blank before it and a colon after
// it. It is an array of fixed size because a pointer to
// the text would have to be relocated and loaded.
inline constexpr std::size_t kVocabularyTextCapacity = std::size_t{48} * 1024;
extern const std::array<char, kVocabularyTextCapacity> kVocabularyText;

inline PaddedText GetText(TextRange range) {
  return {kVocabularyText.data() + range.start, range.length};
}

// The text before a field's value: a blank, the name and a colon, as in " vif:". Some
// fields have no blank before their name.
inline PaddedText GetPrefix(const CompiledField& field, bool has_blank) {
  const std::size_t blank = has_blank ? 1 : 0;
  return {kVocabularyText.data() + field.name.start - blank, blank + field.name.length + 1};
}

#endif  // VRKT_FAPI_VOCABULARY_H_
