#include "redactor.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "fapi/vocabulary.h"
#include "frame_redaction.h"
#include "hip/field_value.h"
#include "hip/record.h"

namespace {

constexpr std::size_t kIdSize = 2;

}  // namespace

Redactor::Redactor(bool keeps_addresses) : pseudonyms_(keeps_addresses) {
  for (const CompiledSignal& layout : ListLayouts()) contents_.push_back(FindContent(layout));
}

// A dump's name is `data` where it says nothing. All dumps of a layout show the same bytes.
Redactor::DumpContent Redactor::FindContent(const CompiledSignal& layout) {
  DumpContent found;
  for (const CompiledField& field : GetFields(layout)) {
    const std::string_view name = GetText(field.name).text();
    if (field.form != FieldRenderer::kDump) {
      if (name == "data_unit_descriptor") found.descriptor = &field;
    } else if (name == "frame") {
      found.content = Content::kManagementFrame;
    } else if (name == "information_elements") {
      found.content = Content::kElements;
    } else if (name != "data") {
      return {};
    }
  }
  if (found.descriptor != nullptr) found.content = Content::kFrame;
  return found;
}

void Redactor::AppendPayload(const SignalRecord& record, const HipVersionEntry& version,
                             std::string& log) {
  const std::size_t start = log.size();
  log.resize(start + record.payload.size());
  const Piece payload = {record.payload, reinterpret_cast<std::uint8_t*>(log.data()) + start};
  payload.Keep(0, std::min(kIdSize, payload.size()));
  const Record understood =
      UnderstandRecord({.kind = LogItem::Kind::kSignal, .signal = record}, version);
  if (understood.kind != Record::Kind::kSignal) return;

  const SignalView& signal = understood.signal;
  const Piece fields = payload.Sub(0, record.signal_length);
  const auto dump_start = static_cast<std::size_t>(signal.dump.data() - signal.bytes);
  RedactDump(signal, fields, payload.Sub(dump_start, signal.dump.size()));
  // In some versions a dump begins within the fields, so these come last.
  for (const CompiledField& field : GetFields(*signal.layout)) {
    if (field.form == FieldRenderer::kDump || HoldsSecret(field)) continue;
    if (field.form == FieldRenderer::kMac) {
      pseudonyms_.Replace(fields, field.offset);
    } else {
      fields.Keep(field.offset, GetWidth(field));
    }
  }
}

void Redactor::RedactDump(const SignalView& signal, Piece fields, Piece dump) {
  const auto& [content, descriptor] =
      contents_[static_cast<std::size_t>(signal.layout - ListLayouts().data())];
  switch (content) {
    case Content::kUnknown:
      return;
    case Content::kManagementFrame:
      return RedactManagementFrame(dump, pseudonyms_);
    case Content::kElements:
      return RedactElements(dump);
    case Content::kFrame:
      break;
  }
  if (descriptor->offset + GetWidth(*descriptor) > fields.size()) return;
  const std::string_view kind = ReadField(signal, *descriptor).label.text();
  if (kind == "ieee802_11_frame") RedactWlan(dump, pseudonyms_);
  if (kind == "ieee802_3_frame" || kind == "amsdu_subframe") RedactEthernet(dump, pseudonyms_);
  if (kind == "amsdu") RedactAmsdu(dump, pseudonyms_);
}
