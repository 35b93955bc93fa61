#ifndef VRKT_FAPI_VOCABULARY_H_
#define VRKT_FAPI_VOCABULARY_H_

#include <cstdint>
#include <span>

#include "base/padded_text.h"
#include "fapi/hip_version_tags.h"
#include "fapi/signal_layout.h"

// The vocabularies of all versions, compiled and checked.

// The layout of the signal with this id in this version, in constant time;
// null if the version does not know the id.
const SignalLayout* FindSignal(HipVersionTag version, std::uint16_t id);

// All layouts of all versions, each once.
std::span<const SignalLayout> AllSignalLayouts();

namespace vocabulary_data {
extern const char* const kText;
extern const FieldLayout* const kFields;
}  // namespace vocabulary_data

inline PaddedText TextOf(LayoutText text) {
  return {vocabulary_data::kText + text.start, text.length};
}

// The fields of a signal, in print order.
inline std::span<const FieldLayout> FieldsOf(const SignalLayout& layout) {
  return {vocabulary_data::kFields + layout.first_field, layout.field_count};
}

#endif  // VRKT_FAPI_VOCABULARY_H_
