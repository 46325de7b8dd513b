#include "platform/linux/video_devices.h"

#include <fcntl.h>
#include <linux/videodev2.h>

#include <new>

#include "platform/memory.h"

namespace zem::platform {
namespace {

// As many as V4L2 can number.
constexpr std::size_t kMaxVideoDevices = 256;

constexpr unsigned kVideoInterfaceClass = 0x0E;

// More than one configuration of a camera has, with the device's own descriptor.
constexpr std::size_t kMaxDescriptors = 1U << 17;

PathText VideoFolder(unsigned number) {
  PathText folder({kernel::SysFolder(), "/class/video4linux/video"});
  folder.AppendNumber(number);
  return folder;
}

// Frames come from it: its function also has device files for metadata. One that cannot be opened
// cannot be asked; then the function's first counts.
bool IsCapture(const VideoDevice& device) {
  const DeviceFile file = device.Open();
  v4l2_capability capability = {};
  if (!file || file.Control(VIDIOC_QUERYCAP, &capability) < 0) {
    return device.index == 0;
  }
  return (capability.device_caps & V4L2_CAP_VIDEO_CAPTURE) != 0;
}

bool ReadVideoDevice(unsigned number, VideoDevice& device) {
  const PathText folder = VideoFolder(number);
  const auto usb = ReadUsbInterface({folder.view(), "/device"});
  if (!usb || usb->interfaceClass != kVideoInterfaceClass) {
    return false;
  }
  device.number = number;
  device.usb = *usb;
  device.index = ReadNumber(folder, "index", 10).value_or(0);
  return IsCapture(device);
}

}  // namespace

DeviceFile VideoDevice::Open() const {
  PathText path({kernel::DeviceFolder(), "/video"});
  path.AppendNumber(number);
  return DeviceFile(kernel::Open(path.c_str(), O_RDWR | O_NONBLOCK));
}

PathText VideoDevice::DisplayName() const {
  PathText name = UsbDisplayName(usb);
  if (index > 0) {
    name.Append({"&"});
    name.AppendNumber(index);
  }
  return name;
}

PathText VideoDevice::DevicePath() const {
  PathText path({"/dev/v4l/by-path/", UsbPortPath(usb).view(), "-video-index"});
  path.AppendNumber(index);
  return path;
}

PathText VideoDevice::FriendlyName() const { return ReadAttribute(VideoFolder(number), "name"); }

bool VideoDevice::ReadTopology(VideoTopology& topology) const {
  const ByteBuffer descriptors = AllocateBytes(kMaxDescriptors);
  if (descriptors == nullptr) {
    return false;
  }
  const std::size_t length =
      ReadSysFile({usb.device.view(), "/descriptors"}, {descriptors.get(), kMaxDescriptors});
  ReadVideoTopology({descriptors.get(), length}, static_cast<std::uint8_t>(usb.configuration),
                    static_cast<std::uint8_t>(usb.number), topology);
  return true;
}

VideoDeviceList ListVideoDevices() {
  std::array<unsigned, kMaxVideoDevices> numbers = {};
  const std::size_t found =
      ListNumbered({kernel::SysFolder(), "/class/video4linux"}, "video", numbers);
  VideoDeviceList list;
  list.devices.reset(new (std::nothrow) VideoDevice[found]);
  if (list.devices == nullptr) {
    return list;
  }
  for (std::size_t index = 0; index < found; ++index) {
    if (ReadVideoDevice(numbers[index], list.devices[list.count])) {
      ++list.count;
    }
  }
  return list;
}

}  // namespace zem::platform
