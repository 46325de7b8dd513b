// The standard controls of a simulated camera as the requests of its camera terminal and its
// processing unit: the model's numbers are DirectShow's, those on the wire the video class's.
#pragma once

#include <memory>

#include "simulator/camera.h"
#include "simulator/usb/control_requests.h"

namespace zem::simulator::usb {

// A request to a control of the entity that has the family's controls.
Answer RequestStandardControl(Camera& camera, ControlFamily family, const ControlRequest& request);

}  // namespace zem::simulator::usb
