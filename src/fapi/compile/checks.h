#ifndef VRKT_FAPI_COMPILE_CHECKS_H_
#define VRKT_FAPI_COMPILE_CHECKS_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "fapi/compile/rows.h"
#include "fapi/compile/text.h"
#include "fapi/secret_fields.h"

// The rules that rows must keep together. g++ and clang print the template arguments
// with the message; they show the version, the id, the tables and the lines.
namespace compile {

// kIdDigits are hexadecimal, as the rows write an id. Compilers print a number in decimal.
template <char kVersion, const SignalTable* kTable, int kLine, const SignalTable* kOtherTable,
          int kOtherLine, char... kIdDigits>
consteval void IdNamesOneSignalInAVersion() {
  static_assert(kLine == 0, "two rows have one id in kVersion, on kLine and kOtherLine");
}

template <char kVersion, const SignalTable* kTable, int kLine, const SignalTable* kOtherTable,
          int kOtherLine>
consteval void NameHasOneIdInAVersion() {
  static_assert(kLine == 0, "a name has two ids in kVersion, on kLine and kOtherLine");
}

template <const EnumTable* kTable, char kVersion>
consteval void EnumHasLabelsOnlyWhereAFieldUsesIt() {
  static_assert(kTable == nullptr, "kTable has labels in kVersion, but no field uses it there");
}

template <const SignalTable* kTable, int kLine>
consteval void RowIsSortedByName() {
  static_assert(kLine == 0, "rows are sorted by name: see the row on line kLine");
}

struct RowFault {
  char version = 'A';
  unsigned id = 0;
  std::size_t table = 0;
  int line = 0;
  std::size_t other_table = 0;
  int other_line = 0;
};

// Finds two rows that have the same key in one version. Sorting puts rows with equal
// keys next to each other. Comparing all pairs would take the compiler minutes.
template <typename KeyFunction>
consteval RowFault FindTwoRowsWithOneKey(KeyFunction get_key) {
  std::array<std::uint64_t, kRowCount> sorted{};
  for (std::size_t i = 0; i < kRowCount; ++i) sorted[i] = PackKey(get_key(*kRows[i].layout), i);
  std::sort(sorted.begin(), sorted.end());
  for (std::size_t i = 1; i < kRowCount; ++i) {
    const VocabularyRow& row = kRows[UnpackIndex(sorted[i])];
    for (std::size_t j = i; j-- > 0 && UnpackKey(sorted[j]) == UnpackKey(sorted[i]);) {
      const VocabularyRow& other = kRows[UnpackIndex(sorted[j])];
      for (const HipVersionName& version : kHipVersionNames) {
        if (!row.layout->versions.Contains(version.tag)) continue;
        if (!other.layout->versions.Contains(version.tag)) continue;
        return {GetLetter(version.tag), row.layout->id, row.table,
                row.layout->name.line,  other.table,    other.layout->name.line};
      }
    }
  }
  return {};
}

inline constexpr RowFault kSharedId =
    FindTwoRowsWithOneKey([](const SignalLayout& row) { return row.id; });
inline constexpr RowFault kSharedName = FindTwoRowsWithOneKey(
    [](const SignalLayout& row) { return ComputeHash(MakePlainText(row.name.text)); });

consteval RowFault FindUnsortedRow() {
  for (std::size_t i = 1; i < kRowCount; ++i) {
    const VocabularyRow& row = kRows[i];
    const VocabularyRow& previous = kRows[i - 1];
    if (row.table != previous.table) continue;
    if (row.layout->name.text < previous.layout->name.text) {
      return {.table = row.table, .line = row.layout->name.line};
    }
  }
  return {};
}
inline constexpr RowFault kUnsortedRow = FindUnsortedRow();

struct UnusedLabels {
  const EnumTable* table = nullptr;
  char version = 'A';
};

consteval UnusedLabels FindUnusedLabels() {
  std::array<HipVersionSet, kEnums.count> used{};
  for (const VocabularyRow& row : kRows) {
    for (const FieldToken& field : row.fields()) {
      if (field.labels == nullptr) continue;
      used[FindEnumIndex(kEnums, field.labels)].Add(row.layout->versions);
    }
  }
  for (std::size_t i = 0; i < kEnums.count; ++i) {
    for (const HipVersionName& version : kHipVersionNames) {
      if (kEnums.tables[i]->versions.Contains(version.tag) && !used[i].Contains(version.tag)) {
        return {kEnums.tables[i], GetLetter(version.tag)};
      }
    }
  }
  return {};
}
inline constexpr UnusedLabels kUnusedLabels = FindUnusedLabels();

consteval bool EachSecretFieldIsInARow() {
  std::array<bool, std::size(kSecretFields)> found{};
  for (const VocabularyRow& row : kRows) {
    for (const FieldToken& field : row.fields()) {
      for (std::size_t i = 0; i < found.size(); ++i) found[i] |= field.name == kSecretFields[i];
    }
  }
  return std::find(found.begin(), found.end(), false) == found.end();
}
static_assert(EachSecretFieldIsInARow(), "kSecretFields has a name that no field has");

consteval char GetHexDigit(unsigned number, unsigned place) {
  return "0123456789ABCDEF"[number >> 4 * place & 0xFU];
}

consteval bool CheckVocabulary() {
  IdNamesOneSignalInAVersion<kSharedId.version, kSignalTables[kSharedId.table], kSharedId.line,
                             kSignalTables[kSharedId.other_table], kSharedId.other_line,
                             GetHexDigit(kSharedId.id, 3), GetHexDigit(kSharedId.id, 2),
                             GetHexDigit(kSharedId.id, 1), GetHexDigit(kSharedId.id, 0)>();
  NameHasOneIdInAVersion<kSharedName.version, kSignalTables[kSharedName.table], kSharedName.line,
                         kSignalTables[kSharedName.other_table], kSharedName.other_line>();
  RowIsSortedByName<kSignalTables[kUnsortedRow.table], kUnsortedRow.line>();
  EnumHasLabelsOnlyWhereAFieldUsesIt<kUnusedLabels.table, kUnusedLabels.version>();
  return true;
}
static_assert(CheckVocabulary());

}  // namespace compile

#endif  // VRKT_FAPI_COMPILE_CHECKS_H_
