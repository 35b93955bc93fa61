#include "hip/record.h"

#include <optional>

#include "base/little_endian.h"
#include "base/program_name.h"
#include "base/text_piece.h"
#include "fapi/vocabulary.h"
#include "hip/signal_routing.h"

namespace {

Record UnderstandSignalRecord(const SignalRecord& item, const HipVersionEntry& version) {
  Record record{.id = item.id, .signal = {version.tag, nullptr, item.payload.data(), {}}};
  if (IsDriverSide(item.id)) {
    record.kind = IsKnownDriverSignal(item.id) ? Record::Kind::kDriverSignal
                                               : Record::Kind::kUnknownDriverSignal;
    return record;
  }
  const std::optional<HipSignal> split =
      SplitSignalRecord(item.payload, item.signal_length, version.version);
  if (split) return UnderstandSignal(version.tag, *split);
  record.kind = Record::Kind::kInvalidLength;
  record.signal.layout = FindSignal(version.tag, item.id);
  return record;
}

}  // namespace

Record UnderstandRecord(const LogItem& item, const HipVersionEntry& version) {
  switch (item.kind) {
    case LogItem::Kind::kHeader:
      return {.kind = Record::Kind::kHeader};
    case LogItem::Kind::kEvent:
      return {.kind = item.HasLine() ? Record::Kind::kEvent : Record::Kind::kSilentEvent,
              .event = item.event,
              .uptime = item.uptime};
    case LogItem::Kind::kSignal:
      return UnderstandSignalRecord(item.signal, version);
  }
  return {};
}

Record UnderstandSignal(HipVersionTag version, const HipSignal& signal) {
  const std::uint8_t* const bytes = signal.signal.data();
  const std::uint16_t id = LoadU16(bytes);
  const CompiledSignal* const layout = FindSignal(version, id);
  Record record{
      .kind = Record::Kind::kSignal, .id = id, .signal = {version, layout, bytes, signal.bulk1}};
  if (layout == nullptr) {
    record.kind = Record::Kind::kUnknownSignal;
  } else if (signal.bulk1.empty()) {
    if (signal.signal.size() < layout->min) {
      record.kind = Record::Kind::kTooShort;
    } else {
      record.signal.dump = signal.signal.subspan(layout->min);
    }
  }
  return record;
}

std::string RenderWithoutFields(const Record& record) {
  switch (record.kind) {
    case Record::Kind::kEvent: {
      std::string text(record.event->text);
      if (record.event->text_after_uptime.empty()) return text;
      text += std::to_string(record.uptime);
      text += record.event->text_after_uptime;
      return text;
    }
    case Record::Kind::kUnknownSignal: {
      TextPiece<32> text;
      text.Append("Unknown Hip Signal : 0x");
      text.AppendHex(record.id);
      return std::string(text.text());
    }
    case Record::Kind::kInvalidLength:
      return std::string(programName) + ": Invalid length in data reference";
    case Record::Kind::kDriverSignal:
    case Record::Kind::kUnknownDriverSignal:
      return RenderDriverSignal(record.signal.bytes);
    case Record::Kind::kHeader:
    case Record::Kind::kSilentEvent:
    case Record::Kind::kSignal:
    case Record::Kind::kTooShort:
      break;
  }
  return {};
}
