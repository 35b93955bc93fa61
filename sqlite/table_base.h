#ifndef VRKT_SQLITE_TABLE_BASE_H_
#define VRKT_SQLITE_TABLE_BASE_H_

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sqlite_api.h"

// What the tables udi and udi_log have in common. Each can be used in two ways: as a
// table-valued function, as in udi('a.udi'), whose argument is a constraint on a hidden
// column, and as a table of fixed logs:
//
//   CREATE VIRTUAL TABLE temp.log USING udi('a.udi', 'b.udi')
//
// In such a table a log with a damaged header is one without rows; a function returns an
// error.
//
// In both ways only statements of the user can read it, no view or trigger of a database
// (SQLITE_VTAB_DIRECTONLY), except temporary ones.

struct LogTable : sqlite3_vtab {
  bool has_fixed_logs = false;
  // Of the fixed logs, or all arguments so far. The place of a path is part of the rowids, so
  // it never changes.
  std::vector<std::string> paths;
};

// Logs of a table, by their places in `paths`.
struct LogRange {
  std::size_t next = 0;
  std::size_t end = 0;
};

// Declares a table, and takes its logs from the arguments of its module. Returns a status, and
// sets `error` on failure.
int ConnectTable(sqlite3* db, const std::string& declaration, int argc, const char* const* argv,
                 LogTable& table, char** error);

// All fixed logs.
inline LogRange GetAllLogs(const LogTable& table) { return {0, table.paths.size()}; }

// Returns the log of this path. A table-valued function opens any path, a table has the fixed
// ones. NULL and a BLOB are no path.
LogRange FindLog(LogTable& table, sqlite3_value* path);

// Returns a value as text.
std::string_view ReadText(sqlite3_value* value);

// Copies a text into the result of a column, because SQLite keeps it for longer than a row.
void ReturnText(sqlite3_context* context, std::string_view text);

// Sets the message of the error that a callback returns, and returns the error.
int SetError(sqlite3_vtab& table, const std::string& message);

// Makes the callbacks of a module. A Table derives from LogTable and has
//   static const std::string& GetDeclaration()
//   int MakePlan(sqlite3_index_info* info)
// A Cursor derives from sqlite3_vtab_cursor, is made of its Table, and has
//   int Filter(int plan, const char* text, sqlite3_value** values)
//   int Next()
//   bool IsAtEnd() const
//   void ReturnColumn(sqlite3_context* context, int column)
//   sqlite3_int64 MakeRowid() const
template <typename Table, typename Cursor>
constexpr sqlite3_module MakeModule() {
  sqlite3_module module{};
  module.xConnect = [](sqlite3* db, void* /*unused*/, int argc, const char* const* argv,
                       sqlite3_vtab** table, char** error) {
    return CatchNoMemory([&] {
      auto made = std::make_unique<Table>();
      const int status = ConnectTable(db, Table::GetDeclaration(), argc, argv, *made, error);
      if (status == SQLITE_OK) *table = made.release();
      return status;
    });
  };
  module.xCreate = module.xConnect;  // equal, which makes it a table-valued function, too
  module.xDisconnect = [](sqlite3_vtab* table) {
    std::unique_ptr<Table>(static_cast<Table*>(table)).reset();
    return SQLITE_OK;
  };
  module.xDestroy = module.xDisconnect;
  module.xBestIndex = [](sqlite3_vtab* table, sqlite3_index_info* info) {
    return CatchNoMemory([&] { return static_cast<Table*>(table)->MakePlan(info); });
  };
  module.xOpen = [](sqlite3_vtab* table, sqlite3_vtab_cursor** cursor) {
    return CatchNoMemory([&] {
      *cursor = std::make_unique<Cursor>(*static_cast<Table*>(table)).release();
      return SQLITE_OK;
    });
  };
  module.xClose = [](sqlite3_vtab_cursor* cursor) {
    std::unique_ptr<Cursor>(static_cast<Cursor*>(cursor)).reset();
    return SQLITE_OK;
  };
  module.xFilter = [](sqlite3_vtab_cursor* cursor, int plan, const char* text, int /*argc*/,
                      sqlite3_value** values) {
    return CatchNoMemory([&] { return static_cast<Cursor*>(cursor)->Filter(plan, text, values); });
  };
  module.xNext = [](sqlite3_vtab_cursor* cursor) {
    return CatchNoMemory([&] { return static_cast<Cursor*>(cursor)->Next(); });
  };
  module.xEof = [](sqlite3_vtab_cursor* cursor) {
    return static_cast<Cursor*>(cursor)->IsAtEnd() ? 1 : 0;
  };
  module.xColumn = [](sqlite3_vtab_cursor* cursor, sqlite3_context* context, int column) {
    return CatchNoMemory([&] {  // a column that returns nothing is NULL
      static_cast<Cursor*>(cursor)->ReturnColumn(context, column);
      return SQLITE_OK;
    });
  };
  module.xRowid = [](sqlite3_vtab_cursor* cursor, sqlite3_int64* rowid) {
    *rowid = static_cast<Cursor*>(cursor)->MakeRowid();
    return SQLITE_OK;
  };
  return module;
}

#endif  // VRKT_SQLITE_TABLE_BASE_H_
