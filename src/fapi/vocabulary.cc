// The compiler's work on the catalogue: all rows of all families are checked
// against each other and laid down as constant tables, so that the tool finds
// them ready when it starts.
//
// The constant text in front of every value (" vif:", " data:{") stands once in
// one long text, whichever signals share it. That keeps a field at 16 bytes
// without an address to relocate, and what a session's lines are made of in the
// processor's nearest cache.

#include "fapi/vocabulary.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "fapi/signal_row.h"
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
  const SignalRow* row;
  std::size_t family;
};

consteval std::array<CatalogueRow, kRowCount> CollectRows() {
  std::array<CatalogueRow, kRowCount> rows{};
  std::size_t next = 0;
  for (std::size_t family = 0; family < std::size(kFamilies); ++family) {
    for (const SignalRow& row : kFamilies[family]->rows) rows[next++] = {&row, family};
  }
  return rows;
}
constexpr std::array<CatalogueRow, kRowCount> kRows = CollectRows();

// ---------------------------------------------------------------------------
// The layout text.

// The constant text of a name or a field: a blank or not, the name and what
// stands behind it, or the parts of a spare signal's name.
struct Head {
  std::array<std::string_view, 3> parts{};

  constexpr std::size_t size() const { return parts[0].size() + parts[1].size() + parts[2].size(); }
  constexpr bool operator==(const Head&) const = default;
};

constexpr Head HeadOf(const SignalName& name) { return {{name.text, name.number, name.behind}}; }
constexpr Head HeadOfDump(std::string_view name) { return {{" ", name, ":{"}}; }
constexpr Head HeadOf(const FieldToken& field) {
  switch (field.renderer) {
    case FieldRenderer::kX16NoSpace:
      return {{"", field.name, ":0x"}};
    case FieldRenderer::kX16:
    case FieldRenderer::kX32:
    case FieldRenderer::kHex8:
      return {{" ", field.name, ":0x"}};
    case FieldRenderer::kWords:
      return {{" ", field.name, ":["}};
    default:
      return {{" ", field.name, ":"}};
  }
}

// FNV-1a, without its upper 16 bits. Two heads that share one do not compile.
constexpr std::uint64_t HashOf(const Head& head) {
  std::uint64_t hash = 0xCBF29CE484222325U;
  for (const std::string_view part : head.parts) {
    for (const char c : part) {
      hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    }
  }
  return hash & 0xFFFFFFFFFFFFU;
}

// A key of 48 bits with a place of 16 bits below it. Things are sorted by such
// words and not themselves: that takes the compiler a tenth of the steps.
constexpr std::uint64_t KeyAndPlace(std::uint64_t key, std::size_t place) {
  return key << 16U | place;
}
constexpr std::uint64_t KeyOf(std::uint64_t key_and_place) { return key_and_place >> 16U; }
constexpr std::size_t PlaceOf(std::uint64_t key_and_place) { return key_and_place & 0xFFFFU; }

consteval std::size_t CountFields() {
  std::size_t count = 0;
  for (const CatalogueRow& entry : kRows) count += entry.row->field_count;
  return count;
}
constexpr std::size_t kFieldCount = CountFields();
consteval std::size_t CountDumps() {
  std::size_t count = 0;
  for (const CatalogueRow& entry : kRows) count += entry.row->dump_count;
  return count;
}
constexpr std::size_t kDumpCount = CountDumps();

constexpr std::size_t kHeadCount = kRowCount + kDumpCount + kFieldCount;
static_assert(kHeadCount <= 0xFFFF, "more heads than KeyAndPlace has places");

// The heads of all rows, as they come.
consteval std::array<Head, kHeadCount> CollectHeads() {
  std::array<Head, kHeadCount> heads{};
  std::size_t next = 0;
  for (const CatalogueRow& entry : kRows) {
    const SignalRow& row = *entry.row;
    heads[next++] = HeadOf(row.name);
    for (std::size_t i = 0; i < row.dump_count; ++i) heads[next++] = HeadOfDump(row.dumps[i]);
    for (std::size_t i = 0; i < row.field_count; ++i) heads[next++] = HeadOf(row.fields[i]);
  }
  return heads;
}
constexpr std::array<Head, kHeadCount> kAllHeads = CollectHeads();

// The distinct heads by their hashes, and where each starts in the layout text.
struct HeadIndex {
  std::array<std::uint64_t, kHeadCount> sorted{};  // places are those of kAllHeads
  std::array<std::size_t, kHeadCount> starts{};
  std::size_t count = 0;
  std::size_t text_size = 0;
};

