// Implements `./dev text` and `./dev text-diff`.
//
// usage: reference_text logs DIR [OLD_DIR]
//          writes the reference log of each version to DIR/VERSION.udi, and appends
//          the records that only the logs in OLD_DIR have
//        reference_text show DIR
//          prints the decoded text in DIR/VERSION.txt by version and id
//        reference_text diff DIR OLD_DIR
//          prints what differs between DIR/VERSION.txt and OLD_DIR/VERSION.txt, both
//          decoded from DIR/VERSION.udi: the text before the first stamp, the first
//          stamp and the lines
//
// Exit status, as of diff: 0 if nothing differs, 1 if something differs or one of the
// tools rejected a log, 2 if texts cannot be compared, or for any other failure.

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/little_endian.h"
#include "files.h"
#include "hip/hip_versions.h"
#include "reference_log.h"

namespace {

enum ExitStatus : int { kSame = 0, kDiffers = 1, kTrouble = 2 };

constexpr std::size_t kHeaderSize = 12;
constexpr std::size_t kRecordHeaderSize = 16;

std::uint32_t LoadWord(std::string_view bytes, std::size_t at) {
  return LoadU32(reinterpret_cast<const std::uint8_t*>(bytes.data()) + at);
}

struct Record {
  std::string payload;
  std::uint32_t signal_length;

  unsigned id() const { return LoadWord(payload, 0) & 0xFFFF; }
};

// Returns no records if there is no log, as for a version that old commits lack.
std::vector<Record> ReadLog(const std::string& path) {
  const std::string log = ReadFile(path);
  std::vector<Record> records;
  for (std::size_t at = kHeaderSize; at < log.size();) {
    const std::uint32_t length = LoadWord(log, at + 8);
    records.push_back({log.substr(at + kRecordHeaderSize, length), LoadWord(log, at + 12)});
    at += kRecordHeaderSize + length;
  }
  return records;
}

bool HasStamp(std::string_view text, std::size_t at) {
  constexpr std::string_view kForm = "0000/00/00-00:00:00.000 ";
  const std::string_view candidate = text.substr(at, kForm.size());
  return std::ranges::equal(candidate, kForm, [](char c, char form) {
    return form == '0' ? std::isdigit(static_cast<unsigned char>(c)) != 0 : c == form;
  });
}

struct Line {
  std::string stamp;
  std::string text;
};

// What a tool printed for a log.
struct Text {
  std::string start;  // before the first stamp
  std::vector<Line> lines;

  // A tool prints one line before it reads the log.
  bool IsOfRejectedLog() const {
    return lines.empty() && !start.empty() && start.find('\n') == std::string::npos;
  }
};

std::string RemoveLineEnd(std::string text) {
  if (text.ends_with('\n')) text.pop_back();
  return text;
}

[[noreturn]] void Fail(const std::string& path) {
  std::perror(path.c_str());
  std::exit(kTrouble);
}

// The line of a too short signal has no end, so lines are found by their stamps.
Text ReadText(const std::string& path) {
  if (!std::ifstream(path)) Fail(path);
  const std::string text = ReadFile(path);
  std::vector<std::size_t> starts;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (HasStamp(text, at)) starts.push_back(at);
  }
  Text split = {RemoveLineEnd(text.substr(0, starts.empty() ? text.size() : starts[0])), {}};
  for (std::size_t i = 0; i < starts.size(); ++i) {
    const std::size_t end = i + 1 < starts.size() ? starts[i + 1] : text.size();
    const std::size_t blank = text.find(' ', starts[i]);
    split.lines.push_back({text.substr(starts[i], blank - starts[i]),
                           RemoveLineEnd(text.substr(blank + 1, end - blank - 1))});
  }
  return split;
}

