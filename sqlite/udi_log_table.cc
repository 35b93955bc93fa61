// The table udi_log: a row per log, which it reads to its end, without making lines.

#include "udi_log_table.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "open_log.h"
#include "table_base.h"

namespace {

// `log` is the argument of the table-valued function, because arguments are hidden columns.
// It equals `path`.
constexpr const char* kDeclaration =
    "CREATE TABLE udi_log(path TEXT, records INTEGER, bytes INTEGER, hip_versions TEXT, "
    "first_ms INTEGER, last_ms INTEGER, ending TEXT, log TEXT HIDDEN)";
enum Column : int { kPath, kRecords, kBytes, kHipVersions, kFirstMs, kLastMs, kEnding, kLog };

struct Summary {
  std::int64_t records = 0;
  std::uint64_t bytes = 0;   // up to the end of the last whole header or record
  std::string hip_versions;  // as in "14.3.10,14.5.12", each once, in the order of the log
  std::optional<std::int64_t> first_ms;
  std::optional<std::int64_t> last_ms;
  std::string ending;
};

struct Scan {
  LogRange logs;  // the next is that which `summary` describes
  Summary summary;
};

struct Cursor {
  sqlite3_vtab_cursor base;  // first, because SQLite has a pointer to it
  Scan* scan;
};

Scan& GetScan(sqlite3_vtab_cursor* cursor) { return *reinterpret_cast<Cursor*>(cursor)->scan; }

// A version never decreases in a log, so equal ones follow each other.
Summary ReadSummary(OpenLog& log) {
  Summary summary;
  const HipVersionEntry* version = nullptr;
  const auto note_version = [&] {
    if (&log.reader().version() == version) return;
    if (version != nullptr) summary.hip_versions += ',';
    version = &log.reader().version();
    summary.hip_versions += version->name;
  };
  if (log.has_header()) note_version();
  summary.bytes = log.has_header() ? log.reader().position().offset : 0;
  LogItem item;
  while (log.Read(item)) {
    summary.bytes = log.reader().position().offset;
    if (item.kind == LogItem::Kind::kHeader) note_version();
    if (!item.HasLine()) continue;
    ++summary.records;
    summary.last_ms = GetExactTime(item.time).ToMs();
    if (!summary.first_ms) summary.first_ms = summary.last_ms;
  }
  summary.ending = log.DescribeEnd();
  return summary;
}

// Reads the next log, if there is one.
int ReadLog(Scan& scan, sqlite3_vtab& table) {
  if (scan.logs.next == scan.logs.end) return SQLITE_OK;
  std::string error;
  const LogTable& logs = GetTable(&table);
  const std::unique_ptr<OpenLog> log =
      OpenLog::Open(logs.paths[scan.logs.next], logs.has_fixed_logs, error);
  if (log == nullptr) return SetError(table, error);
  scan.summary = ReadSummary(*log);
  return SQLITE_OK;
}

int BestIndex(sqlite3_vtab* base, sqlite3_index_info* info) {
  const LogTable& table = GetTable(base);
  info->estimatedCost = 1e7;
  info->estimatedRows = 1;
  if (table.has_fixed_logs) {
    info->estimatedCost *= static_cast<double>(table.paths.size());
    info->estimatedRows = static_cast<sqlite3_int64>(table.paths.size());
    return SQLITE_OK;
  }
  bool is_unusable = false;
  for (int i = 0; i < info->nConstraint; ++i) {
    const auto& constraint = info->aConstraint[i];
    const bool is_path = constraint.iColumn == kPath || constraint.iColumn == kLog;
    if (!is_path || constraint.op != SQLITE_INDEX_CONSTRAINT_EQ) continue;
    if (constraint.usable == 0) {
      is_unusable = true;
      continue;
    }
    info->aConstraintUsage[i] = {1, 1};
    return SQLITE_OK;
  }
  if (is_unusable) return SQLITE_CONSTRAINT;
  return SetError(*base, "udi_log needs a path, as in udi_log('session.udi')");
}

int Open(sqlite3_vtab* /*table*/, sqlite3_vtab_cursor** cursor) {
  return CatchNoMemory([&] {
    auto scan = std::make_unique<Scan>();
    auto made = std::make_unique<Cursor>();
    made->scan = scan.release();
    *cursor = &made.release()->base;
    return SQLITE_OK;
  });
}

int Close(sqlite3_vtab_cursor* cursor) {
  delete &GetScan(cursor);
  delete reinterpret_cast<Cursor*>(cursor);
  return SQLITE_OK;
}

int Filter(sqlite3_vtab_cursor* cursor, int /*plan*/, const char* /*text*/, int argc,
           sqlite3_value** argv) {
  return CatchNoMemory([&] {
    Scan& scan = GetScan(cursor);
    LogTable& table = GetTable(cursor->pVtab);
    scan = Scan();
    if (table.has_fixed_logs) {
      scan.logs = {0, table.paths.size()};
    } else if (argc > 0) {
      scan.logs = FindLog(table, argv[0]);
    }
    return ReadLog(scan, *cursor->pVtab);
  });
}

int Next(sqlite3_vtab_cursor* cursor) {
  return CatchNoMemory([&] {
    ++GetScan(cursor).logs.next;
    return ReadLog(GetScan(cursor), *cursor->pVtab);
  });
}

int IsAtEnd(sqlite3_vtab_cursor* cursor) {
  const Scan& scan = GetScan(cursor);
  return scan.logs.next == scan.logs.end ? 1 : 0;
}

int GetRowid(sqlite3_vtab_cursor* cursor, sqlite3_int64* rowid) {
  *rowid = static_cast<sqlite3_int64>(GetScan(cursor).logs.next) + 1;
  return SQLITE_OK;
}

void ReturnTime(sqlite3_context* context, std::optional<std::int64_t> time_ms) {
  if (time_ms) sqlite3_result_int64(context, *time_ms);
}

void ReturnText(sqlite3_context* context, const std::string& text) {
  sqlite3_result_text64(context, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

int ReadColumn(sqlite3_vtab_cursor* cursor, sqlite3_context* context, int column) {
  const Scan& scan = GetScan(cursor);
  const Summary& summary = scan.summary;
  switch (static_cast<Column>(column)) {
    case kPath:
    case kLog:
      ReturnText(context, GetTable(cursor->pVtab).paths[scan.logs.next]);
      break;
    case kRecords:
      sqlite3_result_int64(context, summary.records);
      break;
    case kBytes:
      sqlite3_result_int64(context, static_cast<sqlite3_int64>(summary.bytes));
      break;
    case kHipVersions:
      ReturnText(context, summary.hip_versions);
      break;
    case kFirstMs:
      ReturnTime(context, summary.first_ms);
      break;
    case kLastMs:
      ReturnTime(context, summary.last_ms);
      break;
    case kEnding:
      ReturnText(context, summary.ending);
      break;
  }
  return SQLITE_OK;
}

int Connect(sqlite3* db, void* /*unused*/, int argc, const char* const* argv, sqlite3_vtab** table,
            char** error) {
  return CatchNoMemory([&] { return ConnectTable(db, kDeclaration, argc, argv, table, error); });
}

}  // namespace

constexpr sqlite3_module kUdiLogModule = [] {
  sqlite3_module module{};
  module.xCreate = Connect;  // equals xConnect, which makes it a table-valued function, too
  module.xConnect = Connect;
  module.xBestIndex = BestIndex;
  module.xDisconnect = DisconnectTable;
  module.xDestroy = DisconnectTable;
  module.xOpen = Open;
  module.xClose = Close;
  module.xFilter = Filter;
  module.xNext = Next;
  module.xEof = IsAtEnd;
  module.xColumn = ReadColumn;
  module.xRowid = GetRowid;
  return module;
}();
