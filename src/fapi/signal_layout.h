#ifndef VRKT_FAPI_SIGNAL_LAYOUT_H_
#define VRKT_FAPI_SIGNAL_LAYOUT_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "fapi/compiled_signal.h"
#include "fapi/enum_table.h"
#include "fapi/hip_version_tags.h"

// A row of the vocabulary:
//
//   Signal("ma_unitdata_req", 0x1000, "A-C", Min(32), Dump("data"), U16("vif"),
//          X16("host_tag"), Enum("priority", kUserPriority), ..., Spares()),
//
// It has the name, the id, the versions, the minimum length of a signal without bulk,
// and the dumps and fields in print order, dumps first. A name has one row per distinct
// layout. The first field starts at byte 10, after the signal header, and each other
// field directly after the one before it. `.At(12)` puts a field at byte 12 and skips
// the bytes before it, which never print.
//
// The rows exist only at compile time. A row that breaks a rule does not compile. The
// files in compile/ make the small tables that decoders use from the rows. Decoders do
// not use the rows themselves, because each row takes the space of the signal with the
// most fields and has a pointer to relocate for each name.

inline constexpr std::size_t kSignalHeaderSize = 10;
inline constexpr std::size_t kMaxFields = 20;  // dumps included
inline constexpr std::size_t kMaxNameLength = 48;
static_assert(kMaxNameLength + 4 <= kPaddedTextSize,
              "a name with the text around it is a PaddedText");

constexpr bool IsFieldOrSignalName(std::string_view name) {
  if (name.empty() || name.size() > kMaxNameLength) return false;
  return std::all_of(name.begin(), name.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
  });
}

// A field or a dump in a row. `offset` is unset until At() or SignalLayout::Add sets it.
struct FieldToken {
  static constexpr std::size_t kUnset = 0;  // in the signal header, where no field is

  // Puts the field at this byte of the signal, counted from 0.
  consteval FieldToken At(std::size_t byte) const {
    if (byte < kSignalHeaderSize) throw "bytes 0 to 9 are the signal header and hold no field";
    FieldToken placed = *this;
    placed.offset = byte;
    return placed;
  }
  constexpr std::size_t GetWidth() const { return GetForm(form).width * words; }

  std::string_view name{};
  FieldRenderer form{};
  std::size_t words = 1;
  const EnumTable* labels = nullptr;
  std::size_t offset = kUnset;
};

consteval FieldToken MakeField(const char* name, FieldRenderer form, std::size_t words = 1,
                               const EnumTable* labels = nullptr) {
  if (!IsFieldOrSignalName(name)) {
    throw "a field's name is 1 to kMaxNameLength characters of a-z, 0-9 and _";
  }
  return {.name = name, .form = form, .words = words, .labels = labels};
}

consteval FieldToken U8(const char* name) { return MakeField(name, FieldRenderer::kU8); }
consteval FieldToken U16(const char* name) { return MakeField(name, FieldRenderer::kU16); }
consteval FieldToken U32(const char* name) { return MakeField(name, FieldRenderer::kU32); }
consteval FieldToken I16(const char* name) { return MakeField(name, FieldRenderer::kI16); }
consteval FieldToken I32(const char* name) { return MakeField(name, FieldRenderer::kI32); }
consteval FieldToken X16(const char* name) { return MakeField(name, FieldRenderer::kX16); }
consteval FieldToken X32(const char* name) { return MakeField(name, FieldRenderer::kX32); }
consteval FieldToken Mac(const char* name) { return MakeField(name, FieldRenderer::kMac); }
consteval FieldToken Hex8(const char* name) { return MakeField(name, FieldRenderer::kHex8); }
consteval FieldToken X16NoSpace(const char* name) {
  return MakeField(name, FieldRenderer::kX16NoSpace);
}
consteval FieldToken Words(const char* name, std::size_t count) {
  if (count > kMaxWords) throw "too many words for an array: raise kMaxWords";
  return MakeField(name, FieldRenderer::kWords, count);
}
consteval FieldToken Enum(const char* name, const EnumTable& labels) {
  return MakeField(name, FieldRenderer::kEnum16, 1, &labels);
}

