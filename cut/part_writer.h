#ifndef VRKT_CUT_PART_WRITER_H_
#define VRKT_CUT_PART_WRITER_H_

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "hip/hip_versions.h"
#include "hip/log_item.h"
#include "log/log_reader.h"
#include "redactor.h"

// Makes a log of some records of another log: with its headers, and with clock references where
// a reader would otherwise have another one.
//
// A reader expects a header where the log begins and after a reload, and nowhere else. If the
// version changes between two records and the reload is not selected, the part gets an Unload
// and a Load event that the log does not have.
class PartWriter {
 public:
  // Without a redactor, payloads are copied.
  explicit PartWriter(std::optional<Redactor> redactor) : redactor_(std::move(redactor)) {}

  // Adds what the reader has just read: each header and clock reference of the log, and the
  // records that are selected.
  void Add(const LogItem& item, const LogReader& log);
  // Call it after the last item.
  void Finish(const LogReader& log);

  // The bytes of the part so far. The caller takes them away.
  std::string& bytes() { return bytes_; }

 private:
  void Write(const LogItem& item, const HipVersionEntry& version);
  void WriteHeader(const HipVersionEntry& version);
  void WriteReload(const LogItem& item, const HipVersionEntry& version);

  std::optional<Redactor> redactor_;
  std::string bytes_;

  // What a reader of the part knows.
  const HipVersionEntry* version_ = nullptr;
  std::uint32_t timeBase_ = 0;
  bool driverUnloaded_ = false;
  bool header_follows_ = true;

  std::int32_t clock_time_ = 0;  // when the log set its clock
  // A Load that ends an epoch, until the version of the next one is known.
  std::optional<LogItem> held_load_;
};

#endif  // VRKT_CUT_PART_WRITER_H_
