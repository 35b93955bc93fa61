#ifndef VRKT_FAPI_ENUM_TABLE_H_
#define VRKT_FAPI_ENUM_TABLE_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <string_view>

#include "base/padded_text.h"
#include "fapi/hip_version_tags.h"

// The labels of enumerated fields.
//
// One row is one label with the versions that know it, so a label that moved
// or was reworded is simply a further row, and a reader sees side by side what
// the versions call a value. One table serves all versions: a look-up finds the
// value first and then the row of the decoder's own version. (A table for each
// version would save that last step and be written out twelve times.) All
// checks run in the compiler, and nothing is left to be done at start.

inline constexpr std::size_t kMaxLabelLength = kPaddedTextSize;

// One label of one value, valid in `versions`. `line` is where the row stands in
// the source, for the compiler's messages.
struct EnumLabel {
  std::uint16_t value;
  HipVersionSet versions;
  int line;
  std::string_view text;
};

// A row of a table. (A call, because g++ gives a bare brace the line on which
// the whole table ends.)
consteval EnumLabel Label(unsigned value, const char* text, HipVersionSet versions,
                          int line = __builtin_LINE()) {
  if (value > 0xFFFF) throw "an enumerated value has 16 bits";
  const std::string_view label = text;
  if (label.empty()) throw "a label must have a text";
  if (label.size() > kMaxLabelLength) throw "a label is too long: raise kMaxLabelLength";
  for (const char c : label) {
    if (c < ' ' || c > '~') throw "a label is printable ASCII";
  }
  return {static_cast<std::uint16_t>(value), versions, line, label};
}

// The labels of one enumerated field (or of several that share them), laid down
// for look-ups: the values by themselves, then what belongs to each, then all
// texts.
class EnumTable {
 public:
  struct Entry {
    std::uint16_t text_start = 0;
    std::uint8_t text_size = 0;
    HipVersionSet versions;
  };

  // Unchecked: tables are made by LabelTable below. The values rise; the texts
  // have kPaddedTextSize bytes behind the last one.
  consteval EnumTable(std::span<const std::uint16_t> values, const Entry* entries,
                      const char* texts)
      : values_(values), entries_(entries), texts_(texts) {
    for (std::size_t row = 0; row < values.size(); ++row) versions_.Add(entries[row].versions);
    while (counted_ < values.size() && values[counted_] == counted_) ++counted_;
  }
  EnumTable(const EnumTable&) = delete;
  EnumTable& operator=(const EnumTable&) = delete;

  // The label of exactly this value in this version, empty if it has none
  // there. No bit of a value is ever looked at by itself.
  constexpr PaddedText Find(std::uint16_t value, HipVersionTag version) const {
    const std::size_t first = value < counted_ ? value : LowerBound(value);
    for (std::size_t row = first; row < values_.size() && values_[row] == value; ++row) {
      if (entries_[row].versions.Contains(version)) return text(row);
    }
    return {};
  }

  constexpr std::size_t size() const { return values_.size(); }
  constexpr std::uint16_t value(std::size_t row) const { return values_[row]; }
  constexpr HipVersionSet versions(std::size_t row) const { return entries_[row].versions; }
  constexpr PaddedText text(std::size_t row) const {
    return {texts_ + entries_[row].text_start, entries_[row].text_size};
  }
  // The versions in which the table says anything at all.
  constexpr HipVersionSet versions() const { return versions_; }

 private:
  // The first row whose value is not below `value`. The comparison's result is a
  // factor and not a branch: which way it goes is anybody's guess.
  constexpr std::size_t LowerBound(std::uint16_t value) const {
    std::size_t first = 0;
    std::size_t count = values_.size();
    while (count > 1) {
      const std::size_t half = count / 2;
      first += half * static_cast<std::size_t>(values_[first + half - 1] < value);
      count -= half;
    }
    return first + static_cast<std::size_t>(values_[first] < value);
  }

  std::span<const std::uint16_t> values_;
  const Entry* entries_;
  const char* texts_;
  HipVersionSet versions_;
  // How many rows from the first on have the values 0, 1, 2 and so forth: nearly
  // all that is looked up is among them.
  std::size_t counted_ = 0;
};

// The checks of a table. What is wrong and where stands in the template
// arguments, which both compilers print with the message.
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

// A table's rows as EnumTable wants them.
template <std::size_t kRows, std::size_t kTextSize>
struct LaidDownLabels {
  std::array<std::uint16_t, kRows> values{};
  std::array<EnumTable::Entry, kRows> entries{};
  std::array<char, kTextSize + kPaddedTextSize> texts{};
};

consteval std::size_t SumTextSizes(std::span<const EnumLabel> labels) {
  std::size_t size = 0;
  for (const EnumLabel& label : labels) size += label.text.size();
  return size;
}

template <const auto& kLabels>
consteval auto LayDownLabels() {
  constexpr std::size_t kTextSize = SumTextSizes(kLabels);
  static_assert(kTextSize <= 0xFFFF, "the texts grew too long for EnumTable::Entry");
  LaidDownLabels<std::size(kLabels), kTextSize> labels;
  std::size_t start = 0;
  for (std::size_t row = 0; row < std::size(kLabels); ++row) {
    const EnumLabel& label = kLabels[row];
    labels.values[row] = label.value;
    labels.entries[row] = {static_cast<std::uint16_t>(start),
                           static_cast<std::uint8_t>(label.text.size()), label.versions};
    for (const char c : label.text) labels.texts[start++] = c;
  }
  return labels;
}

template <const auto& kLabels>
inline constexpr auto kLaidDownLabels = LayDownLabels<kLabels>();

// The table of `kLabels`, an array of EnumLabel in order of value, then of
// first version, after all of its checks.
template <const auto& kLabels>
consteval EnumTable LabelTable() {
  constexpr enum_table_checks::LabelFault kUnsorted = enum_table_checks::FindUnsortedLabel(kLabels);
  enum_table_checks::LabelIsSortedByValue<kUnsorted.value, kUnsorted.line>();
  constexpr enum_table_checks::LabelFault kSecond = enum_table_checks::FindSecondLabel(kLabels);
  enum_table_checks::ValueHasOneLabelInAVersion<kSecond.value, kSecond.line, kSecond.other_line>();
  constexpr const auto& kLaidDown = kLaidDownLabels<kLabels>;
  return EnumTable(kLaidDown.values, kLaidDown.entries.data(), kLaidDown.texts.data());
}

#endif  // VRKT_FAPI_ENUM_TABLE_H_
