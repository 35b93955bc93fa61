#include "hip/signal_view.h"

#include "base/little_endian.h"
#include "fapi/vocabulary.h"

SignalView ViewSignal(HipVersionTag version, const HipSignal& signal) {
  SignalView view{};
  view.version = version;
  view.id = LoadU16(signal.signal.bytes);
  view.layout = FindSignal(version, view.id);
  view.bytes = signal.signal.bytes;
  if (view.layout == nullptr) return view;
  if (signal.bulk1.length != 0) {
    view.dump = signal.bulk1;
    return view;
  }
  const std::uint32_t min = view.layout->min;
  view.is_too_short = signal.signal.length < min;
  if (!view.is_too_short) view.dump = {signal.signal.length - min, signal.signal.bytes + min};
  return view;
}
