// The COM adapter: a simulated camera as the filter that the system's device enumerator binds to.
#pragma once

#include <memory>

#include "simulator/camera.h"
#include "simulator/com_object.h"

namespace zem::simulator {

// A new filter around `camera`, with one reference for the caller. Many filters may share a camera,
// as many opened handles share a real one. `gate` may be null and must outlive the filter.
IBaseFilter* MakeCameraFilter(std::shared_ptr<Camera> camera, CallGate* gate);

// What the platform reports for a transfer's outcome.
HRESULT ResultOf(Outcome outcome);

}  // namespace zem::simulator
