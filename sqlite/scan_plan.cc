#include "scan_plan.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "columns.h"

namespace {

constexpr int kNeedsRequests = 1;
constexpr int kIsGrouped = 2;
constexpr int kDescends = 4;

// Stores the plan in `info`. Returns whether there is memory for it.
bool EncodePlan(const ScanPlan& plan, sqlite3_index_info* info) {
  info->idxNum = (plan.needs_requests ? kNeedsRequests : 0) | (plan.is_grouped ? kIsGrouped : 0) |
                 (plan.descends ? kDescends : 0);
  std::string text;
  for (const ScanPlan::Condition& condition : plan.conditions) {
    text += std::to_string(condition.column) + ' ' + std::to_string(condition.op) +
            (condition.is_list ? " 1 " : " 0 ");
  }
  info->idxStr = sqlite3_mprintf("%s", text.c_str());
  info->needToFreeIdxStr = 1;
  return info->idxStr != nullptr;
}

bool IsFile(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode);
}

// Whether all logs are files, so that a scan can start anywhere. `path` is the constraint on the
// path, or -1. A path that is not known yet is taken for a file.
bool AreFiles(const LogTable& table, sqlite3_index_info* info, int path) {
  if (table.has_fixed_logs) return std::all_of(table.paths.begin(), table.paths.end(), IsFile);
  sqlite3_value* value = nullptr;
  if (sqlite3_vtab_rhs_value(info, path, &value) != SQLITE_OK) return true;
  return sqlite3_value_type(value) != SQLITE_TEXT || IsFile(std::string(ReadText(value)));
}

bool IsComparison(int op) {
  return op == SQLITE_INDEX_CONSTRAINT_EQ || op == SQLITE_INDEX_CONSTRAINT_GT ||
         op == SQLITE_INDEX_CONSTRAINT_LE || op == SQLITE_INDEX_CONSTRAINT_LT ||
         op == SQLITE_INDEX_CONSTRAINT_GE;
}

// Which conditions on a column a scan can use.
struct Use {
  bool equal = false;
  bool others = false;
  bool lists = false;  // all values at once. Otherwise SQLite makes a scan per value.
};

Use GetUse(int column, bool finds_records) {
  switch (column) {
    case kPath:
    case kFailure:
      return {.equal = true};
    case kSignal:
    case kId:
      return {.equal = true, .lists = true};
    case kRecord:
    case kTimeMs:
      return {.equal = finds_records, .others = finds_records};
    case kRequest:
      return {.equal = true, .others = true, .lists = !finds_records};
    case kResponseMs:
      return {.equal = true, .others = true, .lists = true};
    default:
      return {.equal = column >= kFirstField,
              .others = column >= kFirstField,
              .lists = column >= kFirstField};
  }
}

// Returns the constraint that selects the log, or -1. Of several, one can be the argument of the
// table-valued function.
int FindPath(sqlite3_index_info* info, bool& is_unusable) {
  int found = -1;
  for (int i = 0; i < info->nConstraint; ++i) {
    const auto& constraint = info->aConstraint[i];
    if (constraint.iColumn != kPath || constraint.op != SQLITE_INDEX_CONSTRAINT_EQ) continue;
    if (std::string_view(sqlite3_vtab_collation(info, i)) != "BINARY") continue;
    if (constraint.usable == 0) is_unusable = true;
    if (constraint.usable != 0) found = i;
  }
  return found;
}

// What the conditions say about the place of the rows in the log.
struct Bounds {
  bool record = false;
  bool request = false;
  bool lowest_record = false;
  bool highest_record = false;
  bool lowest_time = false;
  bool highest_time = false;
  bool is_selective = false;
};

void AddBound(const ScanPlan::Condition& condition, Bounds& bounds) {
  const bool is_equal = condition.op == SQLITE_INDEX_CONSTRAINT_EQ;
  const bool is_low =
      condition.op == SQLITE_INDEX_CONSTRAINT_GT || condition.op == SQLITE_INDEX_CONSTRAINT_GE;
  switch (condition.column) {
    case kRecord:
      bounds.record |= is_equal;
      (is_low ? bounds.lowest_record : bounds.highest_record) = true;
      break;
    case kTimeMs:
      bounds.lowest_time |= is_low || is_equal;
      bounds.highest_time |= !is_low || is_equal;
      break;
    case kRequest:
      bounds.request |= is_equal && !condition.is_list;
      break;
    case kSignal:
    case kId:
      bounds.is_selective = true;
      break;
    default:
      break;
  }
}

