#ifndef VRKT_FAPI_COMPILE_ROWS_H_
#define VRKT_FAPI_COMPILE_ROWS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "fapi/enum_table.h"
#include "fapi/signal_layout.h"
#include "fapi/signals/connection.h"
#include "fapi/signals/data_plane.h"
#include "fapi/signals/debug.h"
#include "fapi/signals/management.h"
#include "fapi/signals/nan.h"
#include "fapi/signals/radio_test.h"
#include "fapi/signals/scan.h"
#include "fapi/signals/security.h"
#include "fapi/signals/spare.h"
#include "fapi/signals/test.h"

// All rows of the vocabulary, and the enumerations that their fields use. Only
// vocabulary.cc includes the files in this directory.
namespace compile {

inline constexpr const SignalTable* kSignalTables[] = {
    &kDataPlaneSignals, &kManagementSignals, &kScanSignals, &kConnectionSignals, &kSecuritySignals,
    &kNanSignals,       &kDebugSignals,      &kTestSignals, &kRadioTestSignals,  &kSpareSignals,
};

consteval std::size_t CountRows() {
  std::size_t count = 0;
  for (const SignalTable* table : kSignalTables) count += table->rows.size();
  return count;
}
inline constexpr std::size_t kRowCount = CountRows();

struct VocabularyRow {
  const SignalLayout* layout;
  std::size_t table;  // index of kSignalTables

  constexpr std::span<const FieldToken> fields() const {
    return std::span(layout->fields).first(layout->field_count);
  }
};

consteval std::array<VocabularyRow, kRowCount> CollectRows() {
  std::array<VocabularyRow, kRowCount> rows{};
  std::size_t next = 0;
  for (std::size_t table = 0; table < std::size(kSignalTables); ++table) {
    for (const SignalLayout& layout : kSignalTables[table]->rows) rows[next++] = {&layout, table};
  }
  return rows;
}
inline constexpr std::array<VocabularyRow, kRowCount> kRows = CollectRows();

consteval std::size_t CountFields() {
  std::size_t count = 0;
  for (const VocabularyRow& row : kRows) count += row.fields().size();
  return count;
}
inline constexpr std::size_t kFieldCount = CountFields();

struct EnumList {
  std::array<const EnumTable*, 256> tables{};  // CompiledField has one byte for the index
  std::size_t count = 0;
};

constexpr std::size_t FindEnumIndex(const EnumList& list, const EnumTable* table) {
  std::size_t index = 0;
  while (index < list.count && list.tables[index] != table) ++index;
  return index;
}

consteval EnumList CollectEnums() {
  EnumList list;
  for (const VocabularyRow& row : kRows) {
    for (const FieldToken& field : row.fields()) {
      if (field.labels == nullptr || FindEnumIndex(list, field.labels) < list.count) continue;
      if (list.count == list.tables.size()) throw "too many enumerations: widen enum_index";
      list.tables[list.count++] = field.labels;
    }
  }
  return list;
}
inline constexpr EnumList kEnums = CollectEnums();

consteval std::size_t CountLabels() {
  std::size_t count = 0;
  for (std::size_t i = 0; i < kEnums.count; ++i) count += kEnums.tables[i]->labels.size();
  return count;
}
inline constexpr std::size_t kLabelCount = CountLabels();

// Sorting words with a key of 48 bits above an index of 16 bits takes the compiler about
// a tenth of the steps of sorting structures.
constexpr std::uint64_t PackKey(std::uint64_t key, std::size_t index) { return key << 16U | index; }
constexpr std::uint64_t UnpackKey(std::uint64_t packed) { return packed >> 16U; }
constexpr std::size_t UnpackIndex(std::uint64_t packed) { return packed & 0xFFFFU; }

}  // namespace compile

#endif  // VRKT_FAPI_COMPILE_ROWS_H_
