#ifndef VRKT_FAPI_ENUM_TABLE_H_
#define VRKT_FAPI_ENUM_TABLE_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>

#include "fapi/hip_version_tags.h"

// The labels of enumerated fields.
//
// One row is one label with the versions that know it, so a label that moved
// or was reworded is simply a further row, and a reader sees side by side what
// the versions call a value. One table serves all versions: a look-up finds the
// value first and then the row of the decoder's own version. (A table for each
// version would save that last step and be written out twelve times.) All
// checks run in the compiler, and nothing is left to be done at start.

inline constexpr std::size_t kMaxLabelLength = 64;

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
consteval EnumLabel Label(std::uint16_t value, const char* text, HipVersionSet versions,
                          int line = __builtin_LINE()) {
  const std::string_view label = text;
  if (label.empty()) throw "a label must have a text";
  if (label.size() > kMaxLabelLength) throw "a label is too long: raise kMaxLabelLength";
  for (const char c : label) {
    if (c < ' ' || c > '~') throw "a label is printable ASCII";
  }
  return {value, versions, line, label};
}

// How many labels a table must have in each version, so that a lost row does
// not pass. Written as in {{"A-B", 19}, {"C", 23}}; a version that is not named
// must have none.
struct LabelCounts {
  struct Entry {
    HipVersionSet versions;
    std::size_t count;
  };
  consteval LabelCounts(std::initializer_list<Entry> entries) {
    for (std::size_t version = 0; version < kHipVersionCount; ++version) {
      of_version[version] = 0;
      for (const Entry& entry : entries) {
        if (entry.versions.Contains(version)) of_version[version] = entry.count;
      }
    }
  }

  std::size_t of_version[kHipVersionCount];
};

// The labels of one enumerated field (or of several that share them).
class EnumTable {
 public:
  // Unchecked: tables are made by LabelTable below.
  consteval explicit EnumTable(std::span<const EnumLabel> labels) : labels_(labels) {
    for (const EnumLabel& label : labels) versions_.Add(label.versions);
  }
  EnumTable(const EnumTable&) = delete;
  EnumTable& operator=(const EnumTable&) = delete;

  // The label of exactly this value in this version, empty if it has none
  // there. No bit of a value is ever looked at by itself.
  constexpr std::string_view Find(std::uint16_t value, HipVersionTag version) const {
    auto label = std::ranges::lower_bound(labels_, value, {}, &EnumLabel::value);
    for (; label != labels_.end() && label->value == value; ++label) {
      if (label->versions.Contains(version)) return label->text;
    }
    return {};
  }

  constexpr std::span<const EnumLabel> labels() const { return labels_; }
  // The versions in which the table says anything at all.
  constexpr HipVersionSet versions() const { return versions_; }

 private:
  std::span<const EnumLabel> labels_;
  HipVersionSet versions_;
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

template <char kVersion, std::size_t kExpected, std::size_t kActual>
consteval void VersionHasItsNumberOfLabels() {
  static_assert(kExpected == kActual, "the table has kActual labels in kVersion, not kExpected");
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

struct CountFault {
  char version = 'A';
  std::size_t expected = 0;
  std::size_t actual = 0;
};

consteval CountFault FindWrongCount(std::span<const EnumLabel> labels, const LabelCounts& counts) {
  for (std::size_t version = 0; version < kHipVersionCount; ++version) {
    std::size_t actual = 0;
    for (const EnumLabel& label : labels) actual += label.versions.Contains(version) ? 1 : 0;
    const std::size_t expected = counts.of_version[version];
    if (actual != expected) return {TagLetter(version), expected, actual};
  }
  return {};
}

}  // namespace enum_table_checks

// The table of `kLabels`, an array of EnumLabel in order of value, then of
// first version, after all of its checks.
template <const auto& kLabels, LabelCounts kCounts>
consteval EnumTable LabelTable() {
  using namespace enum_table_checks;
  constexpr LabelFault kUnsorted = FindUnsortedLabel(kLabels);
  LabelIsSortedByValue<kUnsorted.value, kUnsorted.line>();
  constexpr LabelFault kSecond = FindSecondLabel(kLabels);
  ValueHasOneLabelInAVersion<kSecond.value, kSecond.line, kSecond.other_line>();
  constexpr CountFault kWrong = FindWrongCount(kLabels, kCounts);
  VersionHasItsNumberOfLabels<kWrong.version, kWrong.expected, kWrong.actual>();
  return EnumTable(kLabels);
}

#endif  // VRKT_FAPI_ENUM_TABLE_H_
