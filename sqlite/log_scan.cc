#include "log_scan.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <span>
#include <string_view>
#include <utility>

#include "columns.h"
#include "fapi/vocabulary.h"
#include "hip/field_value.h"

namespace {

// Of different logs and of cursors of one statement.
constexpr std::size_t kMaxIdleLogs = 8;

// Of a log that can be anywhere.
constexpr std::uint64_t kUnknownRecord = std::numeric_limits<std::uint64_t>::max();

// Calls `take` with each value of a condition.
template <typename Take>
void ForEachValue(sqlite3_value* value, bool is_list, Take take) {
  if (!is_list) {
    take(value);
    return;
  }
  sqlite3_value* next = nullptr;
  for (int status = sqlite3_vtab_in_first(value, &next); status == SQLITE_OK && next != nullptr;
       status = sqlite3_vtab_in_next(value, &next)) {
    take(next);
  }
}

// Keeps the layouts for which `keep` is true.
template <typename Keep>
void SelectLayouts(std::optional<std::vector<bool>>& layouts, Keep keep) {
  const std::span<const CompiledSignal> all = ListLayouts();
  if (!layouts) layouts.emplace(all.size(), true);
  for (std::size_t i = 0; i < all.size(); ++i) {
    if ((*layouts)[i] && !keep(all[i])) (*layouts)[i] = false;
  }
}

// Returns the signals of a condition, or nothing if a value is no text.
std::optional<std::vector<std::string>> ListSignalNames(sqlite3_value* value, bool is_list) {
  std::optional<std::vector<std::string>> names(std::in_place);
  ForEachValue(value, is_list, [&names](sqlite3_value* name) {
    if (sqlite3_value_type(name) != SQLITE_TEXT) names.reset();
    if (names) names->emplace_back(ReadText(name));
  });
  return names;
}

// Returns the ids of a condition in ascending order, or nothing if a value is no integer.
std::optional<std::vector<std::uint16_t>> ListIds(sqlite3_value* value, bool is_list) {
  std::optional<std::vector<std::uint16_t>> ids(std::in_place);
  ForEachValue(value, is_list, [&ids](sqlite3_value* id) {
    if (sqlite3_value_type(id) != SQLITE_INTEGER) ids.reset();
    const sqlite3_int64 number = sqlite3_value_int64(id);
    if (ids && number >= 0 && number <= 0xFFFF) ids->push_back(static_cast<std::uint16_t>(number));
  });
  if (ids) std::sort(ids->begin(), ids->end());
  return ids;
}

// Limits a range by a comparison. It can stay too large: SQLite compares exactly.
void LimitRange(int op, sqlite3_value* value, std::int64_t& lowest, std::int64_t& highest) {
  std::int64_t low = 0;
  std::int64_t high = 0;
  if (sqlite3_value_type(value) == SQLITE_INTEGER) {
    low = high = sqlite3_value_int64(value);
  } else if (sqlite3_value_type(value) == SQLITE_FLOAT) {
    constexpr double kLargest = 9e18;
    const double number = std::clamp(sqlite3_value_double(value), -kLargest, kLargest);
    low = static_cast<std::int64_t>(std::floor(number));
    high = static_cast<std::int64_t>(std::ceil(number));
  } else {
    return;
  }
  const bool is_equal = op == SQLITE_INDEX_CONSTRAINT_EQ;
  if (is_equal || op == SQLITE_INDEX_CONSTRAINT_GT || op == SQLITE_INDEX_CONSTRAINT_GE) {
    lowest = std::max(lowest, low);
  }
  if (is_equal || op == SQLITE_INDEX_CONSTRAINT_LT || op == SQLITE_INDEX_CONSTRAINT_LE) {
    highest = std::min(highest, high);
  }
}

}  // namespace

const std::string& UdiTable::GetDeclaration() { return Columns::Get().declaration(); }

