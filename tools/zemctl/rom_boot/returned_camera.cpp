#include "tools/zemctl/rom_boot/returned_camera.h"

#include <algorithm>

namespace zemctl {

std::optional<SystemDevice> FindReturned(const std::vector<SystemDevice>& before,
                                         const std::vector<SystemDevice>& now,
                                         const std::string& place) {
  std::vector<SystemDevice> added;
  for (const SystemDevice& device : now) {
    const bool wasThere = std::any_of(before.begin(), before.end(), [&](const SystemDevice& each) {
      return each.displayName == device.displayName;
    });
    if (!wasThere && (place.empty() || device.place == place)) {
      added.push_back(device);
    }
  }
  return added.size() == 1 ? std::optional(added.front()) : std::nullopt;
}

}  // namespace zemctl
