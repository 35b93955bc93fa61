#ifndef VRKT_FAPI_COMPILE_TABLES_H_
#define VRKT_FAPI_COMPILE_TABLES_H_

#include <array>
#include <cstddef>
#include <cstdint>

#include "fapi/compile/rows.h"
#include "fapi/compile/text.h"
#include "fapi/compiled_signal.h"
#include "fapi/secret_fields.h"

// The tables that decoders use. They are small, so that the part in use stays in the
// processor's cache.
namespace compile {

static_assert(kFieldCount <= 0xFFFF && kLabelCount <= 0xFFFF && kRowCount < 0xFFFF,
              "too many fields, labels or rows for 16-bit indices");
static_assert(kMaxSignalEnd <= 0xFF, "CompiledField and CompiledSignal have 8 bits for a place");

// The fields of all signals, one signal after another.
consteval std::array<CompiledField, kFieldCount> CompileFields() {
  std::array<CompiledField, kFieldCount> fields{};
  std::size_t next = 0;
  for (const VocabularyRow& row : kRows) {
    for (const FieldToken& field : row.fields()) {
      const std::size_t enum_index =
          field.labels == nullptr ? 0 : FindEnumIndex(kEnums, field.labels);
      fields[next++] = {.name = FindName(field),
                        .offset = static_cast<std::uint8_t>(field.offset),
                        .form = field.form,
                        .words = static_cast<std::uint8_t>(field.words),
                        .enum_index = static_cast<std::uint8_t>(enum_index)};
    }
  }
  return fields;
}
inline constexpr std::array<CompiledField, kFieldCount> kFields = CompileFields();

// By the index of kFields.
consteval std::array<bool, kFieldCount> FindSecretFields() {
  std::array<bool, kFieldCount> are_secret{};
  std::size_t next = 0;
  for (const VocabularyRow& row : kRows) {
    for (const FieldToken& field : row.fields()) are_secret[next++] = IsSecret(field);
  }
  return are_secret;
}
inline constexpr std::array<bool, kFieldCount> kFieldsAreSecret = FindSecretFields();

consteval std::array<CompiledSignal, kRowCount> CompileSignals() {
  std::array<CompiledSignal, kRowCount> signals{};
  std::size_t first_field = 0;
  for (std::size_t i = 0; i < kRowCount; ++i) {
    const SignalLayout& layout = *kRows[i].layout;
    signals[i] = {.name = FindText(MakePlainText(layout.name.text)),
                  .min = static_cast<std::uint8_t>(layout.min),
                  .end = static_cast<std::uint8_t>(layout.end),
                  .first_field = static_cast<std::uint16_t>(first_field),
                  .field_count = static_cast<std::uint8_t>(layout.field_count),
                  .ends_in_spares = layout.ends_in_spares};
    first_field += layout.field_count;
  }
  return signals;
}
inline constexpr std::array<CompiledSignal, kRowCount> kSignals = CompileSignals();

// Ids form a few dense blocks, one per high byte in use. A block has one slot per low
// byte, from 0 to the highest in use. A slot contains the index of the signal plus 1,
// or 0 if no signal has the id.
struct IdBlock {
  std::uint16_t first_slot = 0;
  std::uint16_t slot_count = 0;
};

consteval std::array<IdBlock, 256> MakeIdBlocks() {
  std::array<IdBlock, 256> blocks{};
  for (const VocabularyRow& row : kRows) {
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
inline constexpr std::array<IdBlock, 256> kIdBlocks = MakeIdBlocks();

inline constexpr std::size_t kSlotCount = kIdBlocks.back().first_slot + kIdBlocks.back().slot_count;

using SlotTable = std::array<std::array<std::uint16_t, kSlotCount>, kHipVersionCount>;

consteval SlotTable MakeSlots() {
  SlotTable slots{};
  for (std::size_t i = 0; i < kRowCount; ++i) {
    const SignalLayout& layout = *kRows[i].layout;
    const std::size_t slot = kIdBlocks[layout.id >> 8].first_slot + (layout.id & 0xFFU);
    for (const HipVersionName& version : kHipVersionNames) {
      if (!layout.versions.Contains(version.tag)) continue;
      slots[GetIndex(version.tag)][slot] = static_cast<std::uint16_t>(i + 1);
    }
  }
  return slots;
}
inline constexpr SlotTable kSlots = MakeSlots();

// The labels of all enumerations, one enumeration after another.
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
inline constexpr std::array<CompiledLabel, kLabelCount> kLabels = CompileLabels();

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
inline constexpr std::array<CompiledEnum, kEnums.count> kCompiledEnums = CompileEnums();

}  // namespace compile

#endif  // VRKT_FAPI_COMPILE_TABLES_H_
