#ifndef VRKT_FAPI_ENUM_TABLE_H_
#define VRKT_FAPI_ENUM_TABLE_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "base/padded_text.h"
#include "fapi/hip_version_tags.h"

// The tables of labels in enumerations/.
//
// One row is one label with the versions that have it. If the label of a value changes
// between versions, each wording is a row, next to the others.
//
// The files in compile/ make the tables that decoders use from these.

// One label of one value in some versions. `line` is the row's line in the source, for
// the compiler's messages.
struct EnumLabel {
  std::uint16_t value;
  HipVersionSet versions;
  int line;
  std::string_view text;
};

// Makes a row of a table. It is a function because for a row in plain braces g++
// reports the line on which the whole table ends.
consteval EnumLabel Label(unsigned value, const char* text, HipVersionSet versions,
                          int line = __builtin_LINE()) {
  if (value > 0xFFFF) throw "an enumerated value has 16 bits";
  const std::string_view label = text;
  if (label.empty()) throw "a label must have a text";
  if (label.size() > kPaddedTextSize) throw "a label is too long: raise kPaddedTextSize";
  for (const char c : label) {
    if (c < ' ' || c > '~') throw "a label must be printable ASCII";
  }
  return {static_cast<std::uint16_t>(value), versions, line, label};
}

// The labels of one enumerated field, or of several fields that share them. Its
// address identifies the table.
struct EnumTable {
  // Does not check the labels; use MakeEnumTable.
  explicit consteval EnumTable(std::span<const EnumLabel> table_labels) : labels(table_labels) {
    for (const EnumLabel& label : labels) versions.Add(label.versions);
  }
  EnumTable(const EnumTable&) = delete;
  EnumTable& operator=(const EnumTable&) = delete;

  std::span<const EnumLabel> labels;
  HipVersionSet versions;  // the versions that have any label
};

// The checks of a table. g++ and clang print the template arguments with the message;
// they show the value and the line.
namespace enum_table_checks {

template <unsigned kValue, int kLine>
consteval void LabelIsSortedByValue() {
  static_assert(kLine == 0, "labels are sorted by value: see the label on line kLine");
}

template <unsigned kValue, int kLine, int kOtherLine>
consteval void ValueHasOneLabelInAVersion() {
  static_assert(kLine == 0, "kValue has two labels in one version, on kLine and kOtherLine");
}

struct LabelFault {
  unsigned value = 0;
  int line = 0;
  int other_line = 0;
};

consteval LabelFault FindUnsortedLabel(std::span<const EnumLabel> labels) {
  for (std::size_t row = 1; row < labels.size(); ++row) {
    if (labels[row].value < labels[row - 1].value) return {labels[row].value, labels[row].line};
  }
  return {};
}

consteval LabelFault FindSecondLabel(std::span<const EnumLabel> labels) {
  for (std::size_t row = 1; row < labels.size(); ++row) {
    const EnumLabel& label = labels[row];
    for (std::size_t other = row; other-- > 0 && labels[other].value == label.value;) {
      if (labels[other].versions.Overlaps(label.versions)) {
        return {label.value, label.line, labels[other].line};
      }
    }
  }
  return {};
}

}  // namespace enum_table_checks

// Makes the table of `kLabels`, an array of EnumLabel sorted by value, then by first
// version.
template <const auto& kLabels>
consteval EnumTable MakeEnumTable() {
  constexpr enum_table_checks::LabelFault kUnsorted = enum_table_checks::FindUnsortedLabel(kLabels);
  enum_table_checks::LabelIsSortedByValue<kUnsorted.value, kUnsorted.line>();
  constexpr enum_table_checks::LabelFault kSecond = enum_table_checks::FindSecondLabel(kLabels);
  enum_table_checks::ValueHasOneLabelInAVersion<kSecond.value, kSecond.line, kSecond.other_line>();
  return EnumTable(kLabels);
}

#endif  // VRKT_FAPI_ENUM_TABLE_H_
