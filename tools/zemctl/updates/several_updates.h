// The same update of several cameras, side by side.
#pragma once

#include <vector>

#include "tools/zemctl/camera/system_devices.h"
#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/updates/image_update.h"

namespace zemctl {

// The cameras that fit, or those of them at the given positions. Throws ToolFailure (kNoCamera)
// when there is none, or none at a position.
std::vector<SystemDevice> ChosenCameras(const DeviceSelection& selection,
                                        const std::vector<unsigned>& positions);

// Asks once, and updates each on a thread of its own: the failure of one stops no other. Reports
// them as the table "cameras". Returns kDone, or throws PartialFailure (kSomeFailed).
int UpdateSeveral(const Options& options, const std::vector<SystemDevice>& cameras,
                  const ImageUpdate& update, Report& report);

}  // namespace zemctl
