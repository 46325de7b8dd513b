// ListCameras() over a sysfs of the test's own. Its names are compared with the library's in
// tests/linux/discovery_test.cpp.
#include <gtest/gtest.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <cstdarg>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "include/ZemUVC.hpp"
#include "tests/support/temporary_folder.h"

namespace {

// By the path of a device file: its capabilities.
std::map<std::string, unsigned> capabilitiesOf;

std::string PathOf(int file) {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(file), error).string();
}

}  // namespace

// In place of the system's for this program: no test has a camera.
extern "C" int ioctl(int file, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  const auto found = capabilitiesOf.find(PathOf(file));
  if (request != VIDIOC_QUERYCAP || found == capabilitiesOf.end()) {
    errno = ENOTTY;
    return -1;
  }
  static_cast<v4l2_capability*>(argument)->device_caps = found->second;
  return 0;
}

namespace {

using zemuvc::CameraInfo;

class ListCamerasTest : public ::testing::Test {
 protected:
  // A device file of interface 0 of the device on a port such as "1-1.2".
  void Add(unsigned number, const std::string& port, unsigned index = 0,
           const std::string& interfaceClass = "0e") const {
    const std::string bus = "sys/devices/pci0000:00/0000:00:14.0/usb1";
    const std::string device = bus + "/" + port;
    const std::string interface = device + "/" + port + ":1.0";
    const std::string video = interface + "/video4linux/video" + std::to_string(number);
    Write(bus + "/version", " 2.00\n");
    Write(device + "/idVendor", "5a45\n");
    Write(device + "/idProduct", "8c00\n");
    Write(device + "/bConfigurationValue", "1\n");
    Write(interface + "/bInterfaceNumber", "00\n");
    Write(interface + "/bInterfaceClass", interfaceClass + "\n");
    Write(video + "/index", std::to_string(index) + "\n");
    Write(video + "/name", "Test Camera\n");
    Link(bus + "/../subsystem", "sys/bus/pci");
    Link(video + "/device", interface);
    Link("sys/class/video4linux/video" + std::to_string(number), video);
  }

  // What can be asked for its capabilities.
  void AddFile(unsigned number, unsigned capabilities) const {
    const std::string name = "dev/video" + std::to_string(number);
    Write(name, "");
    capabilitiesOf[(folder.path() / name).string()] = capabilities;
  }

  std::vector<CameraInfo> List() const {
    std::vector<CameraInfo> cameras;
    EXPECT_EQ(zemuvc::detail::ListSystemCameras(cameras, (folder.path() / "sys").string(),
                                                (folder.path() / "dev").string()),
              ZEM_OK);
    return cameras;
  }

  std::vector<std::wstring> Names() const {
    std::vector<std::wstring> names;
    for (const CameraInfo& camera : List()) {
      names.push_back(camera.displayName);
    }
    return names;
  }

  void Write(const std::string& path, const std::string& content) const {
    std::filesystem::create_directories((folder.path() / path).parent_path());
    std::ofstream(folder.path() / path) << content;
  }

  void Link(const std::string& path, const std::string& target) const {
    std::filesystem::create_directories((folder.path() / path).parent_path());
    std::filesystem::create_directories(folder.path() / target);
    std::filesystem::remove(folder.path() / path);
    std::filesystem::create_symlink(folder.path() / target, folder.path() / path);
  }

  ~ListCamerasTest() override { capabilitiesOf.clear(); }

  zem::testing::TemporaryFolder folder;
};

using Texts = std::vector<std::wstring>;

TEST_F(ListCamerasTest, SaysWhatACameraIsCalled) {
  Add(0, "1-1.2");
  const std::vector<CameraInfo> cameras = List();
  ASSERT_EQ(cameras.size(), 1U);
  EXPECT_EQ(cameras[0].name, L"Test Camera");
  EXPECT_EQ(cameras[0].displayName, L"usb#vid_5a45&pid_8c00&mi_00#1-1.2");
  EXPECT_EQ(cameras[0].devicePath,
            L"/dev/v4l/by-path/pci-0000:00:14.0-usbv2-0:1.2:1.0-video-index0");
  EXPECT_EQ(cameras[0].vendorId, 0x5A45);
  EXPECT_EQ(cameras[0].productId, 0x8C00);
}

TEST_F(ListCamerasTest, InTheOrderOfTheirNumbers) {
  Add(10, "1-1");
  Add(9, "1-2");
  Add(2, "1-3");
  EXPECT_EQ(Names(), (Texts{L"usb#vid_5a45&pid_8c00&mi_00#1-3", L"usb#vid_5a45&pid_8c00&mi_00#1-2",
                            L"usb#vid_5a45&pid_8c00&mi_00#1-1"}));
}

TEST_F(ListCamerasTest, FilesForMetadataAreNoCamerasAndFurtherCaptureFilesAre) {
  Add(0, "1-1");
  Add(1, "1-1", 1);
  Add(2, "1-1", 2);
  AddFile(0, V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING);
  AddFile(1, V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING);
  AddFile(2, V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING);
  EXPECT_EQ(Names(),
            (Texts{L"usb#vid_5a45&pid_8c00&mi_00#1-1", L"usb#vid_5a45&pid_8c00&mi_00#1-1&2"}));
}

TEST_F(ListCamerasTest, OfFilesThatCannotBeAskedTheFirstCounts) {
  Add(0, "1-1");
  Add(1, "1-1", 1);
  EXPECT_EQ(Names(), (Texts{L"usb#vid_5a45&pid_8c00&mi_00#1-1"}));
}

TEST_F(ListCamerasTest, WhatIsNoUsbVideoFunctionIsNone) {
  Add(0, "1-1", 0, "ff");
  Write("sys/class/video4linux/video1/index", "0\n");
  Write("sys/class/video4linux/vbi0/index", "0\n");
  EXPECT_EQ(Names(), Texts());
}

TEST_F(ListCamerasTest, WithoutTheFolderThereIsNone) { EXPECT_EQ(Names(), Texts()); }

TEST_F(ListCamerasTest, TheSystemsListCanBeAsked) {
  std::error_code code = zemuvc::Errc::kFail;
  static_cast<void>(zemuvc::ListCameras(code));
  EXPECT_FALSE(code);
}

}  // namespace
