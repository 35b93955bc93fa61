#include "hip/signal_decoder.h"

#include <string_view>

#include "base/unlocked_stdio.h"
#include "hip/field_rendering.h"
#include "hip/signal_view.h"

std::uint32_t DecodeHipSignal(HipVersionTag version, const HipSignal& signal) {
  const SignalView view = ViewSignal(version, signal);
  if (view.layout == nullptr) {
    PrintPiece(RenderUnknownSignal(view.id));
    return 0;
  }
  if (view.is_too_short) return 0;
  RenderSignal(view, [](std::string_view part) { PrintPiece(part); });
  return 1;
}
