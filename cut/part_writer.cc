#include "part_writer.h"

#include <utility>

#include "hip/signal_routing.h"
#include "log/log_writer.h"

void PartWriter::Add(const LogItem& item, const LogReader& log) {
  if (item.kind == LogItem::Kind::kHeader) {
    if (!held_load_) return;
    Write(*held_load_, log.version());
    held_load_.reset();
    if (header_follows_) WriteHeader(log.version());
  } else if (!item.HasLine()) {
    clock_time_ = item.time.milliseconds;
  } else if (item.IsEvent(DriverEventType::kLoad) && log.position().header_follows) {
    held_load_ = item;
  } else {
    Write(item, log.version());
  }
}

void PartWriter::Finish(const LogReader& log) {
  if (held_load_) Write(*held_load_, log.version());
  held_load_.reset();
}

void PartWriter::Write(const LogItem& item, const HipVersionEntry& version) {
  if (header_follows_) WriteHeader(version);
  const bool changes_version = version_ != &version;
  if (timeBase_ != item.time.timeBase &&
      (changes_version || !item.IsEvent(DriverEventType::kTimeRef))) {
    AppendEvent(DriverEventType::kTimeRef, clock_time_, {item.time.timeBase}, bytes_);
  }
  timeBase_ = item.time.timeBase;
  if (changes_version) WriteReload(item, version);

  if (item.kind == LogItem::Kind::kSignal) {
    AppendItem(item, bytes_, redactor_ ? 0 : UINT32_MAX);
    if (redactor_) redactor_->AppendPayload(item.signal, version, bytes_);
    if (IsDriverSide(item.signal.id)) DecodeDriverSignal(item.signal.payload, driverUnloaded_);
    return;
  }
  AppendItem(item, bytes_);
  if (item.IsEvent(DriverEventType::kUnload)) driverUnloaded_ = true;
  if (item.IsEvent(DriverEventType::kLoad)) header_follows_ = std::exchange(driverUnloaded_, false);
}

// The item can be the Load itself.
void PartWriter::WriteReload(const LogItem& item, const HipVersionEntry& version) {
  if (!driverUnloaded_) {
    AppendEvent(DriverEventType::kUnload, item.time.milliseconds, {}, bytes_);
    driverUnloaded_ = true;
  }
  if (item.IsEvent(DriverEventType::kLoad)) return;
  AppendEvent(DriverEventType::kLoad, item.time.milliseconds, {}, bytes_);
  driverUnloaded_ = false;
  WriteHeader(version);
}

void PartWriter::WriteHeader(const HipVersionEntry& version) {
  AppendHeader(version.version, bytes_);
  version_ = &version;
  header_follows_ = false;
}
