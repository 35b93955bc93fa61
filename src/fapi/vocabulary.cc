// Compiles the catalogue: checks all rows of all families against each other and
// converts rows and labels to the constant tables that decoders use. All of this
// happens at compile time, so the tool builds nothing when it starts.
//
// The tables are small, so that the part in use stays in the processor's cache. Each
// label and each constant text before a value (" vif:", " data:{") is stored once,
// even if many signals share it. A field takes 8 bytes.

#include "fapi/vocabulary.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

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

namespace {

constexpr const SignalTable* kFamilies[] = {
    &kDataPlaneSignals, &kManagementSignals, &kScanSignals, &kConnectionSignals, &kSecuritySignals,
    &kNanSignals,       &kDebugSignals,      &kTestSignals, &kRadioTestSignals,  &kSpareSignals,
};

consteval std::size_t CountRows() {
  std::size_t count = 0;
  for (const SignalTable* family : kFamilies) count += family->rows.size();
  return count;
}
constexpr std::size_t kRowCount = CountRows();

struct CatalogueRow {
  const SignalLayout* layout;
  std::size_t family;
};

consteval std::array<CatalogueRow, kRowCount> CollectRows() {
  std::array<CatalogueRow, kRowCount> rows{};
  std::size_t next = 0;
  for (std::size_t family = 0; family < std::size(kFamilies); ++family) {
    for (const SignalLayout& layout : kFamilies[family]->rows) rows[next++] = {&layout, family};
  }
  return rows;
}
constexpr std::array<CatalogueRow, kRowCount> kRows = CollectRows();

consteval std::size_t CountFields() {
  std::size_t count = 0;
  for (const CatalogueRow& row : kRows) count += row.layout->field_count;
  return count;
}
constexpr std::size_t kFieldCount = CountFields();

consteval std::size_t CountDumps() {
  std::size_t count = 0;
  for (const CatalogueRow& row : kRows) count += row.layout->dump_count;
  return count;
}
constexpr std::size_t kDumpCount = CountDumps();

// ---------------------------------------------------------------------------
// The enumerations that fields use.

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
  for (const CatalogueRow& row : kRows) {
    for (std::size_t i = 0; i < row.layout->field_count; ++i) {
      const EnumTable* const table = row.layout->fields[i].labels;
      if (table == nullptr || FindEnumIndex(list, table) < list.count) continue;
      if (list.count == list.tables.size()) throw "too many enumerations: widen enum_index";
      list.tables[list.count++] = table;
    }
  }
  return list;
}
constexpr EnumList kEnums = CollectEnums();

consteval std::size_t CountLabels() {
  std::size_t count = 0;
  for (std::size_t i = 0; i < kEnums.count; ++i) count += kEnums.tables[i]->labels.size();
  return count;
}
constexpr std::size_t kLabelCount = CountLabels();

// ---------------------------------------------------------------------------
// The text.

// A signal name, a label or the text before a value, in up to three parts.
struct ConstantText {
  std::array<std::string_view, 3> parts{};

  constexpr std::size_t size() const { return parts[0].size() + parts[1].size() + parts[2].size(); }
  constexpr bool operator==(const ConstantText&) const = default;
};

constexpr ConstantText MakePlainText(std::string_view text) { return {{"", text, ""}}; }
constexpr ConstantText MakeDumpPrefix(std::string_view name) { return {{" ", name, ":{"}}; }
constexpr ConstantText MakeFieldPrefix(const FieldToken& field) {
  switch (field.renderer) {
    case FieldRenderer::kX16NoSpace:
      return {{"", field.name, ":0x"}};
    case FieldRenderer::kX16:
    case FieldRenderer::kX32:
    case FieldRenderer::kHex8:
      return {{" ", field.name, ":0x"}};
    case FieldRenderer::kWords:
      return {{" ", field.name, ":["}};
    case FieldRenderer::kU8:
    case FieldRenderer::kU16:
    case FieldRenderer::kU32:
    case FieldRenderer::kI16:
    case FieldRenderer::kI32:
    case FieldRenderer::kMac:
    case FieldRenderer::kEnum16:
    case FieldRenderer::kSpares:
      return {{" ", field.name, ":"}};
  }
  throw "a FieldRenderer without a case";
}

