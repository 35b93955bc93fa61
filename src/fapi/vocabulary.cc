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
#include "fapi/signals/data_plane.h"

namespace {

constexpr const SignalTable* kFamilies[] = {
    &kDataPlaneSignals,
};

// How many signals each version knows, so that a lost row does not pass.
constexpr std::size_t kSignalCounts[kHipVersionCount] = {
    // A  B  C  D  E  F  G  H  I  J  K  L
    5, 5, 4, 6, 4, 4, 6, 4, 4, 4, 4, 4,
};

constexpr std::size_t kRowCount = [] {
  std::size_t count = 0;
  for (const SignalTable* family : kFamilies) count += family->rows.size();
  return count;
}();

struct CatalogueRow {
  const SignalRow* row;
  std::size_t family;
};

constexpr std::array<CatalogueRow, kRowCount> kRows = [] {
  std::array<CatalogueRow, kRowCount> rows{};
  std::size_t next = 0;
  for (std::size_t family = 0; family < std::size(kFamilies); ++family) {
    for (const SignalRow& row : kFamilies[family]->rows) rows[next++] = {&row, family};
  }
  return rows;
}();

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

template <char kVersion, std::size_t kExpected, std::size_t kActual>
consteval void VersionHasItsNumberOfSignals() {
  static_assert(kExpected == kActual, "there are kActual signals in kVersion, not kExpected");
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
consteval RowFault FindTwoRowsOfOneKey(Key key) {
  std::array<CatalogueRow, kRowCount> sorted = kRows;
  std::ranges::sort(sorted, {}, key);
  for (std::size_t i = 1; i < sorted.size(); ++i) {
    const SignalRow& row = *sorted[i].row;
    for (std::size_t j = i; j-- > 0 && key(sorted[j]) == key(sorted[i]);) {
      const SignalRow& other = *sorted[j].row;
      if (!row.versions.Overlaps(other.versions)) continue;
      std::size_t version = 0;
      while (!row.versions.Contains(version) || !other.versions.Contains(version)) ++version;
      return {TagLetter(version), row.id,           sorted[i].family,
              row.name.line,      sorted[j].family, other.name.line};
    }
  }
  return {};
}

constexpr RowFault kSharedId =
    FindTwoRowsOfOneKey([](const CatalogueRow& entry) { return entry.row->id; });
constexpr RowFault kSharedName =
    FindTwoRowsOfOneKey([](const CatalogueRow& entry) { return entry.row->name.text; });

struct CountFault {
  char version = 'A';
  std::size_t expected = 0;
  std::size_t actual = 0;
};

constexpr CountFault kWrongCount = [] {
  for (std::size_t version = 0; version < kHipVersionCount; ++version) {
    std::size_t actual = 0;
    for (const CatalogueRow& entry : kRows) {
      actual += entry.row->versions.Contains(version) ? 1 : 0;
    }
    if (actual != kSignalCounts[version]) {
      return CountFault{TagLetter(version), kSignalCounts[version], actual};
    }
  }
  return CountFault{};
}();

consteval bool CheckCatalogue() {
  IdNamesOneSignalInAVersion<kSharedId.version, kSharedId.id, kFamilies[kSharedId.family],
                             kSharedId.line, kFamilies[kSharedId.other_family],
                             kSharedId.other_line>();
  NameHasOneIdInAVersion<kSharedName.version, kFamilies[kSharedName.family], kSharedName.line,
                         kFamilies[kSharedName.other_family], kSharedName.other_line>();
  VersionHasItsNumberOfSignals<kWrongCount.version, kWrongCount.expected, kWrongCount.actual>();
  return true;
}
static_assert(CheckCatalogue());

// ---------------------------------------------------------------------------
// The layout text.

// The constant text of a name or a field, in its three parts.
struct Head {
  std::string_view blank;
  std::string_view name;
  std::string_view behind;

  constexpr std::size_t size() const { return blank.size() + name.size() + behind.size(); }
  constexpr bool operator==(const Head&) const = default;
};

constexpr Head HeadOf(const SignalName& name) { return {"", name.text, ""}; }
constexpr Head HeadOfDump(std::string_view name) { return {" ", name, ":{"}; }
constexpr Head HeadOf(const FieldToken& field) {
  switch (field.renderer) {
    case FieldRenderer::kX16NoSpace:
      return {"", field.name, ":0x"};
    case FieldRenderer::kX16:
    case FieldRenderer::kX32:
    case FieldRenderer::kHex8:
      return {" ", field.name, ":0x"};
    case FieldRenderer::kWords:
      return {" ", field.name, ":["};
    default:
      return {" ", field.name, ":"};
  }
}

// Heads are found again by a 64-bit FNV-1a hash; two that share one would not
// compile.
struct HashedHead {
  std::uint64_t hash = 0;
  Head head{};
  std::size_t start = 0;  // in the layout text
};

constexpr std::uint64_t HashOf(const Head& head) {
  std::uint64_t hash = 0xCBF29CE484222325U;
  for (const std::string_view part : {head.blank, head.name, head.behind}) {
    for (const char c : part) {
      hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    }
  }
  return hash;
}

constexpr std::size_t kFieldCount = [] {
  std::size_t count = 0;
  for (const CatalogueRow& entry : kRows) count += entry.row->field_count;
  return count;
}();
constexpr std::size_t kDumpCount = [] {
  std::size_t count = 0;
  for (const CatalogueRow& entry : kRows) count += entry.row->dump_count;
  return count;
}();

struct HeadList {
  std::array<HashedHead, kRowCount + kDumpCount + kFieldCount> heads{};
  std::size_t count = 0;
  std::size_t text_size = 0;
};

// All heads, each once, in order of their hashes.
constexpr HeadList kHeads = [] {
  HeadList list;
  const auto add = [&list](const Head& head) {
    list.heads[list.count++] = {.hash = HashOf(head), .head = head};
  };
  for (const CatalogueRow& entry : kRows) {
    add(HeadOf(entry.row->name));
    for (std::size_t i = 0; i < entry.row->dump_count; ++i) add(HeadOfDump(entry.row->dumps[i]));
    for (std::size_t i = 0; i < entry.row->field_count; ++i) add(HeadOf(entry.row->fields[i]));
  }
  std::ranges::sort(list.heads, {}, &HashedHead::hash);
  const std::span<const HashedHead> all = list.heads;
  list.count = 0;
  for (const HashedHead& hashed : all) {
    if (list.count > 0 && list.heads[list.count - 1].hash == hashed.hash) {
      if (list.heads[list.count - 1].head != hashed.head) throw "two heads share a hash";
      continue;
    }
    list.heads[list.count] = hashed;
    list.heads[list.count].start = list.text_size;
    list.text_size += hashed.head.size();
    ++list.count;
  }
  return list;
}();
static_assert(kHeads.text_size <= 0xFFFF, "the layout text grew too long for LayoutText");

constexpr std::array<char, kHeads.text_size> kLayoutText = [] {
  std::array<char, kHeads.text_size> text{};
  for (std::size_t i = 0; i < kHeads.count; ++i) {
    const HashedHead& hashed = kHeads.heads[i];
    auto end = text.begin() + static_cast<std::ptrdiff_t>(hashed.start);
    for (const std::string_view part : {hashed.head.blank, hashed.head.name, hashed.head.behind}) {
      end = std::ranges::copy(part, end).out;
    }
  }
  return text;
}();

constexpr LayoutText TextOfHead(const Head& head) {
  const auto heads = std::span(kHeads.heads).first(kHeads.count);
  const auto found = std::ranges::lower_bound(heads, HashOf(head), {}, &HashedHead::hash);
  return {static_cast<std::uint16_t>(found->start), static_cast<std::uint8_t>(head.size())};
}

// ---------------------------------------------------------------------------
// The layouts and the way from an id to its layout.

constexpr std::array<FieldLayout, kFieldCount> kFieldLayouts = [] {
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
}();

constexpr std::array<SignalLayout, kRowCount> kSignalLayouts = [] {
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
}();
static_assert(kFieldCount <= 0xFFFF && kRowCount < 0xFFFF, "the vocabulary outgrew its indices");

// Ids come in a few dense blocks, one for each high byte in use. A block takes
// one slot for each low byte from 0 to the highest in use; a slot holds the
// place of the layout plus 1, or 0.
struct IdBlock {
  std::uint16_t first_slot = 0;
  std::uint16_t slot_count = 0;
};

constexpr std::array<IdBlock, 256> kIdBlocks = [] {
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
}();

constexpr std::size_t kSlotCount = kIdBlocks.back().first_slot + kIdBlocks.back().slot_count;

constexpr std::array<std::array<std::uint16_t, kSlotCount>, kHipVersionCount> kSlots = [] {
  std::array<std::array<std::uint16_t, kSlotCount>, kHipVersionCount> slots{};
  for (std::size_t i = 0; i < kRowCount; ++i) {
    const SignalRow& row = *kRows[i].row;
    const std::size_t slot = kIdBlocks[row.id >> 8].first_slot + (row.id & 0xFFU);
    for (std::size_t version = 0; version < kHipVersionCount; ++version) {
      if (row.versions.Contains(version)) slots[version][slot] = static_cast<std::uint16_t>(i + 1);
    }
  }
  return slots;
}();

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
