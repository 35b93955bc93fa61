#ifndef VRKT_FAPI_COMPILE_TEXT_H_
#define VRKT_FAPI_COMPILE_TEXT_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fapi/compile/rows.h"
#include "fapi/compiled_signal.h"
#include "fapi/vocabulary.h"

// The text of the vocabulary: each signal name, label and field name with the characters
// around it (" vif:") is stored once, even if many signals share it.
namespace compile {

struct ConstantText {
  std::array<std::string_view, 3> parts{};

  constexpr std::size_t size() const { return parts[0].size() + parts[1].size() + parts[2].size(); }
  constexpr bool operator==(const ConstantText&) const = default;
};

constexpr ConstantText MakePlainText(std::string_view text) { return {{"", text, ""}}; }
constexpr ConstantText MakePrefix(const FieldToken& field) { return {{" ", field.name, ":"}}; }

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

inline constexpr std::size_t kTextCount = kRowCount + kFieldCount + kLabelCount;
static_assert(kTextCount <= 0xFFFF, "too many texts for PackKey's 16-bit index");

consteval std::array<ConstantText, kTextCount> CollectTexts() {
  std::array<ConstantText, kTextCount> texts{};
  std::size_t next = 0;
  for (const VocabularyRow& row : kRows) {
    texts[next++] = MakePlainText(row.layout->name.text);
    for (const FieldToken& field : row.fields()) texts[next++] = MakePrefix(field);
  }
  for (std::size_t i = 0; i < kEnums.count; ++i) {
    for (const EnumLabel& label : kEnums.tables[i]->labels) {
      texts[next++] = MakePlainText(label.text);
    }
  }
  return texts;
}
inline constexpr std::array<ConstantText, kTextCount> kAllTexts = CollectTexts();

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
    const ConstantText& text = kAllTexts[UnpackIndex(entry)];
    if (index.count > 0 && UnpackKey(index.sorted[index.count - 1]) == UnpackKey(entry)) {
      const ConstantText& same = kAllTexts[UnpackIndex(index.sorted[index.count - 1])];
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
inline constexpr TextIndex kTextIndex = MakeTextIndex();
// The padding makes the last text a PaddedText too.
static_assert(kTextIndex.size + kPaddedTextSize <= kVocabularyTextCapacity,
              "the text is too long: raise kVocabularyTextCapacity");
static_assert(kVocabularyTextCapacity <= 0x10000, "TextRange has 16 bits for the start");

consteval TextRange FindText(const ConstantText& text) {
  const auto* const first = kTextIndex.sorted.data();
  const auto* const last = first + kTextIndex.count;
  const auto* const found = std::lower_bound(first, last, PackKey(ComputeHash(text), 0));
  if (found == last || kAllTexts[UnpackIndex(*found)] != text) {
    throw "a text was not collected: add it to CollectTexts";
  }
  return {static_cast<std::uint16_t>(kTextIndex.starts[static_cast<std::size_t>(found - first)]),
          static_cast<std::uint8_t>(text.size())};
}

// A field's name is a part of its prefix.
consteval TextRange FindName(const FieldToken& field) {
  const TextRange prefix = FindText(MakePrefix(field));
  return {static_cast<std::uint16_t>(prefix.start + 1),
          static_cast<std::uint8_t>(field.name.size())};
}

consteval std::array<char, kVocabularyTextCapacity> JoinTexts() {
  std::array<char, kVocabularyTextCapacity> joined{};
  std::size_t next = 0;
  for (std::size_t i = 0; i < kTextIndex.count; ++i) {
    for (const std::string_view part : kAllTexts[UnpackIndex(kTextIndex.sorted[i])].parts) {
      for (const char c : part) joined[next++] = c;
    }
  }
  return joined;
}

}  // namespace compile

#endif  // VRKT_FAPI_COMPILE_TEXT_H_
