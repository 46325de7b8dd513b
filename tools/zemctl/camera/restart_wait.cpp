#include "tools/zemctl/camera/restart_wait.h"

#include <algorithm>

#include "tools/zemctl/camera/firmware_version.h"
#include "tools/zemctl/camera/session.h"
#include "tools/zemctl/camera/waiting.h"
#include "tools/zemctl/frame/interrupt.h"

namespace zemctl {
namespace {

constexpr unsigned kLookMilliseconds = 250;

bool IsSamePlace(const SystemDevice& device, const SystemDevice& before) {
  return before.place.empty() ? device.displayName == before.displayName
                              : device.place == before.place;
}

// Nothing when it does not answer: it is on its way.
std::string VersionOf(const SystemDevice& device) {
  DeviceSelection selection;
  selection.displayName = device.displayName;
  try {
    return ReadVersion(Session(selection, Use::kReading));
  } catch (const CallFailure&) {
    return "";
  }
}

}  // namespace

std::optional<SystemDevice> FindAgain(const SystemDevice& before) {
  const std::vector<SystemDevice> devices = ListSystemDevices(DeviceCategory::kVideoInput);
  const auto found = std::find_if(devices.begin(), devices.end(), [&](const SystemDevice& device) {
    return IsSamePlace(device, before);
  });
  return found != devices.end() ? std::optional(*found) : std::nullopt;
}

std::string WaitForRestart(const SystemDevice& before, const std::string& versionBefore,
                           unsigned seconds) {
  const std::uint64_t end = WaitingClock() + 1000ULL * seconds;
  bool hasLeft = false;
  for (;;) {
    const std::optional<SystemDevice> device = FindAgain(before);
    std::string version = device ? VersionOf(*device) : "";
    if (!version.empty() && (hasLeft || version != versionBefore)) {
      return version;
    }
    hasLeft = hasLeft || version.empty();
    if (StopRequested()) {
      throw Stopped("the burn is done; it was not seen again since",
                    "look for it with \"zemctl list\".");
    }
    if (WaitingClock() >= end) {
      break;
    }
    Wait(kLookMilliseconds);
  }
  const std::string time = "within " + std::to_string(seconds) + " s";
  if (hasLeft) {
    throw ToolFailure(kNoCamera, "the camera did not come back " + time,
                      "Look for it with \"zemctl list\", and among the volumes with \"zemctl rom "
                      "info\".",
                      "the burn is reported done, and it has left " + before.place);
  }
  throw ToolFailure(kNotVerified, "the camera was not restarted " + time,
                    "Restart it; \"zemctl info\" then shows the new version.",
                    "the burn is reported done, and it still runs version " + versionBefore);
}

}  // namespace zemctl
