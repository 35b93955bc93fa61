#ifndef VRKT_HIP_RECORD_H_
#define VRKT_HIP_RECORD_H_

#include <cstdint>
#include <string>

#include "hip/field_rendering.h"
#include "hip/hip_signal.h"
#include "hip/hip_versions.h"
#include "hip/log_item.h"

// What an item of a log is in its version. This is the one place that decides it: every
// output is a loop over the items and one switch over these kinds.
struct Record {
  enum class Kind : std::uint8_t {
    kHeader,         // no record, but the header of an epoch
    kSilentEvent,    // an event of the driver without a line: a clock reference without the uptime
    kEvent,          // any other event of the driver
    kSignal,         // a signal with fields
    kTooShort,       // a signal without bulk below its minimum length: its line has only a stamp
    kUnknownSignal,  // an id that the version does not have
    kInvalidLength,  // the lengths exceed the payload
    kDriverSignal,   // a signal of the driver side
    kUnknownDriverSignal,
  };

  Kind kind = Kind::kHeader;
  std::uint16_t id = 0;                // of any signal
  const DriverEvent* event = nullptr;  // of any event
  std::int32_t uptime = 0;             // in seconds, if the event has one

  // Of any signal. `layout` is null if the id has none in this version. Only a kSignal has
  // fields and a dump.
  SignalView signal{};
};

// Decides what an item is in the version of its epoch. The result borrows the payload.
Record UnderstandRecord(const LogItem& item, const HipVersionEntry& version);

// The part of it for a signal of the HIP side, after the split: a kSignal, kTooShort or
// kUnknownSignal.
Record UnderstandSignal(HipVersionTag version, const HipSignal& signal);

// The text of a record without fields, as in "Driver: Loaded". Empty for kHeader, kSilentEvent,
// kTooShort and kSignal.
std::string RenderWithoutFields(const Record& record);

// Appends the text of any record, from what follows the stamp to what precedes the line end.
// Calls `emit` with the first parts of the text, and leaves the last part in the piece, with room
// for one more character. A part is at most as long as the piece, except for an invalid length:
// a line can be twice as long as its record, which can have up to 4 GiB.
template <typename Emit>
void RenderRecord(const Record& record, LinePiece& piece, Emit emit) {
  if (record.kind == Record::Kind::kSignal) {
    RenderSignal(record.signal, piece, emit);
    return;
  }
  emit(piece.text());
  piece.Clear();
  emit(RenderWithoutFields(record));  // of any length, because the tool's name is part of one
}

#endif  // VRKT_HIP_RECORD_H_
