// The table udi: a row per record that prints a line.
//
// A record that is not asked for costs little more than its reading, because the scan skips it
// before SQLite sees it (scan_plan), and a query for some records by number, time or request
// reads only the blocks around them (log_index). The costs of the plans are chosen so that SQLite
// reads a log once wherever the query allows it.
//
// For GROUP BY signal, SQLite sorts all rows, which takes longer than all else. If the query
// names no other column, as to count signals, rows of a signal are the same to SQLite. The
// table then reads the log, counts, and gives the rows in the order of their signals. An
// interrupt ends such a query after the reading. SQLite does not say whether a query names the
// rowid, so columns with its names hide it.

#include "udi_table.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "columns.h"
#include "fapi/vocabulary.h"
#include "log_row.h"
#include "log_scan.h"
#include "table_base.h"

namespace {

struct SignalCount {
  const CompiledSignal* layout;  // null for rows without a signal
  std::int64_t rows;
};

// Reads all rows of a scan. Returns their signals in ascending order.
int CountSignals(LogScan& scan, std::vector<SignalCount>& groups) {
  const std::span<const CompiledSignal> layouts = ListLayouts();
  groups.push_back({nullptr, 0});
  for (const CompiledSignal& layout : layouts) groups.push_back({&layout, 0});
  for (;;) {
    const int status = scan.ReadRow(LogScan::kNoLimit);
    if (status != SQLITE_OK) return status;
    if (scan.is_at_end()) break;
    const CompiledSignal* const layout = FindLayout(scan.row());
    ++groups[layout == nullptr ? 0 : static_cast<std::size_t>(layout - layouts.data()) + 1].rows;
  }
  std::erase_if(groups, [](const SignalCount& group) { return group.rows == 0; });
  // NULL is less than all texts.
  const auto get_name = [](const SignalCount& group) {
    return group.layout == nullptr ? std::string_view() : GetText(group.layout->name).text();
  };
  std::sort(groups.begin(), groups.end(), [&](const SignalCount& left, const SignalCount& right) {
    return get_name(left) < get_name(right);
  });
  return SQLITE_OK;
}

class UdiCursor : public sqlite3_vtab_cursor {
 public:
  explicit UdiCursor(UdiTable& table) : sqlite3_vtab_cursor{}, table_(table) { ++table_.cursors; }
  ~UdiCursor() {
    scan_.reset();
    if (--table_.cursors > 0) return;
    table_.looked_up.clear();
    table_.idle.clear();
  }
  UdiCursor(const UdiCursor&) = delete;
  UdiCursor& operator=(const UdiCursor&) = delete;

  int Filter(int plan_number, const char* plan_text, sqlite3_value** values) {
    if (plan_number != plan_number_ || plan_text != plan_text_) {
      plan_ = DecodePlan(plan_number, plan_text);
      plan_number_ = plan_number;
      plan_text_ = plan_text;
    }
    is_grouped_ = false;  // until the groups are there
    scan_.emplace(table_);
    int status = scan_->Start(plan_, values);
    if (status != SQLITE_OK) return status;
    if (!plan_.is_grouped) return scan_->ReadRow();
    is_grouped_ = true;
    groups_.clear();
    group_ = 0;
    row_of_group_ = 0;
    status = CountSignals(*scan_, groups_);
    if (plan_.descends) std::reverse(groups_.begin(), groups_.end());
    return status;
  }

  int Next() {
    if (!is_grouped_) return scan_->ReadRow();
    if (++row_of_group_ == groups_[group_].rows) {
      ++group_;
      row_of_group_ = 0;
    }
    return SQLITE_OK;
  }

  bool IsAtEnd() const { return is_grouped_ ? group_ == groups_.size() : scan_->is_at_end(); }

  // The same in all scans: to evaluate an OR, SQLite can scan a table twice, and takes rows with
  // the same rowid for one.
  sqlite3_int64 MakeRowid() const {
    constexpr unsigned kRecordBits = 40;
    return static_cast<sqlite3_int64>(std::uint64_t{scan_->place()} << kRecordBits |
                                      scan_->row().record);
  }

  void ReturnColumn(sqlite3_context* context, int column) {
    LogRow& row = scan_->row();
    switch (column) {
      case kRecord:
        sqlite3_result_int64(context, static_cast<sqlite3_int64>(row.record));
        break;
      case kStamp:
        ReturnStamp(context, row, texts_);
        break;
      case kTimeMs:
        sqlite3_result_int64(context, GetTimeMs(row));
        break;
      case kSignal:
        if (const auto* layout = is_grouped_ ? groups_[group_].layout : FindLayout(row)) {
          const PaddedText name = GetText(layout->name);
          sqlite3_result_text(context, name.data, static_cast<int>(name.size), SQLITE_STATIC);
        }
        break;
      case kLine:
        ReturnLine(context, row, texts_);
        break;
      case kPath:
        ReturnText(context, table_.paths[scan_->place()]);
        break;
      case kId:
        if (row.item.kind == LogItem::Kind::kSignal) {
          sqlite3_result_int(context, row.item.signal.id);
        }
        break;
      case kHipVersion:
        sqlite3_result_text(context, row.version->name, -1, SQLITE_STATIC);
        break;
      case kUptime:
        if (row.item.IsEvent(DriverEventType::kTimeRef)) {
          sqlite3_result_int(context, row.item.uptime);
        }
        break;
      case kRequest:
        if (row.request) {
          sqlite3_result_int64(context, static_cast<sqlite3_int64>(row.request->record));
        }
        break;
      case kResponseMs:
        if (row.request) sqlite3_result_int64(context, GetTimeMs(row) - row.request->time_ms);
        break;
      case kJson:
        ReturnJson(context, row, table_.paths[scan_->place()], texts_);
        break;
      case kFailure:
        ReturnFailure(context, row);
        break;
      case kDumpBytes:
        ReturnDumpBytes(context, row);
        break;
      case kRowid:
      case kOid:
      case kUnderscoreRowid:
        sqlite3_result_int64(context, MakeRowid());
        break;
      default:
        ReturnField(context, row, column, texts_);
        break;
    }
  }

 private:
  UdiTable& table_;
  // The plan of the last scan, because an inner table of a join has one scan per outer row.
  ScanPlan plan_;
  int plan_number_ = 0;
  std::string plan_text_;
  std::optional<LogScan> scan_;
  RowTexts texts_;

  // Of a grouped scan: the signals in their order, and the current row.
  bool is_grouped_ = false;
  std::vector<SignalCount> groups_;
  std::size_t group_ = 0;
  std::int64_t row_of_group_ = 0;
};

}  // namespace

constexpr sqlite3_module kUdiModule = MakeModule<UdiTable, UdiCursor>();
