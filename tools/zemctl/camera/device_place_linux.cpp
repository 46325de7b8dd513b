#include "tools/zemctl/camera/device_place.h"

namespace zemctl {

// A display name is usb#IDS#PORT.
std::string PlaceOf(const SystemDevice& device) {
  const std::size_t ids = device.displayName.find('#');
  const std::size_t port = device.displayName.find('#', ids + 1);
  return ids == std::string::npos || port == std::string::npos
             ? ""
             : device.displayName.substr(port + 1);
}

}  // namespace zemctl
