#ifndef VRKT_CUT_SELECTION_H_
#define VRKT_CUT_SELECTION_H_

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

#include "hip/log_item.h"
#include "log/line_stamp.h"

// Which records of a log belong to the part.
//
// Stamps are compared as text, as they are printed, without any arithmetic of time zones. So
// what is selected is what the text shows, also in the hour that occurs twice when summer time
// ends, and where the time runs backwards.

// A place in a log, as a user names it.
struct Place {
  enum class Kind : std::uint8_t {
    kRecord,     // the number of a record; they count from 1
    kStamp,      // a stamp or its beginning, as in "2026/06/01-07:00"
    kTimeOfDay,  // the same without the day, on each day
  };

  Kind kind;
  std::uint64_t record;
  std::string text;  // in the form of a stamp
};

// Also accepts dashes in the date, a blank or a T after it, and a comma for the point. Returns
// nothing if the text is no place.
std::optional<Place> ParsePlace(std::string_view text);

// Numbers of records, one per line, in ascending order, that are read as they are needed.
class RecordList {
 public:
  // Does not take ownership of the file.
  explicit RecordList(std::FILE* file) : file_(file) { ReadNext(); }

  // Whether the list has a record. Must be called with each record, in order.
  bool Contains(std::uint64_t record);
  // Whether the list has no later record.
  bool has_ended() const { return next_ == kNone; }
  // Whether the list ended at something else than a higher number than the one before.
  bool is_wrong() const { return is_wrong_; }

 private:
  static constexpr std::uint64_t kNone = 0;

  void ReadNext();

  std::FILE* file_;
  std::uint64_t next_ = kNone;
  bool is_wrong_ = false;
};

struct Selection {
  // Whether a record is selected. Must be called with each record, in order.
  bool Contains(std::uint64_t record, const RecordTime& time);
  // Whether no record after this one can be selected.
  bool EndsAt(std::uint64_t record) const;

  std::optional<Place> from{};
  std::optional<Place> to{};
  std::optional<RecordList> records{};
  LineStamp stamp{};
};

#endif  // VRKT_CUT_SELECTION_H_