int LogScan::Start(const ScanPlan& plan, sqlite3_value** values) {
  if (table_.has_fixed_logs) logs_ = GetAllLogs(table_);
  bool has_path = table_.has_fixed_logs;
  look_up_.needs_requests = plan.needs_requests;
  for (const ScanPlan::Condition& condition : plan.conditions) {
    sqlite3_value* const value = *values++;
    if (condition.column == kPath) {
      logs_ = FindLog(table_, value);
      has_path = true;
    } else {
      UseCondition(condition, value);
    }
  }
  if (!has_path) return SetError(table_, "udi needs a path, as in udi('session.udi')");
  // Nothing matches, as for each row of an outer table whose value is NULL.
  if (look_up_.lowest_record > look_up_.highest_record) logs_ = {};
  return OpenNextLog();
}

void LogScan::UseCondition(const ScanPlan::Condition& condition, sqlite3_value* value) {
  // No comparison with NULL is true.
  if (!condition.is_list && sqlite3_value_type(value) == SQLITE_NULL) look_up_.highest_record = 0;
  switch (condition.column) {
    case kSignal:
      if (const auto names = ListSignalNames(value, condition.is_list)) {
        SelectLayouts(layouts_, [&names](const CompiledSignal& layout) {
          const std::string_view name = GetText(layout.name).text();
          return std::find(names->begin(), names->end(), name) != names->end();
        });
      }
      break;
    case kId:
      ids_ = ListIds(value, condition.is_list);
      break;
    case kRecord:
      LimitRange(condition.op, value, look_up_.lowest_record, look_up_.highest_record);
      break;
    case kTimeMs:
      LimitRange(condition.op, value, look_up_.lowest_ms, look_up_.highest_ms);
      checks_time_ = true;
      break;
    case kRequest:
      if (condition.op == SQLITE_INDEX_CONSTRAINT_EQ && !condition.is_list &&
          sqlite3_value_type(value) == SQLITE_INTEGER) {
        look_up_.request = sqlite3_value_int64(value);
      }
      only_answers_ = true;
      break;
    case kResponseMs:
      only_answers_ = true;
      break;
    case kFailure:
      only_failures_ =
          sqlite3_value_type(value) == SQLITE_INTEGER && sqlite3_value_int64(value) == 1;
      break;
    default:
      SelectLayouts(layouts_, [&condition](const CompiledSignal& layout) {
        return Columns::Get().FindField(layout, condition.column) != nullptr;
      });
      if (!condition.is_list && sqlite3_value_type(value) == SQLITE_INTEGER) {
        comparisons_.push_back({condition.column, condition.op, sqlite3_value_int64(value)});
      }
      break;
  }
}

// Opens the next log. After the last one, `log_` is null.
int LogScan::OpenNextLog() {
  KeepLog();
  if (logs_.next == logs_.end) return SQLITE_OK;
  place_ = logs_.next++;
  const auto idle = std::find_if(table_.idle.rbegin(), table_.idle.rend(),
                                 [this](const IdleLog& log) { return log.place == place_; });
  if (idle != table_.idle.rend() && look_up_.IsLimited()) {
    log_ = std::move(idle->log);
    row_.record = idle->record;
    table_.idle.erase(std::next(idle).base());
  } else {
    std::string error;
    log_ = OpenLog::Open(table_.paths[place_], table_.has_fixed_logs, error);
    if (log_ == nullptr) return SetError(table_, error);
    row_.record = 0;
  }
  FindRecords();
  return SQLITE_OK;
}

// Finds the records of the log that can match.
void LogScan::FindRecords() {
  next_range_ = 0;
  range_.reset();
  if (look_up_.IsLimited()) {
    UdiTable::LookedUpLog& looked_up = table_.looked_up[place_];
    if (looked_up.look_ups++ > 0) {
      index_ = LogIndex::Make(*log_, looked_up.index, look_up_);
      if (index_ != looked_up.index) row_.record = kUnknownRecord;
      looked_up.index = index_;
    }
  }
  if (index_ != nullptr) {
    ranges_ = index_->Find(look_up_);
  } else {
    ranges_ = {{static_cast<std::uint64_t>(look_up_.lowest_record),
                static_cast<std::uint64_t>(look_up_.highest_record)}};
    if (look_up_.needs_requests) exchanges_.emplace();
  }
}

