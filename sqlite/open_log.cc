#include "open_log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

#include "log/log_text.h"
#include "sqlite_api.h"

namespace {

// A second reader of a pipe finds nothing, waits for another writer, or takes part of what
// the first one reads. All tables of the process count, because each can name the pipe.
bool IsReadPipe(const std::string& path) {
  static std::mutex mutex;
  static std::set<std::pair<dev_t, ino_t>> pipes;
  struct stat file {};
  if (stat(path.c_str(), &file) != 0 || !S_ISFIFO(file.st_mode)) return false;
  const std::lock_guard<std::mutex> lock(mutex);
  return !pipes.emplace(file.st_dev, file.st_ino).second;
}

}  // namespace

std::unique_ptr<OpenLog> OpenLog::Open(const std::string& path, bool keeps_bad_header,
                                       std::string& error) {
  if (IsReadPipe(path)) {
    error = path + ": a pipe can be read only once; save it in a file";
    return nullptr;
  }
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    error = path + ": " + std::generic_category().message(errno);
    return nullptr;
  }
  std::unique_ptr<OpenLog> log(new OpenLog(path, file));
  LogItem header;
  log->has_header_ = log->reader_.Read(header);
  if (log->has_header_) return log;
  const std::string report = DescribeLogEnd(log->reader_.end());
  if (!report.empty() && !keeps_bad_header) {
    error = path + ": " + report;
    return nullptr;
  }
  log->HandleEnd();
  return log;
}

OpenLog::~OpenLog() { ::close(file_); }

struct stat OpenLog::GetStatus() const {
  struct stat status {};
  fstat(file_, &status);
  return status;
}

std::string OpenLog::DescribeEnd() const {
  switch (reader_.end().kind) {
    case LogEnd::Kind::kComplete:
      return reader_.position().offset == 0 ? "empty" : "complete";
    case LogEnd::Kind::kCut:
      return "cut";
    default:
      return DescribeLogEnd(reader_.end());
  }
}

void OpenLog::HandleEnd() {
  has_ended_ = true;
  if (reader_.end().kind == LogEnd::Kind::kComplete || has_reported_) return;
  has_reported_ = true;
  // SQLite cuts a message to 210 bytes. The end of a long path distinguishes logs better
  // than its start.
  constexpr std::size_t kShown = 80;
  std::string_view shown = path_;
  if (shown.size() > kShown) shown.remove_prefix(shown.size() - kShown);
  sqlite3_log(SQLITE_WARNING, "%s%.*s: %s", shown.size() < path_.size() ? "..." : "",
              static_cast<int>(shown.size()), shown.data(), DescribeEnd().c_str());
}