void WriteLogs(const std::string& directory, const std::string& old_directory) {
  for (const HipVersionEntry& version : HipVersionTable) {
    const std::string file = version.name + std::string(".udi");
    Log log = MakeReferenceLog(version.tag);
    std::set<std::pair<std::string, std::uint32_t>> known;
    for (const ReferenceRecord& record : MakeReferenceRecords(version.tag)) {
      known.insert({record.payload, record.signal_length});
    }
    if (!old_directory.empty()) {
      for (const Record& record : ReadLog(old_directory + '/' + file)) {
        if (!known.insert({record.payload, record.signal_length}).second) continue;
        log.Record(Log::Time(known.size() - 1), record.payload, record.signal_length);
      }
    }
    if (!WriteFile(directory + '/' + file, log.bytes())) Fail(directory + '/' + file);
  }
}

// Whether the text has a stamp for each record. Reports it if not.
bool HasAllStamps(const Text& text, const std::vector<Record>& records, const char* version,
                  const char* tool) {
  if (text.lines.size() == records.size()) return true;
  std::fprintf(stderr,
               "%s: the text of the %s tool has %zu stamps like 1970/01/01-00:00:00.000 for %zu "
               "records\n",
               version, tool, text.lines.size(), records.size());
  return false;
}

int ShowText(const std::string& directory) {
  for (const HipVersionEntry& version : HipVersionTable) {
    const std::string path = directory + "/" + version.name;
    const std::vector<Record> records = ReadLog(path + ".udi");
    const Text text = ReadText(path + ".txt");
    if (!HasAllStamps(text, records, version.name, "new")) return kTrouble;
    for (std::size_t i = 0; i < records.size(); ++i) {
      std::printf("%s 0x%04X %u+%zu %s\n", version.name, records[i].id(), records[i].signal_length,
                  records[i].payload.size() - records[i].signal_length, text.lines[i].text.c_str());
    }
  }
  return kSame;
}

// As in "13.1.0 to 14.0.0, 14.2.9".
std::string DescribeVersions(const std::set<std::size_t>& versions) {
  std::string text;
  for (auto first = versions.begin(); first != versions.end();) {
    auto last = first;
    while (std::next(last) != versions.end() && *std::next(last) == *last + 1) ++last;
    if (!text.empty()) text += ", ";
    text += HipVersionTable[*first].name;
    if (last != first) text += std::string(" to ") + HipVersionTable[*last].name;
    first = std::next(last);
  }
  return text;
}

