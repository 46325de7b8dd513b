// Where the ids of the default camera come from.
#include "device/settings.h"

#include "tests/support/device_test.h"

namespace {

using zem::ReadDefaultDeviceIds;
using zem::testing::DeviceTest;
using zem::testing::WideLines;

using SettingsTest = DeviceTest;

constexpr const wchar_t* kFile = L"C:\\Host\\zem_setting.ini";

TEST_F(SettingsTest, WithoutFileTheVendorsIdAndProduct8C00) {
  const zem::DeviceIds ids = ReadDefaultDeviceIds();
  EXPECT_EQ(ids.vendor, 0x5A45U);
  EXPECT_EQ(ids.product, 0x8C00U);
}

TEST_F(SettingsTest, FileBesideTheHostExecutableIsReadAnewForEachKey) {
  system().profileFiles[kFile] = L"[AP]\r\nDeviceVid=4660\r\nDevicePid=0x5678\r\n";
  const zem::DeviceIds ids = ReadDefaultDeviceIds();
  EXPECT_EQ(ids.vendor, 4660U);
  EXPECT_EQ(ids.product, 0x5678U);
  EXPECT_EQ(system().profileReads, (WideLines{kFile, kFile}));
  system().profileFiles[kFile] = L"[AP]\nDeviceVid=1\n";
  EXPECT_EQ(ReadDefaultDeviceIds().vendor, 1U);
  EXPECT_EQ(ReadDefaultDeviceIds().product, 0x8C00U);
}

TEST_F(SettingsTest, AnotherSectionDoesNotCount) {
  system().profileFiles[kFile] = L"[XX]\nDeviceVid=1\n[AP]\nDevicePid=2\n";
  EXPECT_EQ(ReadDefaultDeviceIds().vendor, 0x5A45U);
  EXPECT_EQ(ReadDefaultDeviceIds().product, 2U);
}

TEST_F(SettingsTest, PathLongerThanTheBufferIsCut) {
  system().hostFolder = std::wstring(300, L'a');
  ReadDefaultDeviceIds();
  ASSERT_EQ(system().profileReads.size(), 2U);
  EXPECT_EQ(system().profileReads[0], std::wstring(259, L'a'));
}

TEST_F(SettingsTest, PathThatJustFitsIsWhole) {
  system().hostFolder = std::wstring(243, L'a');
  ReadDefaultDeviceIds();
  ASSERT_EQ(system().profileReads.size(), 2U);
  EXPECT_EQ(system().profileReads[0], std::wstring(243, L'a') + L"\\zem_setting.ini");
}

}  // namespace
