#ifndef VRKT_FAPI_COMPILED_SIGNAL_H_
#define VRKT_FAPI_COMPILED_SIGNAL_H_

#include <array>
#include <cstddef>
#include <cstdint>

#include "fapi/hip_version_tags.h"

// The vocabulary as decoders read it. vocabulary.cc makes it at compile time from the
// rows in src/fapi/signals/ and the labels in src/fapi/enumerations/. It has offsets
// and indices instead of pointers, so there is nothing to relocate when the tool
// starts.

// How a field prints. The comments give the bytes at the field's offset and the text
// after the field's name. Integers are little-endian. kSpares is three kU32 fields,
// with which nearly every signal ends. They print as one piece.
enum class FieldRenderer : std::uint8_t {
  kU8,          // 1 byte                             ":%u"
  kU16,         // 2 bytes                            ":%u"
  kU32,         // 4 bytes                            ":%u"
  kI16,         // 2 bytes, two's complement          ":%d"
  kI32,         // 4 bytes, two's complement          ":%d"
  kX16,         // 2 bytes                            ":0x%.4x"
  kX16NoSpace,  // 2 bytes; no blank before the name  ":0x%.4x"
  kX32,         // 4 bytes                            ":0x%.8x"
  kMac,         // 6 bytes in stored order            ":%.2x:%.2x:%.2x:%.2x:%.2x:%.2x"
  kHex8,        // 8 bytes in stored order            ":0x%.2x%.2x%.2x%.2x%.2x%.2x%.2x%.2x"
  kWords,       // a fixed number of 2-byte words     ":[", "0x%.4x " for each, "]"
  kEnum16,      // 2 bytes                            ":" and a label, or the version's default form
  kSpares,      // 3 times 4 bytes                    ":%u spare_2:%u spare_3:%u"
};

inline constexpr std::size_t kMaxWords = 16;  // in a kWords field

// A part of the vocabulary's text; both numbers are in bytes.
struct TextRange {
  std::uint16_t start;
  std::uint8_t length;
};

// One field.
struct CompiledField {
  TextRange prefix;     // the text before the value, as in " vif:" or " host_tag:0x"
  std::uint8_t offset;  // from byte 0 of the signal, in bytes
  FieldRenderer renderer;
  std::uint8_t words;       // the number of words for kWords, else 0
  std::uint8_t enum_index;  // the argument of FindLabel for kEnum16, else 0
};
static_assert(sizeof(CompiledField) == 8);

// One label of an enumerated field.
struct CompiledLabel {
  std::uint16_t value;
  HipVersionSet versions;
  TextRange text;
};

inline constexpr std::size_t kMaxDumps = 2;

// A signal's layout, which one or more versions share.
struct CompiledSignal {
  TextRange name;
  std::uint8_t min;         // the minimum length, in bytes, of a signal without bulk
  std::uint8_t end;         // the end of the last field, in bytes
  std::uint8_t dump_count;  // dumps print before the fields
  std::uint8_t field_count;
  std::uint16_t first_field;                       // see GetFields
  std::array<TextRange, kMaxDumps> dump_prefixes;  // as in " data:{"
};

#endif  // VRKT_FAPI_COMPILED_SIGNAL_H_
