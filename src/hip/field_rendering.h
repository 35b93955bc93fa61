#ifndef VRKT_HIP_FIELD_RENDERING_H_
#define VRKT_HIP_FIELD_RENDERING_H_

#include <cstdint>

#include "base/padded_text.h"
#include "fapi/compiled_signal.h"
#include "fapi/hip_version_tags.h"
#include "hip/hip_signal.h"

// Both print to standard output and check no length: the caller makes sure that
// the bytes are readable.

// Prints a dump: `prefix`, as in " data:{", the region's bytes in stored order
// and the closing brace. An empty region prints too.
void PrintDump(PaddedText prefix, SignalSpan region);

// Prints one field of `signal`, which is readable up to the field's end.
void PrintField(const CompiledField& field, const std::uint8_t* signal, HipVersionTag version);

#endif  // VRKT_HIP_FIELD_RENDERING_H_
