// What every command on a camera in ROM boot shares: the library's way to the volumes is watched,
// Ctrl-C ends what goes on, and every failure tells the camera's state and the next step.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tools/zemctl/camera/watched_volumes.h"
#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/rom_boot/rom_trail.h"

namespace zemctl {

class RomWatch {
 public:
  explicit RomWatch(const Options& options);

  // Runs the command. A failure of it once a camera has been reached becomes a PartialFailure with
  // the camera's state and what to do next.
  int Run(const std::function<int()>& command);

  ScsiRecord& record() { return record_; }
  RomTrail& trail() { return trail_; }

  // All cameras in ROM boot, but those to be left alone.
  std::vector<RomVolume> Survey();

  // This is another camera's volume: it is not opened any more.
  void LeaveAlone(const std::string& drive);

  std::uint64_t Now() const { return record_.Now(); }
  // Lets so many milliseconds pass. Throws ToolFailure (kInterrupted) at Ctrl-C.
  void Pause(std::uint32_t milliseconds) const;
  void ThrowIfStopped() const;

 private:
  friend class ObserverGuard;

  [[noreturn]] void Tell(Failure failure) const;
  std::string Again() const;

  const Options& options_;
  ScsiRecord record_;
  WatchedVolumes volumes_;
  RomTrail trail_;
  std::set<std::string> leftAlone_;
  ScsiRecord::Observer observer_;
};

// As long as it lives its function sees every command, behind the trail. There is one at a time.
class ObserverGuard {
 public:
  ObserverGuard(RomWatch& watch, ScsiRecord::Observer observer) : watch_(watch) {
    watch_.observer_ = std::move(observer);
  }
  ~ObserverGuard() { watch_.observer_ = nullptr; }
  ObserverGuard(const ObserverGuard&) = delete;
  ObserverGuard& operator=(const ObserverGuard&) = delete;

 private:
  RomWatch& watch_;
};

}  // namespace zemctl
