// Devices that are there and cannot be opened.
#pragma once

#include "tools/zemctl/camera/system_devices.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {

// What `function` has come to: the camera was found, and binding it gave `result`, which is
// negative.
CallFailure OpeningRefused(const char* function, ZemResult result, const SystemDevice& camera);

// What to do about a device that only others may open, on this system.
const char* AdviceForPermission();

// And about a camera that another program has.
const char* AdviceForBusyCamera();

}  // namespace zemctl