// FNV-1a without its upper 16 bits. Two different texts with one hash do not compile.
constexpr std::uint64_t ComputeHash(const ConstantText& text) {
  std::uint64_t hash = 0xCBF29CE484222325U;
  for (const std::string_view part : text.parts) {
    for (const char c : part) {
      hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    }
  }
  return hash & 0xFFFFFFFFFFFFU;
}

// A key of 48 bits above an index of 16 bits. Sorting such words takes the compiler
// about a tenth of the steps of sorting the structures.
constexpr std::uint64_t PackKey(std::uint64_t key, std::size_t index) { return key << 16U | index; }
constexpr std::uint64_t GetKey(std::uint64_t packed) { return packed >> 16U; }
constexpr std::size_t GetIndex(std::uint64_t packed) { return packed & 0xFFFFU; }

constexpr std::size_t kTextCount = kRowCount + kDumpCount + kFieldCount + kLabelCount;
static_assert(kTextCount <= 0xFFFF, "too many texts for PackKey's 16-bit index");

consteval std::array<ConstantText, kTextCount> CollectTexts() {
  std::array<ConstantText, kTextCount> texts{};
  std::size_t next = 0;
  for (const CatalogueRow& row : kRows) {
    const SignalLayout& layout = *row.layout;
    texts[next++] = MakePlainText(layout.name.text);
    for (std::size_t i = 0; i < layout.dump_count; ++i) {
      texts[next++] = MakeDumpPrefix(layout.dumps[i]);
    }
    for (std::size_t i = 0; i < layout.field_count; ++i) {
      texts[next++] = MakeFieldPrefix(layout.fields[i]);
    }
  }
  for (std::size_t i = 0; i < kEnums.count; ++i) {
    for (const EnumLabel& label : kEnums.tables[i]->labels) {
      texts[next++] = MakePlainText(label.text);
    }
  }
  return texts;
}
constexpr std::array<ConstantText, kTextCount> kAllTexts = CollectTexts();

// The distinct texts, sorted by hash, and the start of each.
struct TextIndex {
  std::array<std::uint64_t, kTextCount> sorted{};  // PackKey of a hash and an index of kAllTexts
  std::array<std::size_t, kTextCount> starts{};
  std::size_t count = 0;
  std::size_t size = 0;  // of all texts, in bytes
};

consteval TextIndex MakeTextIndex() {
  std::array<std::uint64_t, kTextCount> all{};
  for (std::size_t i = 0; i < kTextCount; ++i) all[i] = PackKey(ComputeHash(kAllTexts[i]), i);
  std::sort(all.begin(), all.end());
  TextIndex index;
  for (const std::uint64_t entry : all) {
    const ConstantText& text = kAllTexts[GetIndex(entry)];
    if (index.count > 0 && GetKey(index.sorted[index.count - 1]) == GetKey(entry)) {
      const ConstantText& same = kAllTexts[GetIndex(index.sorted[index.count - 1])];
      if (same != text) throw "two texts share a hash: change the hash";
      continue;
    }
    index.sorted[index.count] = entry;
    index.starts[index.count] = index.size;
    index.size += text.size();
    ++index.count;
  }
  return index;
}
constexpr TextIndex kTextIndex = MakeTextIndex();
// The padding makes the last text a PaddedText too.
static_assert(kTextIndex.size + kPaddedTextSize <= kVocabularyTextCapacity,
              "the text is too long: raise kVocabularyTextCapacity");
static_assert(kVocabularyTextCapacity <= 0x10000, "TextRange has 16 bits for the start");

constexpr TextRange FindText(const ConstantText& text) {
  const auto* const first = kTextIndex.sorted.data();
  const auto* const found =
      std::lower_bound(first, first + kTextIndex.count, PackKey(ComputeHash(text), 0));
  return {static_cast<std::uint16_t>(kTextIndex.starts[static_cast<std::size_t>(found - first)]),
          static_cast<std::uint8_t>(text.size())};
}

