#include "open_log.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "log/log_text.h"
#include "sqlite_api.h"

std::unique_ptr<OpenLog> OpenLog::Open(const std::string& path, std::string& error) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    error = "fopen(" + path + ") Failed errno:" + std::to_string(errno);
    return nullptr;
  }
  std::unique_ptr<OpenLog> log(new OpenLog(path, file));
  LogItem header;
  log->has_header_ = log->reader_.Read(header);
  if (log->has_header_) return log;
  const std::string report = DescribeLogEnd(log->reader_.end());
  if (!report.empty()) {
    error = path + ": " + report;
    return nullptr;
  }
  log->HandleEnd();
  return log;
}

OpenLog::~OpenLog() { ::close(file_); }

std::string OpenLog::DescribeEnd() const {
  switch (reader_.end().kind) {
    case LogEnd::Kind::kComplete:
      return "complete";
    case LogEnd::Kind::kCut:
      return "cut";
    default:
      return DescribeLogEnd(reader_.end());
  }
}

void OpenLog::HandleEnd() {
  has_ended_ = true;
  if (reader_.end().kind == LogEnd::Kind::kComplete) return;
  // SQLite cuts a message to 210 bytes. The end of a long path distinguishes logs better
  // than its start.
  constexpr std::size_t kShown = 80;
  std::string_view shown = path_;
  if (shown.size() > kShown) shown.remove_prefix(shown.size() - kShown);
  sqlite3_log(SQLITE_WARNING, "%s%.*s: %s", shown.size() < path_.size() ? "..." : "",
              static_cast<int>(shown.size()), shown.data(), DescribeEnd().c_str());
}
