// The camera that comes back from ROM boot as a video device: never one that happens to be plugged
// in beside it.
#pragma once

#include <string>
#include <vector>

#include "tools/zemctl/camera/system_devices.h"
#include "tools/zemctl/frame/report.h"
#include "tools/zemctl/rom_boot/returned_camera.h"
#include "tools/zemctl/rom_boot/rom_watch.h"

namespace zemctl {

struct ReturnedCamera {
  SystemDevice device;
  std::string version;  // of its firmware: "01 02 03 04 05 06"

  // Fields "camera" and "firmware version".
  void AddTo(Report& report) const;
};

class ReturningCamera {
 public:
  // To be made while the camera is in ROM boot. Without a `place` it is expected to be one that the
  // selection fits.
  ReturningCamera(const DeviceSelection& selection, std::string place);

  // Waits for it for so many seconds. Throws ToolFailure (kNoCamera), whose text begins with
  // `done`, when it does not come; CallFailure when it comes and does not answer.
  ReturnedCamera Await(RomWatch& watch, unsigned seconds, const std::string& done) const;

 private:
  std::vector<SystemDevice> List() const;

  DeviceSelection selection_;
  std::string place_;
  std::vector<SystemDevice> before_;
};

}  // namespace zemctl