consteval HeadIndex MakeHeadIndex() {
  std::array<std::uint64_t, kHeadCount> all{};
  for (std::size_t i = 0; i < kHeadCount; ++i) all[i] = KeyAndPlace(HashOf(kAllHeads[i]), i);
  std::sort(all.begin(), all.end());
  HeadIndex index;
  for (const std::uint64_t entry : all) {
    const Head& head = kAllHeads[PlaceOf(entry)];
    if (index.count > 0 && KeyOf(index.sorted[index.count - 1]) == KeyOf(entry)) {
      const Head& same = kAllHeads[PlaceOf(index.sorted[index.count - 1])];
      if (same != head) throw "two heads share a hash: change the hash";
      continue;
    }
    index.sorted[index.count] = entry;
    index.starts[index.count] = index.text_size;
    index.text_size += head.size();
    ++index.count;
  }
  return index;
}
constexpr HeadIndex kHeadIndex = MakeHeadIndex();
static_assert(kHeadIndex.text_size <= 0xFFFF, "the layout text grew too long for LayoutText");

consteval std::array<char, kHeadIndex.text_size + kPaddedTextSize> JoinHeads() {
  std::array<char, kHeadIndex.text_size + kPaddedTextSize> text{};
  std::size_t next = 0;
  for (std::size_t i = 0; i < kHeadIndex.count; ++i) {
    for (const std::string_view part : kAllHeads[PlaceOf(kHeadIndex.sorted[i])].parts) {
      for (const char c : part) text[next++] = c;
    }
  }
  return text;
}
constexpr std::array<char, kHeadIndex.text_size + kPaddedTextSize> kLayoutText = JoinHeads();

constexpr LayoutText TextOfHead(const Head& head) {
  const auto* const first = kHeadIndex.sorted.data();
  const auto* const found =
      std::lower_bound(first, first + kHeadIndex.count, KeyAndPlace(HashOf(head), 0));
  return {static_cast<std::uint16_t>(kHeadIndex.starts[static_cast<std::size_t>(found - first)]),
          static_cast<std::uint8_t>(head.size())};
}

// ---------------------------------------------------------------------------
// The checks. What is wrong and where stands in the template arguments, which
// both compilers print with the message.

template <char kVersion, unsigned kId, const SignalTable* kTable, int kLine,
          const SignalTable* kOtherTable, int kOtherLine>
consteval void IdNamesOneSignalInAVersion() {
  static_assert(kLine == 0, "kId stands twice in kVersion, on kLine and kOtherLine");
}

template <char kVersion, const SignalTable* kTable, int kLine, const SignalTable* kOtherTable,
          int kOtherLine>
consteval void NameHasOneIdInAVersion() {
  static_assert(kLine == 0, "one name has two ids in kVersion, on kLine and kOtherLine");
}

struct RowFault {
  char version = 'A';
  unsigned id = 0;
  std::size_t family = 0;
  int line = 0;
  std::size_t other_family = 0;
  int other_line = 0;
};

// Finds two rows that share a version and whose keys are equal. Rows with equal
// keys come together by sorting: comparing all pairs would take the compiler
// minutes.
template <typename Key>
consteval RowFault FindTwoRowsOfOneKey(Key key_of) {
  std::array<std::uint64_t, kRowCount> sorted{};
  for (std::size_t i = 0; i < kRowCount; ++i) sorted[i] = KeyAndPlace(key_of(*kRows[i].row), i);
  std::sort(sorted.begin(), sorted.end());
  for (std::size_t i = 1; i < kRowCount; ++i) {
    const CatalogueRow& entry = kRows[PlaceOf(sorted[i])];
    for (std::size_t j = i; j-- > 0 && KeyOf(sorted[j]) == KeyOf(sorted[i]);) {
      const CatalogueRow& other = kRows[PlaceOf(sorted[j])];
      if (!entry.row->versions.Overlaps(other.row->versions)) continue;
      std::size_t version = 0;
      while (!entry.row->versions.Contains(version) || !other.row->versions.Contains(version)) {
        ++version;
      }
      return {TagLetter(version),   entry.row->id, entry.family,
              entry.row->name.line, other.family,  other.row->name.line};
    }
  }
  return {};
}

constexpr RowFault kSharedId = FindTwoRowsOfOneKey([](const SignalRow& row) { return row.id; });
constexpr RowFault kSharedName =
    FindTwoRowsOfOneKey([](const SignalRow& row) { return HashOf(HeadOf(row.name)); });

