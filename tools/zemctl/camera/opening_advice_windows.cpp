#include "tools/zemctl/camera/opening_refusal.h"

namespace zemctl {

const char* AdviceForPermission() {
  return "Allow it in the system's privacy settings, or run this as administrator.";
}

const char* AdviceForBusyCamera() { return "End the program that uses it."; }

}  // namespace zemctl
