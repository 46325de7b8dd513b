// A camera that comes back as a video device after it was restarted.
#pragma once

#include <string>

#include "tools/zemctl/camera/session.h"

namespace zemctl {

// The camera's firmware version: "01 02 03 04 05 06". Throws CallFailure.
std::string ReadVersion(const Session& session);

// Looks for the camera for so many seconds, and asks it for its firmware version. Empty when it
// does not come. Throws CallFailure when it comes and does not answer.
std::string WaitForCamera(const DeviceSelection& device, unsigned seconds);

}  // namespace zemctl
