// The table udi_fields: a row per field of each signal of each version. It reads no log.

#include "udi_fields_table.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "fapi/vocabulary.h"

namespace {

constexpr const char* kDeclaration =
    "CREATE TABLE udi_fields(hip_version TEXT, id INTEGER, signal TEXT, field TEXT, kind TEXT, "
    "labels TEXT)";
enum Column : int { kHipVersion, kId, kSignal, kField, kKind, kLabels };

struct Row {
  HipVersionTag version;
  KnownSignal signal;
  const CompiledField* field;
};

struct Cursor : sqlite3_vtab_cursor {
  std::vector<Row> rows;
  std::size_t place = 0;
};

// It has no virtual functions, so there is no dynamic_cast.
Cursor& GetCursor(sqlite3_vtab_cursor* cursor) {
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-static-cast-downcast)
  return static_cast<Cursor&>(*cursor);
}

// What a column of `udi` has for a field of this form.
const char* GetKind(FieldRenderer form) {
  switch (form) {
    case FieldRenderer::kU8:
    case FieldRenderer::kU16:
    case FieldRenderer::kU32:
    case FieldRenderer::kI16:
    case FieldRenderer::kI32:
    case FieldRenderer::kX16:
    case FieldRenderer::kX16NoSpace:
    case FieldRenderer::kX32:
      return "integer";
    case FieldRenderer::kMac:
      return "address";
    case FieldRenderer::kHex8:
      return "timestamp";
    case FieldRenderer::kWords:
      return "array";
    case FieldRenderer::kEnum16:
      return "label";
    case FieldRenderer::kDump:
      return "dump";
  }
  return nullptr;
}

// As in {"0":"success","1":"unspecified_failure"}. No label needs an escape.
std::string MakeLabels(const Row& row) {
  std::string json;
  for (const CompiledLabel& label : ListLabels(row.field->enum_index)) {
    if (!label.versions.Contains(row.version)) continue;
    json += json.empty() ? "{\"" : ",\"";
    json += std::to_string(label.value) + "\":\"";
    json += GetText(label.text).text();
    json += '"';
  }
  return json.empty() ? "{}" : json + '}';
}

std::vector<Row> ListRows() {
  std::vector<Row> rows;
  for (const HipVersionName& version : kHipVersionNames) {
    for (const KnownSignal& signal : ListSignals(version.tag)) {
      const std::span<const CompiledField> fields = GetFields(*signal.layout);
      for (const CompiledField& field : fields) {
        const auto first = std::find_if(fields.begin(), fields.end(), [&](const auto& other) {
          return other.name.start == field.name.start;
        });
        if (&*first == &field) rows.push_back({version.tag, signal, &field});
      }
    }
  }
  return rows;
}

int Connect(sqlite3* db, void* /*unused*/, int /*argc*/, const char* const* /*argv*/,
            sqlite3_vtab** table, char** /*error*/) {
  return CatchNoMemory([&] {
    const int status = sqlite3_declare_vtab(db, kDeclaration);
    if (status == SQLITE_OK) *table = std::make_unique<sqlite3_vtab>().release();
    return status;
  });
}

int Disconnect(sqlite3_vtab* table) {
  delete table;
  return SQLITE_OK;
}

int BestIndex(sqlite3_vtab* /*table*/, sqlite3_index_info* info) {
  info->estimatedRows = 25'000;
  info->estimatedCost = 25'000;
  return SQLITE_OK;
}

int Open(sqlite3_vtab* /*table*/, sqlite3_vtab_cursor** cursor) {
  return CatchNoMemory([&] {
    *cursor = std::make_unique<Cursor>().release();
    return SQLITE_OK;
  });
}

int Close(sqlite3_vtab_cursor* cursor) {
  delete &GetCursor(cursor);
  return SQLITE_OK;
}

int Filter(sqlite3_vtab_cursor* cursor, int /*plan*/, const char* /*text*/, int /*argc*/,
           sqlite3_value** /*argv*/) {
  return CatchNoMemory([&] {
    Cursor& scan = GetCursor(cursor);
    if (scan.rows.empty()) scan.rows = ListRows();
    scan.place = 0;
    return SQLITE_OK;
  });
}

int Next(sqlite3_vtab_cursor* cursor) {
  ++GetCursor(cursor).place;
  return SQLITE_OK;
}

int IsAtEnd(sqlite3_vtab_cursor* cursor) {
  return GetCursor(cursor).place == GetCursor(cursor).rows.size() ? 1 : 0;
}

int GetRowid(sqlite3_vtab_cursor* cursor, sqlite3_int64* rowid) {
  *rowid = static_cast<sqlite3_int64>(GetCursor(cursor).place) + 1;
  return SQLITE_OK;
}

int ReadColumn(sqlite3_vtab_cursor* cursor, sqlite3_context* context, int column) {
  const auto return_constant = [&](std::string_view text) {
    sqlite3_result_text(context, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
  };
  return CatchNoMemory([&] {
    const Row& row = GetCursor(cursor).rows[GetCursor(cursor).place];
    switch (static_cast<Column>(column)) {
      case kHipVersion:
        return_constant(kHipVersionNames[GetIndex(row.version)].dotted);
        break;
      case kId:
        sqlite3_result_int(context, row.signal.id);
        break;
      case kSignal:
        return_constant(GetText(row.signal.layout->name).text());
        break;
      case kField:
        return_constant(GetText(row.field->name).text());
        break;
      case kKind:
        return_constant(GetKind(row.field->form));
        break;
      case kLabels:
        if (row.field->form == FieldRenderer::kEnum16) {
          const std::string labels = MakeLabels(row);
          sqlite3_result_text64(context, labels.data(), labels.size(), SQLITE_TRANSIENT,
                                SQLITE_UTF8);
        }
        break;
    }
    return SQLITE_OK;
  });
}

}  // namespace

constexpr sqlite3_module kUdiFieldsModule = [] {
  sqlite3_module module{};
  module.xConnect = Connect;  // without xCreate, it is there without CREATE VIRTUAL TABLE
  module.xBestIndex = BestIndex;
  module.xDisconnect = Disconnect;
  module.xOpen = Open;
  module.xClose = Close;
  module.xFilter = Filter;
  module.xNext = Next;
  module.xEof = IsAtEnd;
  module.xColumn = ReadColumn;
  module.xRowid = GetRowid;
  return module;
}();
