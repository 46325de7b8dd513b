#include "tools/zemctl/camera/scsi_record.h"

#include <algorithm>
#include <array>

namespace zemctl {
namespace {

// For so long a device may fail every command before no more are sent.
constexpr std::uint64_t kLongestVolumeSilenceMilliseconds = 2800;

}  // namespace

std::string FailureOf(const ScsiCommand& command) {
  if (command.error != 0) {
    return (MeansVolumeGone(command.error) ? "the volume is gone, error " : "error ") +
           std::to_string(command.error);
  }
  return "SCSI status " + std::to_string(command.status);
}

bool MeansVolumeGone(std::uint32_t error) {
  // No such volume, no longer there, not connected, removed.
  constexpr std::array<std::uint32_t, 6> kGone = {2, 55, 433, 1006, 1167, 1617};
  return std::find(kGone.begin(), kGone.end(), error) != kGone.end();
}

void ScsiRecord::Add(ScsiCommand command, std::uint64_t began) {
  command.milliseconds = Now();
  if (!command.hasFailed()) {
    failingSince_.reset();
  } else if (!failingSince_) {
    failingSince_ = began;
  }
  for (const Observer& observer : observers_) {
    observer(command);
  }
  if (!command.isIn) {
    command.data = {};
  }
  commands_.push_back(std::move(command));
}

bool ScsiRecord::MayOpen(const std::string& drive) const {
  return isOpen() && (only_.empty() || drive == only_) && !excluded_.contains(drive);
}

bool ScsiRecord::MaySend() const {
  return isOpen() &&
         !(failingSince_ && Now() - *failingSince_ >= kLongestVolumeSilenceMilliseconds);
}

}  // namespace zemctl
