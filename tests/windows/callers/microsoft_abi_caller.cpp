// A caller built for the Microsoft ABI without any runtime: functions with decorated
// symbols. Exit code 0: each answered as it must for a null handle or session, and for a
// selector that cannot be.
#include "include/ZemUVCExtApi.h"

extern "C" __declspec(dllimport) void ExitProcess(unsigned code);

extern "C" void Entry() {
  unsigned char version[6];
  char reply[8];
  const bool right = ZEMAPI_GetFWVersion(nullptr, version) == ZEM_E_NO_DEVICE &&
                     ZEMAPI_GetFWVersion(nullptr, reply) == ZEM_E_NO_DEVICE &&
                     WREN_EuGet(nullptr, 0x10000, nullptr, 0) == ZEM_E_REFUSED &&
                     ZEMROMAPI_SwitchModePCAM_DRAM(nullptr) == ZEM_E_FAIL;
  ExitProcess(right ? 0 : 1);
}
