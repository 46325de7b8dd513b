// A C++ caller built with MinGW: both overloads of one name. Exit code 0: each answered as it must
// for a null handle.
#include "include/ZemUVCExtApi.h"

int main() {
  unsigned char version[6] = {};
  char reply[8] = {};
  const bool right = ZEMAPI_GetFWVersion(nullptr, version) == ZEM_E_NO_DEVICE &&
                     ZEMAPI_GetFWVersion(nullptr, reply) == ZEM_E_NO_DEVICE;
  return right ? 0 : 1;
}
