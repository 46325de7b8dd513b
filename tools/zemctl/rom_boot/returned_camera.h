// Which of the cameras in the system's list is the one that was away.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/zemctl/camera/system_devices.h"

namespace zemctl {

// Of the cameras that are listed now, the one that was not among `before`, while it was away; where
// its place is known, the one there. Nothing when there is none, and when it is not clear which.
std::optional<SystemDevice> FindReturned(const std::vector<SystemDevice>& before,
                                         const std::vector<SystemDevice>& now,
                                         const std::string& place);

}  // namespace zemctl
