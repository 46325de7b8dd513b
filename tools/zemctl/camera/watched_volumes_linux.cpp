// The library's way to the volumes is not watched on this system yet.
#include "tools/zemctl/camera/watched_volumes.h"

namespace zemctl {

struct WatchedVolumes::Hooks {};

WatchedVolumes::WatchedVolumes(ScsiRecord& /*record*/, VolumeSource* /*source*/) {}

WatchedVolumes::~WatchedVolumes() = default;

}  // namespace zemctl
