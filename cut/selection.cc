#include "selection.h"

#include <algorithm>
#include <charconv>
#include <cstddef>

namespace {

// The form of a stamp; a d is a digit.
constexpr std::string_view kStampForm = "dddd/dd/dd-dd:dd:dd.ddd";
constexpr std::size_t kDateSize = 11;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool FitsForm(char c, char form) {
  switch (form) {
    case 'd':
      return IsDigit(c);
    case '/':
      return c == '/' || c == '-';
    case '-':
      return c == '-' || c == ' ' || c == 'T';
    case '.':
      return c == '.' || c == ',';
    default:
      return c == form;
  }
}

// Returns the text in this form if it is the beginning of one.
std::optional<std::string> BringIntoForm(std::string_view text, std::string_view form) {
  if (text.size() > form.size()) return std::nullopt;
  if (!std::equal(text.begin(), text.end(), form.begin(), FitsForm)) return std::nullopt;
  std::string in_form(text);
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (form[i] != 'd') in_form[i] = form[i];
  }
  return in_form;
}

// Compares a record with the records of a place: those whose stamp begins with its text, or the
// one with its number. Returns a negative number if it is before them, and 0 if it is one of them.
int Compare(std::uint64_t record, std::string_view stamp, const Place& place) {
  if (place.kind == Place::Kind::kRecord) {
    return static_cast<int>(record > place.record) - static_cast<int>(record < place.record);
  }
  if (place.kind == Place::Kind::kTimeOfDay) stamp.remove_prefix(kDateSize);
  return stamp.substr(0, place.text.size()).compare(place.text);
}

// Returns nothing if the text is no number, or too large.
std::optional<std::uint64_t> ParseNumber(std::string_view text) {
  std::uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || rest != end) return std::nullopt;
  return number;
}

}  // namespace

std::optional<Place> ParsePlace(std::string_view text) {
  if (text.empty()) return std::nullopt;
  if (const auto record = ParseNumber(text)) return Place{Place::Kind::kRecord, *record, {}};
  if (auto stamp = BringIntoForm(text, kStampForm)) return Place{Place::Kind::kStamp, 0, *stamp};
  if (auto time = BringIntoForm(text, kStampForm.substr(kDateSize))) {
    return Place{Place::Kind::kTimeOfDay, 0, *time};
  }
  return std::nullopt;
}

bool RecordList::Contains(std::uint64_t record) {
  if (next_ != record) return false;
  ReadNext();
  return true;
}

void RecordList::ReadNext() {
  const std::uint64_t last = next_;
  next_ = kNone;
  char text[21];
  while (std::fscanf(file_, "%20s", text) == 1) {
    const auto number = ParseNumber(text);
    is_wrong_ = !number || *number < std::max<std::uint64_t>(last, 1);
    if (is_wrong_) return;
    if (*number == last) continue;
    next_ = *number;
    return;
  }
  is_wrong_ = std::ferror(file_) != 0;
}

bool Selection::Contains(std::uint64_t record, const RecordTime& time) {
  if (records && !records->Contains(record)) return false;
  if (!from && !to) return true;
  const std::string_view text = stamp.Format(time);
  return (!from || Compare(record, text, *from) >= 0) && (!to || Compare(record, text, *to) <= 0);
}

bool Selection::EndsAt(std::uint64_t record) const {
  if (records && records->has_ended()) return true;
  return to && to->kind == Place::Kind::kRecord && record >= to->record;
}
