#ifndef VRKT_SQLITE_OPEN_LOG_H_
#define VRKT_SQLITE_OPEN_LOG_H_

#include <sys/stat.h>

#include <memory>
#include <string>

#include "log/log_reader.h"

// A log that is being read.
class OpenLog {
 public:
  // Opens a log and reads its header. On failure it returns null and sets `error` to the path
  // and the reason. An empty log, and one that is cut within its header, is a log without
  // records, as it is for the tool. With `keeps_bad_header`, so is one with a damaged header,
  // which is then reported like other damage. A pipe can be opened once.
  static std::unique_ptr<OpenLog> Open(const std::string& path, bool keeps_bad_header,
                                       std::string& error);

  OpenLog(const OpenLog&) = delete;
  OpenLog& operator=(const OpenLog&) = delete;
  ~OpenLog();

  const LogReader& reader() const { return reader_; }

  // The file as it was when it was opened, and as it is now. Only a regular one can be read from
  // any place.
  const struct stat& opened() const { return opened_; }
  struct stat GetStatus() const;

  // Continues at a position of a regular file, also after the end. Returns false on failure.
  bool Seek(const LogPosition& position) {
    has_ended_ = false;
    return reader_.Seek(position);
  }

  // Reads the next item, a header or a record. Returns false at the end, also if it is
  // called again. A log that is cut or damaged is then reported to sqlite3_log, once.
  bool Read(LogItem& item) {
    if (has_ended_) return false;
    if (reader_.Read(item)) return true;
    HandleEnd();
    return false;
  }

  // Whether the log has a header. If not, it has no version.
  bool has_header() const { return has_header_; }

  // How the log ended: "empty", "complete", "cut" or the words of the tool's report.
  std::string DescribeEnd() const;

 private:
  OpenLog(const std::string& path, int file)
      : path_(path), file_(file), opened_(GetStatus()), reader_(file) {}
  void HandleEnd();

  std::string path_;
  int file_;
  struct stat opened_;
  LogReader reader_;
  bool has_header_ = false;
  bool has_ended_ = false;
  bool has_reported_ = false;
};

#endif  // VRKT_SQLITE_OPEN_LOG_H_
