#include "tools/zemctl/camera/opening_refusal.h"

namespace zemctl {

const char* AdviceForPermission() {
  return "Install the project's udev rules, packaging/60-zem-cameras.rules, and plug the camera in "
         "again; or run this as root.";
}

const char* AdviceForBusyCamera() {
  return "End the program that uses it; \"sudo fuser -v /dev/video*\" names it.";
}

}  // namespace zemctl
