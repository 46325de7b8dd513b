// The cameras of this machine: the capture devices of V4L2 that are USB video functions.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <span>

#include "platform/linux/device_file.h"
#include "platform/linux/usb_device.h"
#include "platform/linux/video_control.h"

namespace zem::platform {

struct VideoDevice {
  unsigned number = 0;  // of its device file
  UsbInterface usb = {};
  unsigned index = 0;  // among the device files of its function

  DeviceFile Open() const;
  PathText DisplayName() const;
  PathText DevicePath() const;
  PathText FriendlyName() const;
  // The entities of its function; none when the descriptors cannot be read. False without memory.
  bool ReadTopology(VideoTopology& topology) const;
};

// In the order of their device files' numbers. Nothing when there is no memory.
struct VideoDeviceList {
  std::unique_ptr<VideoDevice[]> devices;
  std::size_t count = 0;
};
VideoDeviceList ListVideoDevices();

}  // namespace zem::platform
