// Implements `./dev text` and `./dev text-diff`.
//
// usage: reference_text logs DIR [OLD_DIR]
//          writes the reference log of each version to DIR/VERSION.udi, and appends
//          the records that only the logs in OLD_DIR have
//        reference_text show DIR
//          prints the decoded text in DIR/VERSION.txt by version and id
//        reference_text diff DIR OLD_DIR
//          prints the lines that differ between DIR/VERSION.txt and
//          OLD_DIR/VERSION.txt, both decoded from DIR/VERSION.udi

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
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

constexpr std::size_t kHeaderSize = 12;
constexpr std::size_t kRecordHeaderSize = 16;

std::uint32_t LoadWord(std::string_view bytes, std::size_t at) {
  return LoadU32(reinterpret_cast<const std::uint8_t*>(bytes.data()) + at);
}

// A record of a log and the text that a tool printed for it after the stamp.
struct Record {
  std::string payload;
  std::uint32_t signal_length;
  std::string text{};

  unsigned id() const { return LoadWord(payload, 0) & 0xFFFF; }
};

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

// The stamp of record `number`, in UTC.
std::string MakeStamp(std::size_t number) {
  const auto milliseconds = static_cast<unsigned>(number);
  char stamp[32];
  std::snprintf(stamp, sizeof stamp, "1970/01/01-00:%02u:%02u.%03u ", milliseconds / 60000 % 60,
                milliseconds / 1000 % 60, milliseconds % 1000);
  return stamp;
}

// Returns the records of a log with their text, or nothing if the tool rejected the log.
// The line of a too short signal has no end, so lines are found by their stamps.
std::vector<Record> ReadText(const std::string& log_path, const std::string& text_path) {
  const std::string text = ReadFile(text_path);
  std::vector<Record> records = ReadLog(log_path);
  std::size_t start = text.find(MakeStamp(0));
  if (start == std::string::npos) return {};
  for (std::size_t i = 0; i < records.size() && start != std::string::npos; ++i) {
    start += MakeStamp(i).size();
    const std::size_t end = text.find(MakeStamp(i + 1), start);
    records[i].text = text.substr(start, end - start);
    if (records[i].text.ends_with('\n')) records[i].text.pop_back();
    start = end;
  }
  return records;
}

void WriteLogs(const std::string& directory, const std::string& old_directory) {
  for (const HipVersionEntry& version : HipVersionTable) {
    const std::string file = version.name + std::string(".udi");
    Log log = MakeReferenceLog(version.tag);
    WriteFile(directory + '/' + file, log.bytes());
    if (old_directory.empty()) continue;
    std::set<std::pair<std::string, std::uint32_t>> known;
    for (const Record& record : ReadLog(directory + '/' + file)) {
      known.insert({record.payload, record.signal_length});
    }
    for (const Record& record : ReadLog(old_directory + '/' + file)) {
      if (!known.insert({record.payload, record.signal_length}).second) continue;
      log.Record(Log::Time(known.size() - 1), record.payload, record.signal_length);
    }
    WriteFile(directory + '/' + file, log.bytes());
  }
}

void ShowText(const std::string& directory) {
  for (const HipVersionEntry& version : HipVersionTable) {
    const std::string path = directory + "/" + version.name;
    for (const Record& record : ReadText(path + ".udi", path + ".txt")) {
      std::printf("%s 0x%04X %u+%zu %s\n", version.name, record.id(), record.signal_length,
                  record.payload.size() - record.signal_length, record.text.c_str());
    }
  }
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
    changes.push_back({JoinNames(old_words), JoinNames(new_words)});
    const auto is_in = [](const std::vector<std::string>& words, const std::string& word) {
      return std::ranges::find(words, word) != words.end();
    };
    for (const std::string& word : old_words) {
      if (HasLabel(word) && !is_in(new_words, word)) changes.push_back({word, ""});
    }
    for (const std::string& word : new_words) {
      if (HasLabel(word) && !is_in(old_words, word)) changes.push_back({"", word});
    }
    return changes;
  }
  for (std::size_t i = 0; i < old_words.size(); ++i) {
    const std::string old_name = GetName(old_words[i]);
    const std::string new_name = GetName(new_words[i]);
    if (old_name != new_name) changes.push_back({old_name, new_name});
    if (old_words[i].substr(old_name.size()) == new_words[i].substr(new_name.size())) continue;
    changes.push_back({old_words[i], new_words[i]});
  }
  if (changes.empty()) changes.push_back({before, now});  // only blanks differ
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

// Returns whether any line differs.
bool ShowDifferences(const std::string& directory, const std::string& old_directory) {
  std::map<unsigned, std::vector<Difference>> by_id;
  bool differs = false;
  for (std::size_t version = 0; version < kHipVersionCount; ++version) {
    const std::string name = HipVersionTable[version].name;
    const std::string log = directory + "/" + name + ".udi";
    const std::vector<Record> now = ReadText(log, directory + "/" + name + ".txt");
    const std::vector<Record> before = ReadText(log, old_directory + "/" + name + ".txt");
    if (now.size() != before.size()) {
      std::printf("%s: rejected by the %s tool\n\n", name.c_str(), now.empty() ? "new" : "old");
      differs = true;
      continue;
    }
    for (std::size_t i = 0; i < now.size(); ++i) {
      if (now[i].text == before[i].text) continue;
      by_id[now[i].id()].push_back(
          {version, before[i].text, now[i].text, FindChanges(before[i].text, now[i].text)});
    }
  }
  for (const auto& [id, differences] : by_id) ShowSignal(id, differences);
  return differs || !by_id.empty();
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  const std::string mode = arguments.empty() ? "" : arguments[0];
  if (mode == "logs" && (argc == 3 || argc == 4)) {
    WriteLogs(arguments[1], argc == 4 ? arguments[2] : "");
  } else if (mode == "show" && argc == 3) {
    ShowText(arguments[1]);
  } else if (mode == "diff" && argc == 4) {
    if (!ShowDifferences(arguments[1], arguments[2])) std::printf("No line differs.\n");
  } else {
    std::fprintf(stderr, "usage: see the head of reference_text.cc\n");
    return 2;
  }
}
