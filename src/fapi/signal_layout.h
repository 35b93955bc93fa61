#ifndef VRKT_FAPI_SIGNAL_LAYOUT_H_
#define VRKT_FAPI_SIGNAL_LAYOUT_H_

#include <array>
#include <cstddef>
#include <cstdint>

#include "fapi/enum_table.h"

// What a decoder is given to print one signal. The compiler makes these from
// the rows of src/fapi/signals/ (see signal_row.h and vocabulary.cc).

// The forms in which a field prints; there is no other. The comments tell which
// bytes are read at the field's offset and what stands behind the name.
// Integers are little-endian. (kSpares is three kU32 fields, which nearly every
// signal ends in: a form of their own prints them as one piece.)
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
  kSpares,      // 3 times 4 bytes                    " spare_1:%u spare_2:%u spare_3:%u"
};

inline constexpr std::size_t kMaxWords = 16;  // of a kWords field

// A stretch of the layout text, in which the constant part of every field
// stands once: the blank, the name, and all that precedes the value.
struct LayoutText {
  std::uint16_t start;
  std::uint8_t length;
};

// One field. `offset` counts from byte 0 of the signal.
struct FieldLayout {
  const EnumTable* labels;  // kEnum16 only, else null
  LayoutText head;          // as in " vif:", " host_tag:0x", " debug_words:["
  std::uint8_t offset;
  FieldRenderer renderer;
  std::uint8_t words;  // kWords only, else 0
};

inline constexpr std::size_t kMaxDumps = 2;

// One signal of one or several versions.
struct SignalLayout {
  LayoutText name;
  std::uint8_t min;         // the least length, in bytes, of a signal without bulk
  std::uint8_t end;         // where the last of the fixed fields ends
  std::uint8_t dump_count;  // dumps print before the fields, wherever their bytes lie
  std::uint8_t field_count;
  std::uint16_t first_field;                // in the vocabulary's field list, in print order
  std::array<LayoutText, kMaxDumps> dumps;  // as in " data:{"
};

#endif  // VRKT_FAPI_SIGNAL_LAYOUT_H_