consteval std::array<char, kVocabularyTextCapacity> JoinTexts() {
  std::array<char, kVocabularyTextCapacity> joined{};
  std::size_t next = 0;
  for (std::size_t i = 0; i < kTextIndex.count; ++i) {
    for (const std::string_view part : kAllTexts[GetIndex(kTextIndex.sorted[i])].parts) {
      for (const char c : part) joined[next++] = c;
    }
  }
  return joined;
}

// ---------------------------------------------------------------------------
// The checks. g++ and clang print the template arguments with the message; they show
// the version, the tables and the lines.

template <char kVersion, unsigned kId, const SignalTable* kTable, int kLine,
          const SignalTable* kOtherTable, int kOtherLine>
consteval void IdNamesOneSignalInAVersion() {
  static_assert(kLine == 0, "two rows have kId in kVersion, on kLine and kOtherLine");
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
  std::size_t family = 0;
  int line = 0;
  std::size_t other_family = 0;
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
    const CatalogueRow& row = kRows[GetIndex(sorted[i])];
    for (std::size_t j = i; j-- > 0 && GetKey(sorted[j]) == GetKey(sorted[i]);) {
      const CatalogueRow& other = kRows[GetIndex(sorted[j])];
      for (std::size_t version = 0; version < kHipVersionCount; ++version) {
        if (!row.layout->versions.Contains(version)) continue;
        if (!other.layout->versions.Contains(version)) continue;
        return {GetTagLetter(version), row.layout->id, row.family,
                row.layout->name.line, other.family,   other.layout->name.line};
      }
    }
  }
  return {};
}

constexpr RowFault kSharedId =
    FindTwoRowsWithOneKey([](const SignalLayout& row) { return row.id; });
constexpr RowFault kSharedName = FindTwoRowsWithOneKey(
    [](const SignalLayout& row) { return ComputeHash(MakePlainText(row.name.text)); });

consteval RowFault FindUnsortedRow() {
  for (std::size_t i = 1; i < kRowCount; ++i) {
    const CatalogueRow& row = kRows[i];
    const CatalogueRow& previous = kRows[i - 1];
    if (row.family != previous.family) continue;
    if (row.layout->name.text < previous.layout->name.text) {
      return {.family = row.family, .line = row.layout->name.line};
    }
  }
  return {};
}
constexpr RowFault kUnsortedRow = FindUnsortedRow();

struct UnusedLabels {
  const EnumTable* table = nullptr;
  char version = 'A';
};

consteval UnusedLabels FindUnusedLabels() {
  std::array<HipVersionSet, kEnums.count> used{};
  for (const CatalogueRow& row : kRows) {
    for (std::size_t i = 0; i < row.layout->field_count; ++i) {
      const EnumTable* const table = row.layout->fields[i].labels;
      if (table != nullptr) used[FindEnumIndex(kEnums, table)].Add(row.layout->versions);
    }
  }
  for (std::size_t i = 0; i < kEnums.count; ++i) {
    for (std::size_t version = 0; version < kHipVersionCount; ++version) {
      if (kEnums.tables[i]->versions.Contains(version) && !used[i].Contains(version)) {
        return {kEnums.tables[i], GetTagLetter(version)};
      }
    }
  }
  return {};
}
constexpr UnusedLabels kUnusedLabels = FindUnusedLabels();

consteval bool CheckCatalogue() {
  IdNamesOneSignalInAVersion<kSharedId.version, kSharedId.id, kFamilies[kSharedId.family],
                             kSharedId.line, kFamilies[kSharedId.other_family],
                             kSharedId.other_line>();
  NameHasOneIdInAVersion<kSharedName.version, kFamilies[kSharedName.family], kSharedName.line,
                         kFamilies[kSharedName.other_family], kSharedName.other_line>();
  RowIsSortedByName<kFamilies[kUnsortedRow.family], kUnsortedRow.line>();
  EnumHasLabelsOnlyWhereAFieldUsesIt<kUnusedLabels.table, kUnusedLabels.version>();
  return true;
}
static_assert(CheckCatalogue());

