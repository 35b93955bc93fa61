#ifndef VRKT_HIP_FIELD_RENDERING_H_
#define VRKT_HIP_FIELD_RENDERING_H_

#include <cstdint>
#include <span>

#include "base/padded_text.h"
#include "fapi/compiled_signal.h"
#include "fapi/hip_version_tags.h"
#include "hip/hip_signal.h"

// These functions print to standard output and do not check lengths.

// Prints a dump: `prefix`, as in " data:{", the region's bytes in stored order and the
// closing brace. An empty region prints as "{}".
void PrintDump(PaddedText prefix, SignalSpan region);

// Prints fields in order. `signal` must be readable up to the end of each.
void PrintFields(std::span<const CompiledField> fields, const std::uint8_t* signal,
                 HipVersionTag version);

#endif  // VRKT_HIP_FIELD_RENDERING_H_
