#ifndef VRKT_SQLITE_SCAN_PLAN_H_
#define VRKT_SQLITE_SCAN_PLAN_H_

#include <string>
#include <vector>

#include "sqlite_api.h"
#include "table_base.h"

// What a scan of the table udi does, from xBestIndex to xFilter.
//
// The scan uses conditions to skip rows. SQLite still checks all of them but `path`, so the scan
// may use only those whose meaning it knows, and it can return a row that does not match. It must
// not skip one that does: a condition may be used only if the plan takes its value (argvIndex).
// Then SQLite knows that the scan depends on it. Otherwise it uses the scan also where the
// condition must not hold, as for the left table of `log LEFT JOIN t ON log.vif = 1`. For that
// table it passes `<>` and IS NOT NULL as usable, and forgets that they depend on t. So these are
// never used.

struct ScanPlan {
  // `column OP value`. The values are those of xFilter, in this order.
  struct Condition {
    int column;
    int op;        // SQLITE_INDEX_CONSTRAINT_EQ and so on
    bool is_list;  // as in column IN (...), with all values at once
  };

  std::vector<Condition> conditions;
  bool needs_requests = false;  // for the columns request and response_ms
  // For GROUP BY signal: the rows come in the order of their signals.
  bool is_grouped = false;
  bool descends = false;
};

// Makes the plan for a query, and tells SQLite its costs. Returns a status.
int MakePlan(LogTable& table, sqlite3_index_info* info);

// Returns the plan that MakePlan has passed to xFilter by these two.
ScanPlan DecodePlan(int number, const char* text);

#endif  // VRKT_SQLITE_SCAN_PLAN_H_
