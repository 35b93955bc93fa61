#include "columns.h"

#include <map>
#include <span>
#include <string_view>

#include "fapi/vocabulary.h"

namespace {

constexpr std::string_view kFixedColumns =
    "record INTEGER, stamp TEXT, time_ms INTEGER, signal TEXT, line TEXT, path TEXT HIDDEN, "
    "id INTEGER HIDDEN, hip_version TEXT HIDDEN, uptime INTEGER HIDDEN, request INTEGER HIDDEN, "
    "response_ms INTEGER HIDDEN, json TEXT HIDDEN";

}  // namespace

const Columns& Columns::Get() {
  static const Columns columns;
  return columns;
}

// The fields have no type, so SQLite compares and stores their values as they are.
Columns::Columns() {
  const std::span<const CompiledSignal> layouts = ListLayouts();
  std::map<std::string_view, std::size_t> columns;
  for (const CompiledSignal& layout : layouts) {
    for (const CompiledField& field : GetFields(layout)) columns[GetText(field.name).text()] = 0;
  }
  declaration_ = "CREATE TABLE udi(";
  declaration_ += kFixedColumns;
  std::size_t count = 0;
  for (auto& [name, column] : columns) {
    column = count++;
    declaration_ += ", \"";
    declaration_ += name;
    declaration_ += "\" HIDDEN";
  }
  declaration_ += ')';

  places_.assign(count * layouts.size(), kNoField);
  for (std::size_t layout = 0; layout < layouts.size(); ++layout) {
    std::uint8_t place = 0;
    for (const CompiledField& field : GetFields(layouts[layout])) {
      const std::size_t column = columns[GetText(field.name).text()];
      std::uint8_t& found = places_[column * layouts.size() + layout];
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
