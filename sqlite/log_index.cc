#include "log_index.h"

#include <algorithm>
#include <utility>

#include "log_row.h"

namespace {

// At this number, two blocks become one: a log of any length takes at most 4 MB.
constexpr std::size_t kMaxBlocks = 65536;

bool IsSameFile(const struct stat& left, const struct stat& right) {
  return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

}  // namespace

bool LookUp::IsLimited() const {
  const LookUp all;
  return request || lowest_record > all.lowest_record || highest_record < all.highest_record ||
         lowest_ms > all.lowest_ms || highest_ms < all.highest_ms;
}

std::shared_ptr<const LogIndex> LogIndex::Make(OpenLog& log,
                                               const std::shared_ptr<const LogIndex>& known,
                                               const LookUp& look_up) {
  const bool is_usable = known != nullptr && IsSameFile(known->file_, log.opened()) &&
                         (known->exchanges_ || !look_up.needs_requests);
  // What is appended to a log does not change the records before it.
  if (is_usable && look_up.highest_record <= static_cast<std::int64_t>(known->records_)) {
    return known;
  }
  const struct stat file = log.GetStatus();
  if (!S_ISREG(file.st_mode)) return nullptr;
  const bool continues = is_usable && known->file_.st_size <= file.st_size;
  if (continues && known->file_.st_size == file.st_size) return known;
  const auto made = continues ? std::make_shared<LogIndex>(*known) : std::make_shared<LogIndex>();
  made->file_ = file;
  if (!continues && look_up.needs_requests) made->exchanges_.emplace();
  return made->Read(log) ? made : nullptr;
}

// Reads the log from `end_` on.
bool LogIndex::Read(OpenLog& log) {
  if (!log.Seek(end_)) return false;
  LogRow row;
  for (;;) {
    end_ = log.reader().position();
    if (!log.Read(row.item)) break;
    if (!row.item.HasLine()) continue;
    AddRecord(end_, GetTimeMs(row));
    if (!exchanges_) continue;
    row.version = &log.reader().version();
    row.record = records_;
    TrackExchange(row, *exchanges_);
    if (row.request) answers_.push_back({records_, *row.request});
  }
  SortByRequest();
  return true;
}

void LogIndex::AddRecord(const LogPosition& position, std::int64_t time_ms) {
  if (records_ % records_per_block_ == 0) {
    if (blocks_.size() == kMaxBlocks) MergeBlocks();
    blocks_.push_back({.position = position});
  }
  ++records_;
  Block& block = blocks_.back();
  block.least_ms = std::min(block.least_ms, time_ms);
  block.greatest_ms = std::max(block.greatest_ms, time_ms);
}

void LogIndex::MergeBlocks() {
  for (std::size_t i = 0; i < blocks_.size(); i += 2) {
    Block merged = blocks_[i];
    merged.least_ms = std::min(merged.least_ms, blocks_[i + 1].least_ms);
    merged.greatest_ms = std::max(merged.greatest_ms, blocks_[i + 1].greatest_ms);
    blocks_[i / 2] = merged;
  }
  blocks_.resize(blocks_.size() / 2);
  records_per_block_ *= 2;
}

void LogIndex::SortByRequest() {
  while (by_request_.size() < answers_.size()) {
    by_request_.push_back(static_cast<std::uint32_t>(by_request_.size()));
  }
  std::sort(by_request_.begin(), by_request_.end(),
            [this](std::uint32_t left, std::uint32_t right) {
              return std::pair(answers_[left].request.record, left) <
                     std::pair(answers_[right].request.record, right);
            });
}

std::vector<RecordRange> LogIndex::Find(const LookUp& look_up) const {
  const auto last_record = static_cast<std::int64_t>(
      std::min<std::uint64_t>(records_, std::numeric_limits<std::int64_t>::max()));
  const std::int64_t first = std::max<std::int64_t>(look_up.lowest_record, 1);
  const std::int64_t last = std::min(look_up.highest_record, last_record);
  std::vector<RecordRange> ranges;
  if (first > last) return ranges;
  const RecordRange bounds = {static_cast<std::uint64_t>(first), static_cast<std::uint64_t>(last)};
  if (look_up.request) {
    if (*look_up.request < 0) return ranges;
    const auto request = static_cast<std::uint64_t>(*look_up.request);
    const auto get_request = [this](std::uint32_t place) { return answers_[place].request.record; };
    for (auto place = std::lower_bound(
             by_request_.begin(), by_request_.end(), request,
             [&](std::uint32_t left, std::uint64_t right) { return get_request(left) < right; });
         place != by_request_.end() && get_request(*place) == request; ++place) {
      const std::uint64_t record = answers_[*place].record;
      if (record >= bounds.first && record <= bounds.last) ranges.push_back({record, record});
    }
    return ranges;
  }
  const std::uint64_t last_block = (bounds.last - 1) / records_per_block_;
  for (std::uint64_t i = (bounds.first - 1) / records_per_block_; i <= last_block; ++i) {
    const Block& block = blocks_[i];
    if (block.least_ms > look_up.highest_ms || block.greatest_ms < look_up.lowest_ms) continue;
    const RecordRange range = {std::max(bounds.first, i * records_per_block_ + 1),
                               std::min(bounds.last, (i + 1) * records_per_block_)};
    if (!ranges.empty() && ranges.back().last + 1 == range.first) {
      ranges.back().last = range.last;
    } else {
      ranges.push_back(range);
    }
  }
  return ranges;
}

LogIndex::Start LogIndex::FindStart(std::uint64_t record) const {
  const std::uint64_t block = (record - 1) / records_per_block_;
  return {block * records_per_block_, blocks_[block].position};
}

std::optional<SentRequest> LogIndex::FindRequest(std::uint64_t record) const {
  const auto found = std::lower_bound(
      answers_.begin(), answers_.end(), record,
      [](const Answer& answer, std::uint64_t wanted) { return answer.record < wanted; });
  if (found == answers_.end() || found->record != record) return std::nullopt;
  return found->request;
}
