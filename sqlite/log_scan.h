#ifndef VRKT_SQLITE_LOG_SCAN_H_
#define VRKT_SQLITE_LOG_SCAN_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hip/exchange.h"
#include "log_index.h"
#include "log_row.h"
#include "open_log.h"
#include "scan_plan.h"
#include "table_base.h"

// A log between two look-ups, after the record that was read last.
struct IdleLog {
  std::size_t place = 0;  // in the paths of the table
  std::unique_ptr<OpenLog> log;
  std::uint64_t record = 0;
};

// The table udi, and what its scans share. The first look-up of a statement is a scan that ends
// early. The second makes an index, so scans of a whole log pay nothing for it. The indexes exist
// as long as a statement reads the table, and not longer, so they are not out of date.
struct UdiTable : LogTable {
  static const std::string& GetDeclaration();
  int MakePlan(sqlite3_index_info* info) { return ::MakePlan(*this, info); }

  struct LookedUpLog {
    int look_ups = 0;
    std::shared_ptr<const LogIndex> index;
  };

  std::map<std::size_t, LookedUpLog> looked_up;  // by the place of the path
  std::vector<IdleLog> idle;                     // the last one that was used is the last
  int cursors = 0;
};

// Reads the logs of one scan, up to a row that can match, and keeps this row.
class LogScan {
 public:
  explicit LogScan(UdiTable& table) : table_(table) {}
  ~LogScan() { KeepLog(); }
  LogScan(const LogScan&) = delete;
  LogScan& operator=(const LogScan&) = delete;

  // SQLite looks for an interrupt only between rows. So ReadRow returns a row that does not match
  // after this number of them, about a millisecond.
  static constexpr std::int64_t kRowsBetweenInterrupts = 10000;
  static constexpr std::int64_t kNoLimit = 0;

  // Starts the scan, before its first row. The values are those of the plan's conditions. Call it
  // once. Returns a status.
  int Start(const ScanPlan& plan, sqlite3_value** values);

  // Reads up to a row that can match, or up to the last of `limit` rows. Returns a status.
  int ReadRow(std::int64_t limit = kRowsBetweenInterrupts);

  bool is_at_end() const { return log_ == nullptr; }
  LogRow& row() { return row_; }
  const LogRow& row() const { return row_; }
  std::size_t place() const { return place_; }  // of the log in the table's paths

 private:
  // A comparison of a field with a number.
  struct Comparison {
    int column;
    int op;
    std::int64_t number;
  };

  void UseCondition(const ScanPlan::Condition& condition, sqlite3_value* value);
  int OpenNextLog();
  void FindRecords();
  void KeepLog();
  bool MoveTo(std::uint64_t record);
  bool ReadItem();
  bool ReadRecord();
  bool Matches();
  static bool CanBeTrue(const Comparison& comparison, const SignalView& signal);

  UdiTable& table_;

  // What can match: layouts, by index, and ids. None means all, and also what is no signal.
  std::optional<std::vector<bool>> layouts_;
  std::optional<std::vector<std::uint16_t>> ids_;
  std::vector<Comparison> comparisons_;
  bool only_answers_ = false;  // signals that answer one
  bool only_failures_ = false;
  bool checks_time_ = false;
  LookUp look_up_;

  LogRange logs_;  // that follow
  std::size_t place_ = 0;
  std::unique_ptr<OpenLog> log_;  // null after the last log
  std::shared_ptr<const LogIndex> index_;
  std::vector<RecordRange> ranges_;  // of the open log, that can match
  std::size_t next_range_ = 0;
  std::optional<RecordRange> range_;          // that is being read
  std::optional<ExchangeTracker> exchanges_;  // if the query needs it and there is no index
  LogRow row_;
};

#endif  // VRKT_SQLITE_LOG_SCAN_H_