consteval bool CheckCatalogue() {
  IdNamesOneSignalInAVersion<kSharedId.version, kSharedId.id, kFamilies[kSharedId.family],
                             kSharedId.line, kFamilies[kSharedId.other_family],
                             kSharedId.other_line>();
  NameHasOneIdInAVersion<kSharedName.version, kFamilies[kSharedName.family], kSharedName.line,
                         kFamilies[kSharedName.other_family], kSharedName.other_line>();
  return true;
}
static_assert(CheckCatalogue());

// ---------------------------------------------------------------------------
// The layouts and the way from an id to its layout.

consteval std::array<FieldLayout, kFieldCount> MakeFieldLayouts() {
  std::array<FieldLayout, kFieldCount> layouts{};
  std::size_t next = 0;
  for (const CatalogueRow& entry : kRows) {
    for (std::size_t i = 0; i < entry.row->field_count; ++i) {
      const FieldToken& field = entry.row->fields[i];
      const bool is_array = field.renderer == FieldRenderer::kWords;
      layouts[next++] = {.labels = field.labels,
                         .head = TextOfHead(HeadOf(field)),
                         .offset = static_cast<std::uint8_t>(field.offset),
                         .renderer = field.renderer,
                         .words = static_cast<std::uint8_t>(is_array ? field.size / 2 : 0)};
    }
  }
  return layouts;
}
constexpr std::array<FieldLayout, kFieldCount> kFieldLayouts = MakeFieldLayouts();

consteval std::array<SignalLayout, kRowCount> MakeSignalLayouts() {
  std::array<SignalLayout, kRowCount> layouts{};
  std::size_t first_field = 0;
  for (std::size_t i = 0; i < kRowCount; ++i) {
    const SignalRow& row = *kRows[i].row;
    SignalLayout& layout = layouts[i];
    layout.name = TextOfHead(HeadOf(row.name));
    layout.min = static_cast<std::uint8_t>(row.min);
    layout.end = static_cast<std::uint8_t>(row.end);
    layout.dump_count = static_cast<std::uint8_t>(row.dump_count);
    for (std::size_t dump = 0; dump < row.dump_count; ++dump) {
      layout.dumps[dump] = TextOfHead(HeadOfDump(row.dumps[dump]));
    }
    layout.field_count = static_cast<std::uint8_t>(row.field_count);
    layout.first_field = static_cast<std::uint16_t>(first_field);
    first_field += row.field_count;
  }
  return layouts;
}
constexpr std::array<SignalLayout, kRowCount> kSignalLayouts = MakeSignalLayouts();
static_assert(kFieldCount <= 0xFFFF && kRowCount < 0xFFFF, "the vocabulary outgrew its indices");

// Ids come in a few dense blocks, one for each high byte in use. A block takes
// one slot for each low byte from 0 to the highest in use; a slot holds the
// place of the layout plus 1, or 0.
struct IdBlock {
  std::uint16_t first_slot = 0;
  std::uint16_t slot_count = 0;
};

consteval std::array<IdBlock, 256> MakeIdBlocks() {
  std::array<IdBlock, 256> blocks{};
  for (const CatalogueRow& entry : kRows) {
    IdBlock& block = blocks[entry.row->id >> 8];
    const unsigned needed = (entry.row->id & 0xFFU) + 1;
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
    const SignalRow& row = *kRows[i].row;
    const std::size_t slot = kIdBlocks[row.id >> 8].first_slot + (row.id & 0xFFU);
    for (std::size_t version = 0; version < kHipVersionCount; ++version) {
      if (row.versions.Contains(version)) slots[version][slot] = static_cast<std::uint16_t>(i + 1);
    }
  }
  return slots;
}
constexpr std::array<std::array<std::uint16_t, kSlotCount>, kHipVersionCount> kSlots = MakeSlots();

}  // namespace

namespace vocabulary_data {
constinit const char* const kText = kLayoutText.data();
constinit const FieldLayout* const kFields = kFieldLayouts.data();
}  // namespace vocabulary_data

const SignalLayout* FindSignal(HipVersionTag version, std::uint16_t id) {
  const IdBlock block = kIdBlocks[id >> 8U];
  const unsigned low_byte = id & 0xFFU;
  if (low_byte >= block.slot_count) return nullptr;
  const std::uint16_t slot = kSlots[static_cast<std::size_t>(version)][block.first_slot + low_byte];
  return slot == 0 ? nullptr : &kSignalLayouts[slot - 1U];
}

std::span<const SignalLayout> AllSignalLayouts() { return kSignalLayouts; }
