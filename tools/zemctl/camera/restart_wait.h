// A camera that a person restarts, at the place where it is plugged in.
#pragma once

#include <optional>
#include <string>

#include "tools/zemctl/camera/system_devices.h"

namespace zemctl {

// The device that is at the place of `before` now: the same one, or what it has become. Another
// camera never counts.
std::optional<SystemDevice> FindAgain(const SystemDevice& before);

// Waits until the camera has left and come back, or tells another version than before.
//
// Returns its version. Throws ToolFailure: kNoCamera when it does not come back in time,
// kNotVerified when it does not leave either, kInterrupted.
std::string WaitForRestart(const SystemDevice& before, const std::string& versionBefore,
                           unsigned seconds);

}  // namespace zemctl