// Another look-up can use the log. Without an index, it starts anew.
void LogScan::KeepLog() {
  if (log_ != nullptr && index_ != nullptr) {
    if (table_.idle.size() == kMaxIdleLogs) table_.idle.erase(table_.idle.begin());
    table_.idle.push_back({place_, std::move(log_), row_.record});
  }
  log_.reset();
  index_.reset();
}

// Moves the log in front of a record, or of others in front of it.
bool LogScan::MoveTo(std::uint64_t record) {
  const LogIndex::Start start = index_->FindStart(record);
  if (row_.record >= start.record && row_.record < record) return true;
  row_.record = start.record;
  return log_->Seek(start.position);
}

// Reads the next row of the open log. Returns false at its end.
bool LogScan::ReadItem() {
  do {
    if (!log_->Read(row_.item)) return false;
  } while (!row_.item.HasLine());
  row_.version = &log_->reader().version();
  row_.understood.reset();
  ++row_.record;
  if (exchanges_) TrackExchange(row_, *exchanges_);
  return true;
}

// Reads the next row of the open log whose record can match.
bool LogScan::ReadRecord() {
  if (!range_ || row_.record >= range_->last) {
    if (next_range_ == ranges_.size()) return false;
    range_ = ranges_[next_range_++];
    if (index_ != nullptr && !MoveTo(range_->first)) return false;
  }
  do {
    if (!ReadItem()) return false;
  } while (row_.record < range_->first);
  if (index_ != nullptr && look_up_.needs_requests) row_.request = index_->FindRequest(row_.record);
  return true;
}

int LogScan::ReadRow(std::int64_t limit) {
  while (log_ != nullptr) {
    if (ReadRecord()) {
      if (Matches() || --limit == 0) return SQLITE_OK;
    } else if (const int status = OpenNextLog(); status != SQLITE_OK) {
      return status;
    }
  }
  return SQLITE_OK;
}

// Whether the comparison can be true. SQLite compares what is no number.
bool LogScan::CanBeTrue(const Comparison& comparison, const SignalView& signal) {
  const CompiledField* const field = Columns::Get().FindField(*signal.layout, comparison.column);
  if (field == nullptr) return false;
  const FieldValue value = ReadField(signal, *field);
  if (value.kind != FieldValue::Kind::kNumber) return true;
  switch (comparison.op) {
    case SQLITE_INDEX_CONSTRAINT_EQ:
      return value.number == comparison.number;
    case SQLITE_INDEX_CONSTRAINT_LT:
      return value.number < comparison.number;
    case SQLITE_INDEX_CONSTRAINT_LE:
      return value.number <= comparison.number;
    case SQLITE_INDEX_CONSTRAINT_GT:
      return value.number > comparison.number;
    default:
      return value.number >= comparison.number;
  }
}

bool LogScan::Matches() {
  if (only_answers_ && !row_.request) return false;
  if (checks_time_) {
    const std::int64_t time_ms = GetTimeMs(row_);
    if (time_ms < look_up_.lowest_ms || time_ms > look_up_.highest_ms) return false;
  }
  if (ids_ && (row_.item.kind != LogItem::Kind::kSignal ||
               !std::binary_search(ids_->begin(), ids_->end(), row_.item.signal.id))) {
    return false;
  }
  if (layouts_) {
    const CompiledSignal* const layout = FindLayout(row_);
    if (layout == nullptr) return false;
    if (!(*layouts_)[static_cast<std::size_t>(layout - ListLayouts().data())]) return false;
  }
  if (only_failures_ && !HasFailed(row_)) return false;
  if (comparisons_.empty()) return true;
  const SignalView* const signal = ViewFields(row_);
  return signal != nullptr && std::all_of(comparisons_.begin(), comparisons_.end(),
                                          [signal](const Comparison& comparison) {
                                            return CanBeTrue(comparison, *signal);
                                          });
}