// ---------------------------------------------------------------------------
// The signals, the labels and their look-up tables.

static_assert(kFieldCount <= 0xFFFF && kLabelCount <= 0xFFFF && kRowCount < 0xFFFF,
              "too many fields, labels or rows for 16-bit indices");

consteval std::array<CompiledField, kFieldCount> CompileFields() {
  std::array<CompiledField, kFieldCount> fields{};
  std::size_t next = 0;
  for (const CatalogueRow& row : kRows) {
    for (std::size_t i = 0; i < row.layout->field_count; ++i) {
      const FieldToken& field = row.layout->fields[i];
      const bool is_array = field.renderer == FieldRenderer::kWords;
      const std::size_t enum_index =
          field.labels == nullptr ? 0 : FindEnumIndex(kEnums, field.labels);
      fields[next++] = {.prefix = FindText(MakeFieldPrefix(field)),
                        .offset = static_cast<std::uint8_t>(field.offset),
                        .renderer = field.renderer,
                        .words = static_cast<std::uint8_t>(is_array ? field.size / 2 : 0),
                        .enum_index = static_cast<std::uint8_t>(enum_index)};
    }
  }
  return fields;
}
constexpr std::array<CompiledField, kFieldCount> kFields = CompileFields();

consteval std::array<CompiledSignal, kRowCount> CompileSignals() {
  std::array<CompiledSignal, kRowCount> signals{};
  std::size_t first_field = 0;
  for (std::size_t i = 0; i < kRowCount; ++i) {
    const SignalLayout& layout = *kRows[i].layout;
    CompiledSignal& signal = signals[i];
    signal.name = FindText(MakePlainText(layout.name.text));
    signal.min = static_cast<std::uint8_t>(layout.min);
    signal.end = static_cast<std::uint8_t>(layout.end);
    signal.dump_count = static_cast<std::uint8_t>(layout.dump_count);
    for (std::size_t dump = 0; dump < layout.dump_count; ++dump) {
      signal.dump_prefixes[dump] = FindText(MakeDumpPrefix(layout.dumps[dump]));
    }
    signal.field_count = static_cast<std::uint8_t>(layout.field_count);
    signal.first_field = static_cast<std::uint16_t>(first_field);
    first_field += layout.field_count;
  }
  return signals;
}
constexpr std::array<CompiledSignal, kRowCount> kSignals = CompileSignals();

// Ids form a few dense blocks, one per high byte in use. A block has one slot per low
// byte, from 0 to the highest in use. A slot contains the index of the signal plus 1,
// or 0 if no signal has the id.
struct IdBlock {
  std::uint16_t first_slot = 0;
  std::uint16_t slot_count = 0;
};

consteval std::array<IdBlock, 256> MakeIdBlocks() {
  std::array<IdBlock, 256> blocks{};
  for (const CatalogueRow& row : kRows) {
    IdBlock& block = blocks[row.layout->id >> 8];
    const unsigned needed = (row.layout->id & 0xFFU) + 1;
    if (block.slot_count < needed) block.slot_count = static_cast<std::uint16_t>(needed);
  }
  unsigned next_slot = 0;
  for (IdBlock& block : blocks) {
    block.first_slot = static_cast<std::uint16_t>(next_slot);
    next_slot += block.slot_count;
  }
  return blocks;
}
constexpr std::array<IdBlock, 256> kIdBlocks = MakeIdBlocks();

constexpr std::size_t kSlotCount = kIdBlocks.back().first_slot + kIdBlocks.back().slot_count;

consteval std::array<std::array<std::uint16_t, kSlotCount>, kHipVersionCount> MakeSlots() {
  std::array<std::array<std::uint16_t, kSlotCount>, kHipVersionCount> slots{};
  for (std::size_t i = 0; i < kRowCount; ++i) {
    const SignalLayout& layout = *kRows[i].layout;
    const std::size_t slot = kIdBlocks[layout.id >> 8].first_slot + (layout.id & 0xFFU);
    for (std::size_t version = 0; version < kHipVersionCount; ++version) {
      if (layout.versions.Contains(version)) {
        slots[version][slot] = static_cast<std::uint16_t>(i + 1);
      }
    }
  }
  return slots;
}
constexpr std::array<std::array<std::uint16_t, kSlotCount>, kHipVersionCount> kSlots = MakeSlots();

