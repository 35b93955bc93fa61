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

struct UdiLogTable : LogTable {
  static const std::string& GetDeclaration() {
    static const std::string declaration = kDeclaration;
    return declaration;
  }

  int MakePlan(sqlite3_index_info* info) {
    info->estimatedCost = 1e7;
    info->estimatedRows = 1;
    if (has_fixed_logs) {
      info->estimatedCost *= static_cast<double>(paths.size());
      info->estimatedRows = static_cast<sqlite3_int64>(paths.size());
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
    return SetError(*this, "udi_log needs a path, as in udi_log('session.udi')");
  }
};

class UdiLogCursor : public sqlite3_vtab_cursor {
 public:
  explicit UdiLogCursor(UdiLogTable& table) : sqlite3_vtab_cursor{}, table_(table) {}

  int Filter(int /*plan*/, const char* /*text*/, sqlite3_value** values) {
    logs_ = table_.has_fixed_logs ? GetAllLogs(table_) : FindLog(table_, values[0]);
    return ReadLog();
  }

  int Next() {
    ++logs_.next;
    return ReadLog();
  }

  bool IsAtEnd() const { return logs_.next == logs_.end; }
  sqlite3_int64 MakeRowid() const { return static_cast<sqlite3_int64>(logs_.next) + 1; }

  void ReturnColumn(sqlite3_context* context, int column) const {
    switch (static_cast<Column>(column)) {
      case kPath:
      case kLog:
        ReturnText(context, table_.paths[logs_.next]);
        break;
      case kRecords:
        sqlite3_result_int64(context, summary_.records);
        break;
      case kBytes:
        sqlite3_result_int64(context, static_cast<sqlite3_int64>(summary_.bytes));
        break;
      case kHipVersions:
        ReturnText(context, summary_.hip_versions);
        break;
      case kFirstMs:
        if (summary_.first_ms) sqlite3_result_int64(context, *summary_.first_ms);
        break;
      case kLastMs:
        if (summary_.last_ms) sqlite3_result_int64(context, *summary_.last_ms);
        break;
      case kEnding:
        ReturnText(context, summary_.ending);
        break;
    }
  }

 private:
  // Reads the next log, if there is one.
  int ReadLog() {
    if (IsAtEnd()) return SQLITE_OK;
    std::string error;
    const std::unique_ptr<OpenLog> log =
        OpenLog::Open(table_.paths[logs_.next], table_.has_fixed_logs, error);
    if (log == nullptr) return SetError(table_, error);
    summary_ = ReadSummary(*log);
    return SQLITE_OK;
  }

  UdiLogTable& table_;
  LogRange logs_;  // the next is that which `summary_` describes
  Summary summary_;
};

}  // namespace

constexpr sqlite3_module kUdiLogModule = MakeModule<UdiLogTable, UdiLogCursor>();
