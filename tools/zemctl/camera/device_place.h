// Where a device is plugged in.
#pragma once

#include <string>

#include "tools/zemctl/camera/system_devices.h"

namespace zemctl {

// As far as the system tells; empty where it does not. `device` has its names.
std::string PlaceOf(const SystemDevice& device);

}  // namespace zemctl
