#include "tools/zemctl/camera/camera_wait.h"

#include <windows.h>

#include <array>

#include "include/ZemUVCExtApi.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/interrupt.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

constexpr unsigned kListPauseMilliseconds = 500;

}  // namespace

std::string ReadVersion(const Session& session) {
  std::array<unsigned char, 6> version = {};
  session.Call("ZEMAPI_GetFWVersion",
               [&](void* device) { return ZEMAPI_GetFWVersion(device, version.data()); });
  return HexText(version);
}

std::string WaitForCamera(const DeviceSelection& device, unsigned seconds) {
  const ULONGLONG end = GetTickCount64() + 1000ULL * seconds;
  for (;;) {
    try {
      return ReadVersion(Session(device, Use::kReading));
    } catch (const CallFailure& failure) {
      if (failure.text().exitCode != kNoCamera) {
        throw;
      }
    }
    if (StopRequested()) {
      throw Stopped("it was not seen since it was restarted", "look for it with \"zemctl list\".");
    }
    if (GetTickCount64() >= end) {
      return "";
    }
    Sleep(kListPauseMilliseconds);
  }
}

}  // namespace zemctl
