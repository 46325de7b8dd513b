// Firmware version in both forms, check sum, device information.
#include <array>

#include "tests/support/device_test.h"

namespace {

using zem::testing::DeviceTest;
using zem::testing::Lines;

using IdentificationTest = DeviceTest;

TEST_F(IdentificationTest, VersionIsReplyBytes2To7) {
  vendor().Answer(2, {0x00, 0x99, 1, 2, 3, 4, 5, 6});
  std::array<unsigned char, 7> version = {9, 9, 9, 9, 9, 9, 9};
  EXPECT_EQ(ZEMAPI_GetFWVersion(handle(), version.data()), 0);
  EXPECT_EQ(version, (std::array<unsigned char, 7>{1, 2, 3, 4, 5, 6, 9}));
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 1: 0b 00 00 00 00 00 00 00", "get vendor 2 [8]"}));
}

TEST_F(IdentificationTest, DecoratedVersionIsTheWholeReply) {
  vendor().Answer(2, {0x00, 0x99, 1, 2, 3, 4, 5, 6});
  std::array<char, 9> version = {9, 9, 9, 9, 9, 9, 9, 9, 9};
  EXPECT_EQ(ZEMAPI_GetFWVersion(handle(), version.data()), 0);
  EXPECT_EQ(version, (std::array<char, 9>{0, static_cast<char>(0x99), 1, 2, 3, 4, 5, 6, 9}));
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 1: 0b 00 00 00 00 00 00 00", "get vendor 2 [8]"}));
}

TEST_F(IdentificationTest, CheckSumRightWrongAndRefused) {
  EXPECT_EQ(ZEMAPI_GetCheckSumResult(handle()), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 4: 06 00 00 00 00 00 00 00", "get vendor 5 [8]"}));
  vendor().Answer(5, {0x80, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(ZEMAPI_GetCheckSumResult(handle()), ZEM_E_DEVICE_REFUSED);
  vendor().Answer(5, {0x01, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(ZEMAPI_GetCheckSumResult(handle()), ZEM_E_REFUSED);
  vendor().Answer(5, {0x81, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(ZEMAPI_GetCheckSumResult(handle()), ZEM_E_REFUSED);
}

TEST_F(IdentificationTest, DeviceInfoIsReadWithoutACommand) {
  vendor().Answer(10, {0xFF, 1, 2, 3, 4, 5, 6, 7});
  std::array<unsigned char, 8> info = {};
  EXPECT_EQ(ZEMAPI_GetDeviceInfo(handle(), info.data()), 0) << "byte 0 is no status here";
  EXPECT_EQ(info, (std::array<unsigned char, 8>{0xFF, 1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(TakeWire(), Lines{"get vendor 10 [8]"});
}

TEST_F(IdentificationTest, DeviceInfoThatCannotBeRead) {
  std::array<unsigned char, 8> info = {7};
  EXPECT_EQ(ZEMAPI_GetDeviceInfo(nullptr, info.data()), ZEM_E_NO_DEVICE);
  handle();
  FailTransfer(1);
  EXPECT_EQ(ZEMAPI_GetDeviceInfo(handle(), info.data()), ZEM_E_NO_DEVICE);
  EXPECT_EQ(info[0], 7);
}

}  // namespace