// Shows the bulk or, without bulk, the signal's bytes from Min on.
consteval FieldToken Dump(const char* name) { return MakeField(name, FieldRenderer::kDump); }

// spare_1, spare_2 and spare_3, 4 bytes each. Nearly every signal ends with them.
struct SparesToken {};
consteval SparesToken Spares() { return {}; }

// The minimum length of a signal without bulk, in bytes. It is nearly always the end
// of the last field. Min requires that, so a row with a missing field or a wrong width
// does not compile. MinDiffersFromEnd is for the other rows.
struct MinToken {
  std::size_t min;
  bool is_end_of_fields;
};
consteval MinToken Min(std::size_t min) { return {min, true}; }
consteval MinToken MinDiffersFromEnd(std::size_t min) { return {min, false}; }

// A signal's name and the line of its row, for the compiler's messages.
struct SignalName {
  constexpr SignalName() = default;
  // Not explicit, so that a row can begin with a string literal.
  // cppcheck-suppress noExplicitConstructor
  consteval SignalName(const char* name,  // NOLINT(google-explicit-constructor)
                       int source_line = __builtin_LINE())
      : text(name), line(source_line) {
    if (!IsFieldOrSignalName(name)) {
      throw "a signal's name is 1 to kMaxNameLength characters of a-z, 0-9 and _";
    }
  }

  std::string_view text;
  int line = 0;
};

struct SignalLayout {
  constexpr SignalLayout() = default;
  constexpr SignalLayout(const SignalName& row_name, unsigned row_id, HipVersionSet row_versions)
      : name(row_name), id(static_cast<std::uint16_t>(row_id)), versions(row_versions) {
    if (row_id > 0xFFFF) throw "a signal's id has 16 bits";
  }

  SignalName name;
  std::uint16_t id = 0;
  HipVersionSet versions;
  std::size_t min = 0;
  std::size_t end = kSignalHeaderSize;
  std::size_t field_count = 0;
  std::array<FieldToken, kMaxFields> fields{};
  bool ends_in_spares = false;

  constexpr void Add(FieldToken field) {
    ends_in_spares = false;
    if (field_count == kMaxFields) throw "too many fields for a row: raise kMaxFields";
    if (field.form == FieldRenderer::kDump) {
      if (end > kSignalHeaderSize) throw "dumps are printed before the fields: write them first";
      if (field.offset != FieldToken::kUnset) throw "a dump has no place of its own: remove At";
      fields[field_count++] = field;
      return;
    }
    if (field.offset == FieldToken::kUnset) field.offset = end;
    if (field.offset < end) throw "a field starts before the end of the field before it";
    if (field.form == FieldRenderer::kEnum16 && !field.labels->versions.ContainsAll(versions)) {
      throw "an enumeration has no labels in a version of this signal";
    }
    end = field.offset + field.GetWidth();
    if (end > kMaxSignalEnd) throw "a field ends after kMaxSignalEnd: raise it";
    fields[field_count++] = field;
  }
  constexpr void Add(SparesToken /*spares*/) {
    Add(U32("spare_1"));
    Add(U32("spare_2"));
    Add(U32("spare_3"));
    ends_in_spares = true;
  }
  constexpr void SetMin(std::size_t row_min) {
    if (row_min < kSignalHeaderSize || row_min > kMaxSignalEnd) {
      throw "Min is outside the range of signal lengths, 10 to kMaxSignalEnd";
    }
    min = row_min;
  }
};

template <typename... Tokens>
consteval SignalLayout Signal(SignalName name, unsigned id, HipVersionSet versions, MinToken min,
                              Tokens... tokens) {
  SignalLayout row(name, id, versions);
  (row.Add(tokens), ...);
  row.SetMin(min.min);
  if (min.is_end_of_fields && min.min != row.end) {
    throw "Min is not the end of the last field: correct it, or write MinDiffersFromEnd";
  }
  if (!min.is_end_of_fields && min.min == row.end) {
    throw "Min is the end of the last field: write Min instead of MinDiffersFromEnd";
  }
  return row;
}

// The rows of one file.
struct SignalTable {
  std::span<const SignalLayout> rows;
};

#endif  // VRKT_FAPI_SIGNAL_LAYOUT_H_
