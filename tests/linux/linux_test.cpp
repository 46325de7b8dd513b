#include "tests/linux/linux_test.h"

#include <linux/usb/video.h>
#include <linux/uvcvideo.h>
#include <linux/videodev2.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace zem::testing {
namespace {

const char* QueryName(std::uint8_t query) {
  switch (query) {
    case UVC_GET_LEN:
      return "GET_LEN";
    case UVC_GET_CUR:
      return "GET_CUR";
    case UVC_SET_CUR:
      return "SET_CUR";
    default:
      return "?";
  }
}

constexpr const char* kController = "devices/pci0000:00/0000:00:14.0";

}  // namespace

FakeCamera::FakeCamera() : capabilities(V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING) {}

int FakeCamera::Control(unsigned long request, void* argument) {
  if (unplugged) {
    return -ENODEV;
  }
  if (request == VIDIOC_QUERYCAP) {
    static_cast<v4l2_capability*>(argument)->device_caps = capabilities;
    return 0;
  }
  if (request == UVCIOC_CTRL_QUERY) {
    return Query(argument);
  }
  if (request == VIDIOC_QUERYCTRL) {
    auto& description = *static_cast<v4l2_queryctrl*>(argument);
    const auto found = v4l2.find(description.id);
    if (found == v4l2.end()) {
      return -EINVAL;
    }
    description.minimum = found->second.minimum;
    description.maximum = found->second.maximum;
    description.step = found->second.step;
    description.default_value = found->second.defaultValue;
    description.flags = found->second.flags;
    return 0;
  }
  if (request == VIDIOC_QUERYMENU) {
    const auto& entry = *static_cast<v4l2_querymenu*>(argument);
    const auto& menu = v4l2.at(entry.id).menu;
    return std::find(menu.begin(), menu.end(), entry.index) != menu.end() ? 0 : -EINVAL;
  }
  if (request == VIDIOC_G_CTRL || request == VIDIOC_S_CTRL) {
    auto& control = *static_cast<v4l2_control*>(argument);
    const auto found = v4l2.find(control.id);
    if (found == v4l2.end()) {
      return -EINVAL;
    }
    (request == VIDIOC_G_CTRL ? control.value : found->second.value) =
        request == VIDIOC_G_CTRL ? found->second.value : control.value;
    return 0;
  }
  return -ENOTTY;
}

int FakeCamera::Query(void* argument) {
  const auto& query = *static_cast<uvc_xu_control_query*>(argument);
  char text[64] = {};
  static_cast<void>(std::snprintf(text, sizeof(text), "%s %u.%u %u", QueryName(query.query),
                                  query.unit, query.selector, query.size));
  std::string line = text;
  if (query.query == UVC_SET_CUR) {
    for (unsigned index = 0; index < query.size; ++index) {
      static_cast<void>(std::snprintf(text, sizeof(text), " %02x", query.data[index]));
      line += text;
    }
  }
  queries.push_back(line);
  const auto found = controls.find({query.unit, query.selector});
  if (found == controls.end()) {
    return -ENOENT;
  }
  FakeControl& control = found->second;
  if (query.query == UVC_GET_LEN) {
    if (query.size != 2) {
      return -ENOBUFS;
    }
    query.data[0] = static_cast<std::uint8_t>(control.length);
    query.data[1] = static_cast<std::uint8_t>(control.length >> 8);
    return 0;
  }
  const bool isSet = query.query == UVC_SET_CUR;
  if (isSet ? !control.isWritten : !control.isRead) {
    return -EBADRQC;
  }
  if (query.size != control.length) {
    return -ENOBUFS;
  }
  if (control.stall != 0) {
    return -control.stall;
  }
  if (isSet) {
    control.value.assign(query.data, query.data + query.size);
    return 0;
  }
  // Of a short answer the kernel hands out its whole buffer.
  std::fill_n(query.data, query.size, std::uint8_t{0});
  std::copy(control.value.begin(), control.value.end(), query.data);
  return control.value.size() == control.length ? 0 : static_cast<int>(control.value.size());
}

