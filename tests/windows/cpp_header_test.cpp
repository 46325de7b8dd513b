// ZemUVC.hpp over the real DLL, among simulated cameras.
#include <algorithm>
#include <string>
#include <vector>

#include "include/ZemUVC.hpp"
#include "tests/windows/support/simulator_guard.h"

namespace {

using zem::testing::PrivateSimulatorGuard;
using zemuvc::Camera;
using zemuvc::CameraInfo;

constexpr const char* kTwoCameras =
    R"({"cameras": [{"name": "First"}, {"name": "Second", "vendorId": 23110, "productId": 22136}]})";

TEST(CppHeader, ListsTheSystemsCameras) {
  const PrivateSimulatorGuard simulator(kTwoCameras);
  const std::vector<CameraInfo> cameras = zemuvc::ListCameras();
  ASSERT_EQ(cameras.size(), 2U);
  EXPECT_EQ(cameras[0].name, L"First");
  EXPECT_EQ(cameras[0].displayName,
            L"@device:sw:{860BB310-5D01-11D0-BD3B-00A0C911CE86}\\usb#vid_5a45&pid_8c00&mi_00#"
            L"zem-simulator&0");
  EXPECT_EQ(cameras[0].devicePath, L"\\\\?\\usb#vid_5a45&pid_8c00&mi_00#zem-simulator&0");
  EXPECT_EQ(cameras[0].vendorId, 0x5A45);
  EXPECT_EQ(cameras[0].productId, 0x8C00);
  EXPECT_EQ(cameras[1].name, L"Second");
  EXPECT_EQ(cameras[1].vendorId, 0x5A46);
  EXPECT_EQ(cameras[1].productId, 0x5678);
}

TEST(CppHeader, WithoutCamerasTheListIsEmpty) {
  const PrivateSimulatorGuard simulator(R"({"cameras": []})");
  std::error_code code = zemuvc::Errc::kFail;
  EXPECT_TRUE(zemuvc::ListCameras(code).empty());
  EXPECT_FALSE(code);
}

TEST(CppHeader, WhatIsListedOpensByItsNames) {
  const PrivateSimulatorGuard simulator(kTwoCameras);
  for (const CameraInfo& info : zemuvc::ListCameras()) {
    {
      Camera camera = Camera::OpenByDisplayName(info.displayName);
      camera.SetRegister(0x123456, 0xABCD);
      EXPECT_EQ(camera.GetRegister(0x123456), 0xABCD);
    }
    const Camera camera = Camera::OpenByDevicePath(info.devicePath);
    EXPECT_EQ(camera.GetRegister(0x123456), 0xABCD) << "the same camera";
    EXPECT_EQ(camera.GetFirmwareVersion(), (zemuvc::Block<6>{1, 2, 3, 4, 5, 6}));
  }
}

TEST(CppHeader, ACameraWithoutTheVendorUnitIsNamedAsSuch) {
  const PrivateSimulatorGuard simulator(R"({"cameras": [{"vendorUnit": false}]})");
  std::error_code code;
  const Camera camera = Camera::OpenByDisplayName(zemuvc::ListCameras()[0].displayName, code);
  EXPECT_EQ(code, zemuvc::Errc::kNoVendorUnit);
  EXPECT_FALSE(camera);
}

TEST(CppHeader, TablesAndFormatsAreReadWhole) {
  const PrivateSimulatorGuard simulator(
      R"({"cameras": [{"tables": [{"id": 9, "data": [1, 2, 3]}]}]})");
  Camera camera = Camera::Open();
  zemuvc::TableStore store = camera.OpenTables();
  EXPECT_EQ(store.GetTableSize(9), 3);
  std::vector<std::uint8_t> table(3);
  EXPECT_EQ(store.ReadTable(9, table), 3U);
  EXPECT_EQ(table, (std::vector<std::uint8_t>{1, 2, 3}));
  EXPECT_EQ(store.WriteTable(9, std::vector<std::uint8_t>{7, 8}), 3U);
  EXPECT_EQ(camera.ReadTable(9, table), 3U);
  EXPECT_EQ(table, (std::vector<std::uint8_t>{7, 8, 0}));
  std::error_code code;
  EXPECT_EQ(camera.ReadTable(9, zemuvc::Buffer(table.data(), 2), code), 3U);
  EXPECT_EQ(code, zemuvc::Errc::kBufferTooSmall);
  camera.ReadTable(8, table, code);
  EXPECT_EQ(code, zemuvc::Errc::kRefused);
  const zemuvc::H264Formats formats = camera.GetH264Formats();
  EXPECT_EQ(formats.size(), 25U);
  EXPECT_TRUE(std::all_of(formats.begin(), formats.end(), [](const H264FrameInfo& format) {
    return format.wLength == 32 && format.wWidth > 0;
  }));
}

}  // namespace