// The labels of all enumerations, one after another.
consteval std::array<CompiledLabel, kLabelCount> CompileLabels() {
  std::array<CompiledLabel, kLabelCount> labels{};
  std::size_t next = 0;
  for (std::size_t i = 0; i < kEnums.count; ++i) {
    for (const EnumLabel& label : kEnums.tables[i]->labels) {
      labels[next++] = {label.value, label.versions, FindText(MakePlainText(label.text))};
    }
  }
  return labels;
}
constexpr std::array<CompiledLabel, kLabelCount> kLabels = CompileLabels();

struct CompiledEnum {
  std::uint16_t first_label = 0;
  std::uint16_t label_count = 0;
  // The first labels with the values 0, 1, 2 and so on, without a gap. Most values in a
  // log are among them and need no search.
  std::uint16_t dense_count = 0;
};

consteval std::array<CompiledEnum, kEnums.count> CompileEnums() {
  std::array<CompiledEnum, kEnums.count> enums{};
  std::size_t first = 0;
  for (std::size_t i = 0; i < kEnums.count; ++i) {
    const auto labels = kEnums.tables[i]->labels;
    std::size_t dense = 0;
    while (dense < labels.size() && labels[dense].value == dense) ++dense;
    enums[i] = {static_cast<std::uint16_t>(first), static_cast<std::uint16_t>(labels.size()),
                static_cast<std::uint16_t>(dense)};
    first += labels.size();
  }
  return enums;
}
constexpr std::array<CompiledEnum, kEnums.count> kCompiledEnums = CompileEnums();

// Returns the index of the first label whose value is not below `value`. The
// comparison is a factor, because the processor cannot predict a branch on it.
std::size_t FindFirstNotBelow(std::span<const CompiledLabel> labels, std::uint16_t value) {
  std::size_t first = 0;
  std::size_t count = labels.size();
  while (count > 1) {
    const std::size_t half = count / 2;
    first += half * static_cast<std::size_t>(labels[first + half - 1].value < value);
    count -= half;
  }
  return first + static_cast<std::size_t>(labels[first].value < value);
}

}  // namespace

constinit const std::array<char, kVocabularyTextCapacity> kVocabularyText = JoinTexts();

const CompiledSignal* FindSignal(HipVersionTag version, std::uint16_t id) {
  const IdBlock block = kIdBlocks[id >> 8U];
  const unsigned low_byte = id & 0xFFU;
  if (low_byte >= block.slot_count) return nullptr;
  const std::uint16_t slot = kSlots[static_cast<std::size_t>(version)][block.first_slot + low_byte];
  return slot == 0 ? nullptr : &kSignals[slot - 1U];
}

std::span<const CompiledField> GetFields(const CompiledSignal& signal) {
  return std::span(kFields).subspan(signal.first_field, signal.field_count);
}

PaddedText FindLabel(std::uint8_t enum_index, std::uint16_t value, HipVersionTag version) {
  const std::span<const CompiledLabel> labels = ListLabels(enum_index);
  const bool is_dense = value < kCompiledEnums[enum_index].dense_count;
  std::size_t i = is_dense ? value : FindFirstNotBelow(labels, value);
  for (; i < labels.size() && labels[i].value == value; ++i) {
    if (labels[i].versions.Contains(version)) return GetText(labels[i].text);
  }
  return {};
}

std::span<const CompiledSignal> ListSignals() { return kSignals; }

std::span<const CompiledLabel> ListLabels(std::uint8_t enum_index) {
  const CompiledEnum& compiled = kCompiledEnums[enum_index];
  return std::span(kLabels).subspan(compiled.first_label, compiled.label_count);
}