// A scan that reads a whole log costs as much with other conditions as without: two of them for
// the two sides of an OR must cost more than one. A scan that starts and ends within a log reads
// some blocks of records.
void EstimateCost(const Bounds& bounds, bool finds_records, double logs, sqlite3_index_info* info) {
  double cost = bounds.is_selective ? 9e6 : 1e7;
  double rows = bounds.is_selective ? 2e4 : 1e6;
  if (finds_records && bounds.record) {
    cost = 500;
    rows = 1;
    info->idxFlags = SQLITE_INDEX_SCAN_UNIQUE;
  } else if (finds_records && bounds.request) {
    cost = 1000;
    rows = 2;
  } else if (bounds.lowest_record && bounds.highest_record) {
    cost = 3000;
    rows = 100;
  } else if (bounds.lowest_time && bounds.highest_time) {
    cost = 20000;
    rows = 1000;
  } else if (bounds.lowest_record || bounds.highest_record || bounds.lowest_time ||
             bounds.highest_time) {
    cost /= 2;
    rows /= 2;
  }
  info->estimatedCost = logs * cost;
  info->estimatedRows = static_cast<sqlite3_int64>(logs * rows);
}

// Takes the conditions that a scan can use into the plan. Returns what they say about the place
// of the rows. `path` is the constraint that selects the log, or -1.
Bounds TakeConditions(sqlite3_index_info* info, int path, bool finds_records, ScanPlan& plan) {
  Bounds bounds;
  for (int i = 0; i < info->nConstraint; ++i) {
    const auto& constraint = info->aConstraint[i];
    if (constraint.usable == 0 || !IsComparison(constraint.op)) continue;
    const Use use = GetUse(constraint.iColumn, finds_records);
    const bool is_equal = constraint.op == SQLITE_INDEX_CONSTRAINT_EQ;
    if (!(is_equal ? use.equal : use.others)) continue;
    if (constraint.iColumn == kPath && i != path) continue;
    if (constraint.iColumn == kSignal &&
        std::string_view(sqlite3_vtab_collation(info, i)) != "BINARY") {
      continue;
    }
    const bool is_list = use.lists && sqlite3_vtab_in(info, i, 1) != 0;
    plan.conditions.push_back({constraint.iColumn, constraint.op, is_list});
    AddBound(plan.conditions.back(), bounds);
    info->aConstraintUsage[i].argvIndex = static_cast<int>(plan.conditions.size());
    info->aConstraintUsage[i].omit = constraint.iColumn == kPath ? 1 : 0;
  }
  return bounds;
}

constexpr std::uint64_t GetUseBit(Column column) { return std::uint64_t{1} << column; }

// If the query names no other column, as to count signals, rows of a signal are the same to
// SQLite. `path` is the same in all rows of a table-valued function.
bool IsGroupedBySignal(sqlite3_index_info* info, bool has_one_path) {
  constexpr int kGroupBy = 1;
  const std::uint64_t needed = info->colUsed & ~(has_one_path ? GetUseBit(kPath) : 0);
  return sqlite3_vtab_distinct(info) == kGroupBy && info->nOrderBy == 1 &&
         info->aOrderBy[0].iColumn == kSignal && needed == GetUseBit(kSignal);
}

bool IsOrderedByRecord(const sqlite3_index_info* info) {
  return info->nOrderBy > 0 && info->aOrderBy[0].iColumn == kRecord && info->aOrderBy[0].desc == 0;
}

}  // namespace

int MakePlan(LogTable& table, sqlite3_index_info* info) {
  bool path_is_unusable = false;
  const int path = FindPath(info, path_is_unusable);
  const bool lacks_path = !table.has_fixed_logs && path < 0;
  if (lacks_path && path_is_unusable) return SQLITE_CONSTRAINT;
  const bool is_one_log = !table.has_fixed_logs || table.paths.size() == 1 || path >= 0;
  const bool finds_records = is_one_log && !lacks_path && AreFiles(table, info, path);

  ScanPlan plan;
  const Bounds bounds = TakeConditions(info, path, finds_records, plan);
  plan.needs_requests = (info->colUsed & (GetUseBit(kRequest) | GetUseBit(kResponseMs))) != 0;
  plan.is_grouped = IsGroupedBySignal(info, !table.has_fixed_logs);
  plan.descends = plan.is_grouped && info->aOrderBy[0].desc != 0;
  if (!EncodePlan(plan, info)) return SQLITE_NOMEM;

  const double logs = is_one_log ? 1 : static_cast<double>(table.paths.size());
  EstimateCost(bounds, finds_records, logs, info);
  // Without a path, this is the query's error, or it is one side of an OR, for which SQLite
  // must choose another plan. xFilter reports the error.
  if (lacks_path) info->estimatedCost = 1e99;
  // Records of several logs are in order within each log only.
  info->orderByConsumed = plan.is_grouped || (is_one_log && IsOrderedByRecord(info)) ? 1 : 0;
  return SQLITE_OK;
}

ScanPlan DecodePlan(int number, const char* text) {
  ScanPlan plan;
  plan.needs_requests = (number & kNeedsRequests) != 0;
  plan.is_grouped = (number & kIsGrouped) != 0;
  plan.descends = (number & kDescends) != 0;
  char* next = nullptr;
  while (*text != '\0') {
    const auto column = static_cast<int>(std::strtol(text, &next, 10));
    const auto op = static_cast<int>(std::strtol(next + 1, &next, 10));
    plan.conditions.push_back({column, op, next[1] == '1'});
    text = next + 3;
  }
  return plan;
}