std::string CameraDescriptors() {
  // clang-format off
  static constexpr unsigned char kBytes[] = {
      // Device.
      18, 1, 0, 2, 0xEF, 2, 1, 64, 0x45, 0x5A, 0x00, 0x8C, 0, 1, 1, 2, 0, 1,
      // Configuration 1, and its interfaces' association.
      9, 2, 165, 0, 2, 1, 0, 0x80, 50,
      8, 11, 0, 2, 0x0E, 3, 0, 0,
      // Interface 0: video control, and its header.
      9, 4, 0, 0, 1, 0x0E, 1, 0, 0,
      13, 0x24, 1, 0x10, 1, 105, 0, 0, 0x6C, 0xDC, 2, 1, 1,
      // Camera terminal 1, processing unit 2.
      18, 0x24, 2, 1, 0x01, 0x02, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0,
      12, 0x24, 5, 2, 1, 0, 0, 2, 0, 0, 0, 0,
      // Extension units 3 and 4.
      27, 0x24, 6, 3, 0xD0, 0x9E, 0xE4, 0x23, 0x78, 0x11, 0x31, 0x4F, 0xAE, 0x52, 0xD2, 0xFB, 0x8A,
      0x8D, 0x3B, 0x48, 16, 1, 2, 2, 0xFF, 0xFF, 0,
      26, 0x24, 6, 4, 0x62, 0x86, 0xEB, 0x38, 0x45, 0x65, 0xDF, 0x4B, 0x91, 0xA1, 0x52, 0xC7, 0xF3,
      0xBF, 0xBD, 0xC6, 8, 1, 3, 1, 0xFF, 0,
      // Output terminal 5.
      9, 0x24, 3, 5, 0x01, 0x01, 0, 4, 0,
      // Interrupt endpoint, and the one of its class.
      7, 5, 0x81, 3, 16, 0, 8,
      5, 0x25, 3, 16, 0,
      // Interface 1: streaming, with a class-specific descriptor that is no unit.
      9, 4, 1, 0, 1, 0x0E, 2, 0, 0,
      13, 0x24, 6, 9, 0, 0, 0, 0, 0, 0, 0, 0, 0,
  };
  // clang-format on
  return {reinterpret_cast<const char*>(kBytes), sizeof(kBytes)};
}

std::string PortFolder(const std::string& port) {
  return std::string(kController) + "/usb" + port.substr(0, port.find('-')) + "/" + port;
}

LinuxTest::~LinuxTest() { EXPECT_EQ(kernel.openFiles(), 0) << "a device file was left open"; }

std::shared_ptr<FakeCamera> LinuxTest::AddCamera(unsigned number, const std::string& port,
                                                 const std::string& vendor,
                                                 const std::string& product) {
  const std::string bus = std::string(kController) + "/usb" + port.substr(0, port.find('-'));
  const std::string device = PortFolder(port);
  if (!std::filesystem::exists(kernel.SysPath(std::string(kController) + "/subsystem"))) {
    kernel.AddLink(std::string(kController) + "/subsystem", "bus/pci");
  }
  kernel.AddFile(bus + "/version", " 2.00\n");
  kernel.AddFile(device + "/idVendor", vendor + "\n");
  kernel.AddFile(device + "/idProduct", product + "\n");
  kernel.AddFile(device + "/bConfigurationValue", "1\n");
  kernel.AddFile(device + "/product", "Test Camera\n");
  kernel.AddFile(device + "/descriptors", CameraDescriptors());
  kernel.AddFile(device + "/" + port + ":1.0/bInterfaceNumber", "00\n");
  kernel.AddFile(device + "/" + port + ":1.0/bInterfaceClass", "0e\n");
  return AddVideoFile(number, port, 0);
}

std::shared_ptr<FakeCamera> LinuxTest::AddVideoFile(unsigned number, const std::string& port,
                                                    unsigned index) {
  const std::string name = "video" + std::to_string(number);
  const std::string interface = PortFolder(port) + "/" + port + ":1.0";
  const std::string folder = interface + "/video4linux/" + name;
  kernel.AddFile(folder + "/index", std::to_string(index) + "\n");
  kernel.AddFile(folder + "/name", "Test Camera: Test Camera\n");
  kernel.AddLink(folder + "/device", interface);
  kernel.AddLink("class/video4linux/" + name, folder);
  auto camera = std::make_shared<FakeCamera>();
  kernel.devices[name] = camera;
  return camera;
}

void LinuxTest::RemoveCamera(unsigned number, const std::string& port) {
  kernel.devices.erase("video" + std::to_string(number));
  kernel.Remove("class/video4linux/video" + std::to_string(number));
  kernel.Remove(PortFolder(port));
}

}  // namespace zem::testing
