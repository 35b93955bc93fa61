#ifndef VRKT_SQLITE_LOG_INDEX_H_
#define VRKT_SQLITE_LOG_INDEX_H_

#include <cstdint>
#include <deque>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "hip/exchange.h"
#include "open_log.h"

// Where the records of a log are, so that a look-up reads only some of them: for each block of
// records the state of the reader at its start, and the least and greatest time in it. Time can
// run back in a log, and wrap, so blocks are no sorted list of times.
//
// If a query names `request` or `response_ms`, the index has the answers, too, because they
// depend on all records before.
//
// An index does not change after it is made: several scans can use it. If a log has grown, a copy
// is continued from where the first one ended.

struct RecordRange {
  std::uint64_t first;
  std::uint64_t last;
};

// What rows a scan looks for. Bounds are inclusive.
struct LookUp {
  std::int64_t lowest_record = 1;
  std::int64_t highest_record = std::numeric_limits<std::int64_t>::max();
  std::int64_t lowest_ms = std::numeric_limits<std::int64_t>::min();
  std::int64_t highest_ms = std::numeric_limits<std::int64_t>::max();
  std::optional<std::int64_t> request;
  bool needs_requests = false;

  // Whether an index reads less than all records.
  bool IsLimited() const;
};

class LogIndex {
 public:
  // Returns an index with the records that a look-up in the log can find: `known`, if it has them,
  // or a continuation of it. Reads the log from its start or from the end of `known`, and leaves
  // it there. Returns null if the log cannot be read from any place.
  static std::shared_ptr<const LogIndex> Make(OpenLog& log,
                                              const std::shared_ptr<const LogIndex>& known,
                                              const LookUp& look_up);

  // Returns the records that can match, in ascending order.
  std::vector<RecordRange> Find(const LookUp& look_up) const;

  // The record after which the reading starts, and where it does, to get to a record.
  struct Start {
    std::uint64_t record;
    LogPosition position;
  };
  Start FindStart(std::uint64_t record) const;

  // What the record answers, as in SentRequest.
  std::optional<SentRequest> FindRequest(std::uint64_t record) const;

 private:
  struct Block {
    LogPosition position;
    std::int64_t least_ms = std::numeric_limits<std::int64_t>::max();
    std::int64_t greatest_ms = std::numeric_limits<std::int64_t>::min();
  };

  struct Answer {
    std::uint64_t record;
    SentRequest request;
  };

  bool Read(OpenLog& log);
  void AddRecord(const LogPosition& position, std::int64_t time_ms);
  void MergeBlocks();
  void SortByRequest();

  struct stat file_ {};  // as it was read
  LogPosition end_;
  std::uint64_t records_ = 0;
  // 64 is best for random records: 256 take 1.7 times as long.
  std::uint64_t records_per_block_ = 64;
  std::vector<Block> blocks_;

  std::optional<ExchangeTracker> exchanges_;  // if the index has answers
  std::deque<Answer> answers_;                // in the order of the log
  std::vector<std::uint32_t> by_request_;     // places in `answers_`, by request and record
};

#endif  // VRKT_SQLITE_LOG_INDEX_H_
