// The station's program: one line on the camera that is attached; ends with 0 if it is good.
#include <cstdio>

#include "camera_check.h"

int main() {
  const Report report = CheckCamera();
  if (report.isPassed) {
    std::printf("good, firmware %s\n", report.version.c_str());
    return 0;
  }
  std::printf("bad: %s\n", report.reason.c_str());
  return 1;
}
