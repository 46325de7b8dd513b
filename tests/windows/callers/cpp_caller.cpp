// A C++ caller built with MinGW: functions with decorated symbols. Exit code 0: each answered as
// it must for a null handle or session, and for a
// selector that cannot be.
#include "include/ZemUVCExtApi.h"

int main() {
  unsigned char version[6] = {};
  char reply[8] = {};
  const bool right = ZEMAPI_GetFWVersion(nullptr, version) == ZEM_E_NO_DEVICE &&
                     ZEMAPI_GetFWVersion(nullptr, reply) == ZEM_E_NO_DEVICE &&
                     WREN_EuGet(nullptr, 0x10000, nullptr, 0) == ZEM_E_REFUSED &&
                     ZEMROMAPI_SwitchModePCAM_DRAM(nullptr) == ZEM_E_FAIL;
  return right ? 0 : 1;
}
