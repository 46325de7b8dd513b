// How a camera in the kernel is found: by its ids, its name, its path; and what it has.
#include <string>

#include "include/ZemUVCExtApi.h"
#include "tests/kernel/plugged_camera.h"
#include "tests/windows/support/opened_camera.h"

namespace {

using zem::testing::EntriesOf;
using zem::testing::Lines;
using zem::testing::OpenedCamera;
using zem::testing::PluggedCamera;

constexpr const wchar_t* kName = L"usb#vid_5a45&pid_8c00&mi_00#1-1";
constexpr const wchar_t* kPath = L"/dev/v4l/by-path/platform-vhci_hcd.0-usbv2-0:1:1.0-video-index0";

TEST(Discovery, WithoutACamera) {
  void* handle = &handle;
  EXPECT_EQ(ZEMAPI_OpenDevice(0, &handle), ZEM_E_FAIL);
  EXPECT_EQ(handle, &handle);
  EXPECT_EQ(ZEMAPI_OpenZemDevice(&handle), ZEM_E_FAIL);
  EXPECT_EQ(ZEMAPI_OpenDeviceByPath(kName, &handle), ZEM_E_FAIL);
  EXPECT_EQ(ZEMAPI_OpenDeviceByDevPath(kPath, &handle), ZEM_E_FAIL);
}

TEST(Discovery, ByIds) {
  const PluggedCamera plugged;
  void* handle = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDevice(0, &handle), 0);
  ZEMAPI_CloseDevice(&handle);
  ASSERT_EQ(ZEMAPI_OpenDeviceEx(0, &handle, 0x5A45, 0x8C00), 0);
  ZEMAPI_CloseDevice(&handle);
  ASSERT_EQ(ZEMAPI_OpenZemDevice(&handle), 0);
  ZEMAPI_CloseDevice(&handle);
  EXPECT_EQ(ZEMAPI_OpenDevice(1, &handle), ZEM_E_FAIL);
  EXPECT_EQ(ZEMAPI_OpenDeviceEx(0, &handle, 0x5A45, 0x8C01), ZEM_E_FAIL);
  EXPECT_EQ(ZEMAPI_OpenDeviceEx(0, &handle, 0x5A46, 0x8C00), ZEM_E_FAIL);
}

TEST(Discovery, ByNameAndPath) {
  const PluggedCamera plugged;
  void* handle = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDeviceByPath(kName, &handle), 0);
  ZEMAPI_CloseDevice(&handle);
  ASSERT_EQ(ZEMAPI_OpenDeviceByDevPath(kPath, &handle), 0);
  ZEMAPI_CloseDevice(&handle);
  EXPECT_EQ(ZEMAPI_OpenDeviceByPath(L"usb#vid_5a45&pid_8c00&mi_00#1-2", &handle), ZEM_E_FAIL);
  // udev's name of the same port, which leaves the generation out.
  EXPECT_EQ("/dev/v4l/by-path/" + EntriesOf("/dev/v4l/by-path").front(), zem::testing::kVideoFile);
}

TEST(Discovery, EveryExtensionUnit) {
  const GUID units[] = {ZEM_VENDOR_XU, ZEM_H264_XU,          ZEM_SKYPE_XU,       ZEM_TIRELLA_XU,
                        ZEM_ORVA_XU,   ZEM_ENCODING_UNIT_XU, ZEM_STREAM_PROBE_XU};
  {
    const PluggedCamera plugged;
    const OpenedCamera camera;
    const int present[] = {0, 1, 1, 1, 1, 1, 1};
    for (std::size_t unit = 0; unit < std::size(units); ++unit) {
      EXPECT_EQ(ZEMAPI_UvcCheckXuGuid(camera, &units[unit]), present[unit]) << unit;
    }
  }
  const PluggedCamera plugged(R"({"cameras": [{"h264Unit": true, "skypeUnit": true,
      "orvaUnit": true, "encodingUnit": true, "streamProbeUnit": true, "tirellaUnit": true}]})");
  const OpenedCamera camera;
  for (std::size_t unit = 0; unit < std::size(units); ++unit) {
    EXPECT_EQ(ZEMAPI_UvcCheckXuGuid(camera, &units[unit]), 0) << unit;
  }
}

}  // namespace
