#include "columns.h"

#include <algorithm>
#include <set>
#include <span>

#include "fapi/vocabulary.h"

namespace {

constexpr const char* kColumnDeclarations[] = {
// NOLINTNEXTLINE(cppcoreguidelines-macro-usage): takes a part of each row
#define VRKT_TAKE_DECLARATION(name, declaration) declaration,
    VRKT_UDI_COLUMNS(VRKT_TAKE_DECLARATION)
#undef VRKT_TAKE_DECLARATION
};

}  // namespace

const Columns& Columns::Get() {
  static const Columns columns;
  return columns;
}

// The forms of a name can differ, so fields have the type NUMERIC, which allows all values:
// vif = '1' is true for the number 1. Digits of dumps are no number, not even those of 00e1.
//
// The vocabulary has each name once, so the places of their texts identify the names.
Columns::Columns() : declaration_("CREATE TABLE udi(") {
  const std::span<const CompiledSignal> layouts = ListLayouts();
  constexpr std::uint16_t kNoColumn = 0xFFFF;
  std::vector<std::uint16_t> columns(kVocabularyTextCapacity, kNoColumn);  // by TextRange::start
  std::vector<TextRange> names;
  std::set<std::uint16_t> dumps;
  for (const CompiledSignal& layout : layouts) {
    for (const CompiledField& field : GetFields(layout)) {
      if (columns[field.name.start] == kNoColumn) names.push_back(field.name);
      if (field.form == FieldRenderer::kDump) dumps.insert(field.name.start);
      columns[field.name.start] = 0;
    }
  }
  std::sort(names.begin(), names.end(), [](TextRange left, TextRange right) {
    return GetText(left).text() < GetText(right).text();
  });
  for (const char* const column : kColumnDeclarations) declaration_.append(column).append(", ");
  for (std::size_t column = 0; column < names.size(); ++column) {
    columns[names[column].start] = static_cast<std::uint16_t>(column);
    declaration_.append(1, '"').append(GetText(names[column]).text());
    declaration_ +=
        dumps.contains(names[column].start) ? "\" TEXT HIDDEN, " : "\" NUMERIC HIDDEN, ";
  }
  declaration_.replace(declaration_.size() - 2, 2, ")");

  places_.assign(names.size() * layouts.size(), kNoField);
  for (std::size_t layout = 0; layout < layouts.size(); ++layout) {
    std::uint8_t place = 0;
    for (const CompiledField& field : GetFields(layouts[layout])) {
      std::uint8_t& found = places_[columns[field.name.start] * layouts.size() + layout];
      if (found == kNoField) found = place;
      ++place;
    }
  }
}

const CompiledField* Columns::FindField(const CompiledSignal& layout, int column) const {
  const std::span<const CompiledSignal> layouts = ListLayouts();
  const auto index = static_cast<std::size_t>(&layout - layouts.data());
  const std::uint8_t place =
      places_[static_cast<std::size_t>(column - kFirstField) * layouts.size() + index];
  return place == kNoField ? nullptr : &GetFields(layout)[place];
}
