#ifndef VRKT_SQLITE_TABLE_BASE_H_
#define VRKT_SQLITE_TABLE_BASE_H_

#include <cstddef>
#include <string>
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

struct LogTable {
  sqlite3_vtab base;  // first, because SQLite has a pointer to it
  bool has_fixed_logs;
  // Of the fixed logs, or all arguments so far. The place of a path is part of the rowids, so
  // it never changes.
  std::vector<std::string> paths;
};

// Logs of a table, by their places in `paths`.
struct LogRange {
  std::size_t next = 0;
  std::size_t end = 0;
};

inline LogTable& GetTable(sqlite3_vtab* base) { return *reinterpret_cast<LogTable*>(base); }

// As xConnect and xDisconnect of a module, for a table with this CREATE TABLE statement.
int ConnectTable(sqlite3* db, const std::string& declaration, int argc, const char* const* argv,
                 sqlite3_vtab** table, char** error);
int DisconnectTable(sqlite3_vtab* table);

// Returns the log that the argument of a table-valued function gives: none if it is NULL.
LogRange FindLog(LogTable& table, sqlite3_value* argument);

// Sets the message of the error that a callback returns, and returns the error.
int SetError(sqlite3_vtab& table, const std::string& message);

#endif  // VRKT_SQLITE_TABLE_BASE_H_
