#ifndef VRKT_FAPI_COMPILED_SIGNAL_H_
#define VRKT_FAPI_COMPILED_SIGNAL_H_

#include <cstddef>
#include <cstdint>

#include "fapi/field_forms.h"
#include "fapi/hip_version_tags.h"

// The vocabulary as decoders read it. The files in compile/ make it at compile time from
// the rows in signals/ and the labels in enumerations/. It has offsets and indices
// instead of pointers, so there is nothing to relocate when the tool starts.

// All fields of all signals end before this byte of the signal.
inline constexpr std::size_t kMaxSignalEnd = 64;

inline constexpr std::size_t kMaxWords = 16;  // in a kWords field

// A part of the vocabulary's text; both numbers are in bytes.
struct TextRange {
  std::uint16_t start;
  std::uint8_t length;
};

// One field or dump.
struct CompiledField {
  TextRange name;       // as in "vif"; see also GetPrefix
  std::uint8_t offset;  // from byte 0 of the signal, in bytes; 0 for kDump
  FieldRenderer form;
  std::uint8_t words;       // the number of words for kWords, else 1
  std::uint8_t enum_index;  // the argument of FindLabel for kEnum16, else 0
};
static_assert(sizeof(CompiledField) == 8);

// The width of a field, in bytes.
constexpr std::size_t GetWidth(const CompiledField& field) {
  return std::size_t{GetForm(field.form).width} * field.words;
}

// One label of an enumerated field.
struct CompiledLabel {
  std::uint16_t value;
  HipVersionSet versions;
  TextRange text;
};

// Nearly every signal ends with spare_1, spare_2 and spare_3, of 4 bytes each.
inline constexpr std::size_t kSpareCount = 3;

// A signal's layout, which one or more versions share.
struct CompiledSignal {
  TextRange name;
  std::uint8_t min;           // the minimum length, in bytes, of a signal without bulk
  std::uint8_t end;           // the end of the last field, in bytes
  std::uint16_t first_field;  // see GetFields
  std::uint8_t field_count;
  bool ends_in_spares;  // whether it has all three, as its last fields
};

#endif  // VRKT_FAPI_COMPILED_SIGNAL_H_
