#ifndef VRKT_SQLITE_COLUMNS_H_
#define VRKT_SQLITE_COLUMNS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fapi/compiled_signal.h"

// The columns of the table udi: some that each row has, then every name of a field of any
// signal, in alphabetical order. A signal's field is found by two indices, the column's
// and the layout's.

// In the order of the table. SELECT * shows those before kPath. As a table-valued function,
// udi takes the hidden columns as its arguments, so kPath is the first of them. The last three
// replace SQLite's own names of the rowid.
// NOLINTNEXTLINE(cppcoreguidelines-macro-usage): makes the enum and the declaration
#define VRKT_UDI_COLUMNS(X)                    \
  X(kRecord, "record INTEGER")                 \
  X(kStamp, "stamp TEXT")                      \
  X(kTimeMs, "time_ms INTEGER")                \
  X(kSignal, "signal TEXT")                    \
  X(kLine, "line TEXT")                        \
  X(kPath, "path TEXT HIDDEN")                 \
  X(kId, "id INTEGER HIDDEN")                  \
  X(kHipVersion, "hip_version TEXT HIDDEN")    \
  X(kUptime, "uptime INTEGER HIDDEN")          \
  X(kRequest, "request INTEGER HIDDEN")        \
  X(kResponseMs, "response_ms INTEGER HIDDEN") \
  X(kJson, "json TEXT HIDDEN")                 \
  X(kFailure, "failure INTEGER HIDDEN")        \
  X(kDumpBytes, "dump_bytes INTEGER HIDDEN")   \
  X(kRowid, "rowid INTEGER HIDDEN")            \
  X(kOid, "oid INTEGER HIDDEN")                \
  X(kUnderscoreRowid, "_rowid_ INTEGER HIDDEN")

enum Column : int {
#define VRKT_NAME_COLUMN(name, declaration) name,
  VRKT_UDI_COLUMNS(VRKT_NAME_COLUMN)
#undef VRKT_NAME_COLUMN
      kFirstField,
};

class Columns {
 public:
  // The columns of this vocabulary. Made at the first call.
  static const Columns& Get();

  // The CREATE TABLE statement. SQLite rejects it if a field has the name of one of the
  // columns above.
  const std::string& declaration() const { return declaration_; }

  // Returns the field of a layout in a column from kFirstField on, or null. If a layout
  // has a name twice, this is the first of them. These are dumps, which are equal.
  const CompiledField* FindField(const CompiledSignal& layout, int column) const;

 private:
  Columns();

  static constexpr std::uint8_t kNoField = 0xFF;

  std::string declaration_;
  // The place of the field in its layout, by column and then by layout: a query that
  // names few columns uses a small part.
  std::vector<std::uint8_t> places_;
};

#endif  // VRKT_SQLITE_COLUMNS_H_
