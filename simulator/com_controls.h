// The COM interfaces over a camera's standard controls.
#pragma once

#include <memory>

#include "simulator/camera.h"
#include "simulator/com_object.h"

namespace zem::simulator {

// QueryInterface for the interfaces over the families that the camera has. `gate` may be null and
// must outlive the interface.
HRESULT QueryControls(const std::shared_ptr<Camera>& camera, CallGate* gate, REFIID iid,
                      void** object);

}  // namespace zem::simulator
