#ifndef VRKT_HIP_FIELD_RENDERING_H_
#define VRKT_HIP_FIELD_RENDERING_H_

#include <cstdint>

#include "base/padded_text.h"
#include "fapi/hip_version_tags.h"
#include "fapi/signal_layout.h"
#include "hip/hip_signal.h"

// Both print to standard output and test no length: whoever calls them sees to
// it that the bytes are there.

// Prints a dump: `head`, as in " data:{", the region's bytes in stored order
// and the closing brace, also where the region is empty.
void PrintDump(PaddedText head, SignalSpan region);

// Prints one field of `signal`, which is readable up to the field's end.
void PrintField(const FieldLayout& field, const std::uint8_t* signal, HipVersionTag version);

#endif  // VRKT_HIP_FIELD_RENDERING_H_
