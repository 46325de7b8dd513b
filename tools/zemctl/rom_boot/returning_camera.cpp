#include "tools/zemctl/rom_boot/returning_camera.h"

#include <utility>

#include "tools/zemctl/camera/firmware_version.h"
#include "tools/zemctl/camera/session.h"

namespace zemctl {
namespace {

constexpr std::uint32_t kListPause = 500;

ReturnedCamera Ask(const SystemDevice& device) {
  DeviceSelection selection;
  selection.displayName = device.displayName;
  const Session session(selection, Use::kReading);
  return {device, ReadVersion(session)};
}

}  // namespace

void ReturnedCamera::AddTo(Report& report) const {
  report["camera"] = NameOf(device);
  report["firmware version"] = version;
}

ReturningCamera::ReturningCamera(const DeviceSelection& selection, std::string place)
    : selection_(selection), place_(std::move(place)), before_(List()) {}

std::vector<SystemDevice> ReturningCamera::List() const {
  return place_.empty() ? ListMatches(selection_) : ListSystemDevices(DeviceCategory::kVideoInput);
}

ReturnedCamera ReturningCamera::Await(RomWatch& watch, unsigned seconds,
                                      const std::string& done) const {
  const std::uint64_t end = watch.Now() + std::uint64_t{1000} * seconds;
  bool isBack = false;
  for (;;) {
    watch.ThrowIfStopped();
    const bool isOver = watch.Now() >= end;
    if (const auto device = FindReturned(before_, List(), place_)) {
      try {
        return Ask(*device);
      } catch (const CallFailure&) {
        // It may not be ready yet.
        if (isOver) {
          throw;
        }
      }
    }
    // So that the state tells whether it is in ROM boot again.
    isBack = !watch.Survey().empty();
    if (isOver) {
      break;
    }
    watch.Pause(kListPause);
  }
  const std::string where =
      place_.empty() ? "no further camera came" : "no camera came at " + place_;
  const std::string others =
      List().size() > before_.size() ? "; which of those that came it is, is not clear" : "";
  throw ToolFailure(kNoCamera,
                    done + "; but " + where + " within " + std::to_string(seconds) + " s" + others,
                    isBack ? "This code does not start from where it is."
                           : "It may have other USB ids, see \"zemctl list\"; or need more time, "
                             "see --wait; or this code does not start.");
}

}  // namespace zemctl
