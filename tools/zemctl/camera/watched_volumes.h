// The library's way to the volumes, watched: as long as one lives, its calls of the system that
// open volumes, send them commands and wait pass through here. What happened is in the record.
#pragma once

#include <memory>

#include "tools/zemctl/camera/volume_watch.h"

namespace zemctl {

// There is one at a time. It must be made after the simulator's volumes and go before them.
class WatchedVolumes {
 public:
  // With a source, or on a thread that replays a trace, the system's own volumes are out of reach.
  // On one that is traced, the trace has every command.
  explicit WatchedVolumes(ScsiRecord& record, VolumeSource* source = nullptr);
  ~WatchedVolumes();
  WatchedVolumes(const WatchedVolumes&) = delete;
  WatchedVolumes& operator=(const WatchedVolumes&) = delete;

 private:
  struct Hooks;
  std::unique_ptr<Hooks> hooks_;
};

}  // namespace zemctl