std::vector<std::string> SplitWords(const std::string& line) {
  std::istringstream stream(line);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

// A word as in "vif:1", without its value.
std::string GetName(const std::string& word) { return word.substr(0, word.find(':')); }

std::string JoinNames(const std::vector<std::string>& words) {
  std::string names;
  for (const std::string& word : words) names += GetName(word) + ' ';
  return names;
}

using Change = std::pair<std::string, std::string>;

// Whether a word is a field with a label, as in "priority:qos_up1".
bool HasLabel(const std::string& word) {
  const std::size_t value = GetName(word).size() + 1;
  return value < word.size() && std::isalpha(static_cast<unsigned char>(word[value])) != 0;
}

// Returns the differences between two lines: names, and values of fields with the same
// name. If the number of fields differs, returns the two lists of names, and the labels
// that only one of the lines has.
std::vector<Change> FindChanges(const std::string& before, const std::string& now) {
  const std::vector<std::string> old_words = SplitWords(before);
  const std::vector<std::string> new_words = SplitWords(now);
  std::vector<Change> changes;
  if (old_words.size() != new_words.size()) {
    changes.emplace_back(JoinNames(old_words), JoinNames(new_words));
    const auto is_in = [](const std::vector<std::string>& words, const std::string& word) {
      return std::ranges::find(words, word) != words.end();
    };
    for (const std::string& word : old_words) {
      if (HasLabel(word) && !is_in(new_words, word)) changes.emplace_back(word, "");
    }
    for (const std::string& word : new_words) {
      if (HasLabel(word) && !is_in(old_words, word)) changes.emplace_back("", word);
    }
    return changes;
  }
  for (std::size_t i = 0; i < old_words.size(); ++i) {
    const std::string old_name = GetName(old_words[i]);
    const std::string new_name = GetName(new_words[i]);
    if (old_name != new_name) changes.emplace_back(old_name, new_name);
    if (old_words[i].substr(old_name.size()) == new_words[i].substr(new_name.size())) continue;
    changes.emplace_back(old_words[i], new_words[i]);
  }
  if (changes.empty()) changes.emplace_back(before, now);  // only blanks differ
  return changes;
}

struct Difference {
  std::size_t version;
  std::string before;
  std::string now;
  std::vector<Change> changes;
};

// Prints each change of a signal once: the first line that has it, with all versions
// that have it.
void ShowSignal(unsigned id, const std::vector<Difference>& differences) {
  std::map<Change, std::set<std::size_t>> versions;
  for (const Difference& difference : differences) {
    for (const Change& change : difference.changes) versions[change].insert(difference.version);
  }
  std::set<Change> shown;
  for (const Difference& difference : differences) {
    std::set<std::size_t> in;
    for (const Change& change : difference.changes) {
      if (shown.insert(change).second) in.insert(versions[change].begin(), versions[change].end());
    }
    if (in.empty()) continue;
    std::printf("0x%04X in %s\n-%s\n+%s\n\n", id, DescribeVersions(in).c_str(),
                difference.before.c_str(), difference.now.c_str());
  }
}

void ShowOutside(const char* what, const std::map<Change, std::set<std::size_t>>& changes) {
  for (const auto& [change, versions] : changes) {
    std::printf("%s in %s\n-%s\n+%s\n\n", what, DescribeVersions(versions).c_str(),
                change.first.c_str(), change.second.c_str());
  }
}

int ShowDifferences(const std::string& directory, const std::string& old_directory) {
  std::map<unsigned, std::vector<Difference>> by_id;
  std::map<Change, std::set<std::size_t>> starts;
  std::map<Change, std::set<std::size_t>> stamps;
  bool is_rejected = false;
  bool is_comparable = true;
  for (std::size_t version = 0; version < kHipVersionCount; ++version) {
    const char* const name = HipVersionTable[version].name;
    const std::string file = std::string("/") + name;
    const std::vector<Record> records = ReadLog(directory + file + ".udi");
    const Text now = ReadText(directory + file + ".txt");
    const Text before = ReadText(old_directory + file + ".txt");
    if (now.IsOfRejectedLog() != before.IsOfRejectedLog()) {
      std::printf("%s: rejected by the %s tool\n\n", name, now.IsOfRejectedLog() ? "new" : "old");
      is_rejected = true;
      continue;
    }
    if (!HasAllStamps(now, records, name, "new") || !HasAllStamps(before, records, name, "old")) {
      is_comparable = false;
      continue;
    }
    if (now.start != before.start) starts[{before.start, now.start}].insert(version);
    const auto [old_line, new_line] =
        std::ranges::mismatch(before.lines, now.lines, {}, &Line::stamp, &Line::stamp);
    if (old_line != before.lines.end()) stamps[{old_line->stamp, new_line->stamp}].insert(version);
    for (std::size_t i = 0; i < records.size(); ++i) {
      const std::string& old_text = before.lines[i].text;
      const std::string& new_text = now.lines[i].text;
      if (old_text == new_text) continue;
      by_id[records[i].id()].push_back(
          {version, old_text, new_text, FindChanges(old_text, new_text)});
    }
  }
  ShowOutside("Start of the text", starts);
  ShowOutside("First other stamp", stamps);
  for (const auto& [id, differences] : by_id) ShowSignal(id, differences);
  if (!is_comparable) return kTrouble;
  if (is_rejected || !starts.empty() || !stamps.empty() || !by_id.empty()) return kDiffers;
  std::printf("Nothing differs.\n");
  return kSame;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  const std::string mode = arguments.empty() ? "" : arguments[0];
  if (mode == "logs" && (argc == 3 || argc == 4)) {
    WriteLogs(arguments[1], argc == 4 ? arguments[2] : "");
    return 0;
  }
  if (mode == "show" && argc == 3) return ShowText(arguments[1]);
  if (mode == "diff" && argc == 4) return ShowDifferences(arguments[1], arguments[2]);
  std::fprintf(stderr, "usage: see the head of reference_text.cc\n");
  return kTrouble;
}
