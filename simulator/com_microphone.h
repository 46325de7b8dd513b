// A microphone, and the filter that the system's device enumerator binds to.
#pragma once

#include <functional>
#include <memory>

#include "simulator/com_object.h"

namespace zem::simulator {

struct Microphone {
  bool mixer = true;      // whether its level can be set
  double mixLevel = 1.0;  // 0.0 to 1.0 is silence to full; takes any other number too
  // Where a level that is set goes instead, and what comes of it.
  std::function<HRESULT(double level)> onLevel = nullptr;
};

// A new filter around `microphone`, with one reference for the caller. `gate` may be null and must
// outlive the filter.
IBaseFilter* MakeMicrophoneFilter(std::shared_ptr<Microphone> microphone, CallGate* gate);

}  // namespace zem::simulator
