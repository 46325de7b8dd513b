// Firmware version in both forms and build date, check sum, device information, serial number of
// the sensor, version of the Skype unit.
#include <algorithm>
#include <array>
#include <string>

#include "tests/support/device_test.h"
#include "tests/support/stack_pattern.h"
#include "tests/support/telling_camera.h"

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

TEST_F(IdentificationTest, DeviceInfoOfAFailedReadIsNotHandedOut) {
  zem::testing::TellingCamera told;
  told.answer = {1, 2, 3, 4, 5, 6, 7, 8};
  told.readResult = E_FAIL;
  void* onTold = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDeviceBySourceFilter(&told, &onTold), 0);
  std::array<unsigned char, 8> info = {7, 7, 7, 7, 7, 7, 7, 7};
  EXPECT_EQ(ZEMAPI_GetDeviceInfo(onTold, info.data()), ZEM_E_NO_DEVICE);
  EXPECT_EQ(told.transfers, 1);
  EXPECT_EQ(info, (std::array<unsigned char, 8>{7, 7, 7, 7, 7, 7, 7, 7}));
  ZEMAPI_CloseDevice(&onTold);
}

TEST_F(IdentificationTest, ShortReadsAreFilledUpWithZeros) {
  handle();
  std::array<unsigned char, 8> info = {7, 7, 7, 7, 7, 7, 7, 7};
  vendor().Answer(10, {1, 2, 3});
  zem::testing::FillStackBelow();
  EXPECT_EQ(ZEMAPI_GetDeviceInfo(handle(), info.data()), 0);
  EXPECT_EQ(info, (std::array<unsigned char, 8>{1, 2, 3, 0, 0, 0, 0, 0}));
  AddUnit(zem::SkypeXu).Answer(1, {});
  unsigned char version = 0x5A;
  zem::testing::FillStackBelow();
  EXPECT_EQ(ZEMAPI_GetSkypeXUVersion(handle(), &version), 0);
  EXPECT_EQ(version, 0x12) << "a version of 0";
}

TEST_F(IdentificationTest, PositiveResultsAreASuccess) {
  handle();
  gate.AnswerEverything(7);
  vendor().Answer(2, {0x00, 0x99, 1, 2, 3, 4, 5, 6});
  std::array<unsigned char, 6> firmware = {};
  EXPECT_EQ(ZEMAPI_GetFWVersion(handle(), firmware.data()), 0);
  EXPECT_EQ(firmware, (std::array<unsigned char, 6>{1, 2, 3, 4, 5, 6}));
  vendor().Answer(2, {0, '2', '1', 'D', 'e', 'c', '1', '5'});
  std::array<char, 12> date = {};
  EXPECT_EQ(ZEMAPI_GetFWBuildDate(handle(), date.data()), 0);
  EXPECT_EQ(std::string(date.data()), "2021.Dec.15");
  vendor().Answer(10, {1, 2, 3, 4, 5, 6, 7, 8});
  std::array<unsigned char, 8> info = {};
  EXPECT_EQ(ZEMAPI_GetDeviceInfo(handle(), info.data()), 0);
  EXPECT_EQ(info, (std::array<unsigned char, 8>{1, 2, 3, 4, 5, 6, 7, 8}));
  std::array<unsigned char, 32> serial = {};
  vendor().Answer(11, {9});
  EXPECT_EQ(ZEMAPI_GetSensorSN(handle(), serial.data()), 0);
  EXPECT_EQ(serial[0], 9);
  AddUnit(zem::SkypeXu).Answer(1, {0x15});
  unsigned char version = 0;
  EXPECT_EQ(ZEMAPI_GetSkypeXUVersion(handle(), &version), 0);
  EXPECT_EQ(version, 0x15);
}

// Twelve bytes for a date and one that must stay.
using Date = std::array<char, 13>;
constexpr Date kNoDate = {'?', '?', '?', '?', '?', '?', '?', '?', '?', '?', '?', '?', '?'};

TEST_F(IdentificationTest, BuildDate) {
  vendor().Answer(2, {0, '2', '1', 'D', 'e', 'c', '1', '5'});
  Date date = kNoDate;
  EXPECT_EQ(ZEMAPI_GetFWBuildDate(handle(), date.data()), 0);
  EXPECT_EQ(std::string(date.data(), 13), std::string("2021.Dec.15\0?", 13));
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 1: 0c 00 00 00 00 00 00 00", "get vendor 2 [8]"}));
}

TEST_F(IdentificationTest, BuildDateThatCannotBeReadIsZerosBetweenTheFixedCharacters) {
  handle();
  FailTransfer(2);
  Date date = kNoDate;
  EXPECT_EQ(ZEMAPI_GetFWBuildDate(handle(), date.data()), 0);
  EXPECT_EQ(std::string(date.data(), 13), std::string("20\0\0.\0\0\0.\0\0\0?", 13));
}

TEST_F(IdentificationTest, BuildDateRefusedOrNotWritten) {
  Date date = kNoDate;
  EXPECT_EQ(ZEMAPI_GetFWBuildDate(nullptr, date.data()), ZEM_E_NO_DEVICE);
  vendor().Answer(2, {1, '2', '1', 'D', 'e', 'c', '1', '5'});
  EXPECT_EQ(ZEMAPI_GetFWBuildDate(handle(), date.data()), ZEM_E_DEVICE_REFUSED);
  TakeWire();
  FailTransfer(1);
  EXPECT_EQ(ZEMAPI_GetFWBuildDate(handle(), date.data()), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire().size(), 1U);
  EXPECT_EQ(date, kNoDate);
}

// Thirty-two bytes for a serial number and one that must stay.
using Serial = std::array<unsigned char, 33>;

constexpr const char* kPrepareSerial = "set vendor 4: 19 81 00 00 00 00 00 00";

TEST_F(IdentificationTest, SensorSerialIsPreparedAndRead) {
  zem::testing::ScriptedUnit::Bytes answer(32);
  for (std::size_t index = 0; index < answer.size(); ++index) {
    answer[index] = static_cast<std::uint8_t>(0xE0 + index);
  }
  vendor().Answer(11, answer);
  Serial serial = {};
  serial.back() = 0x5A;
  EXPECT_EQ(ZEMAPI_GetSensorSN(handle(), serial.data()), 0);
  EXPECT_TRUE(std::equal(answer.begin(), answer.end(), serial.begin()));
  EXPECT_EQ(serial.back(), 0x5A);
  EXPECT_EQ(TakeWire(), (Lines{kPrepareSerial, "get vendor 11 [32]"}));
  EXPECT_EQ(TakeDebuggerLines(), zem::testing::WideLines{zem::testing::SetLine(0, 8)});
}

TEST_F(IdentificationTest, SensorSerialIsReadWhateverBecameOfTheCommand) {
  Serial serial = {0x5A, 0x5A};
  EXPECT_EQ(ZEMAPI_GetSensorSN(nullptr, serial.data()), ZEM_E_NO_DEVICE);
  handle();
  FailTransfer(1);
  vendor().Answer(11, {7});
  EXPECT_EQ(ZEMAPI_GetSensorSN(handle(), serial.data()), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire(), (Lines{std::string(kPrepareSerial) + " failed", "get vendor 11 [32]"}));
  EXPECT_EQ(serial[0], 7);
  EXPECT_EQ(serial[1], 0x5A);
}

TEST_F(IdentificationTest, SensorSerialThatCannotBeReadIsNotReported) {
  handle();
  FailTransfer(2);
  Serial serial = {};
  serial.fill(0x5A);
  EXPECT_EQ(ZEMAPI_GetSensorSN(handle(), serial.data()), 0);
  EXPECT_EQ(serial[0], 0x5A);
  EXPECT_EQ(TakeWire(), (Lines{kPrepareSerial, "get vendor 11 [32] failed"}));
}

TEST_F(IdentificationTest, SkypeVersionHasAFloor) {
  auto& skype = AddUnit(zem::SkypeXu);
  const std::array<std::array<std::uint8_t, 2>, 6> cases = {
      {{0x00, 0x12}, {0x10, 0x12}, {0x13, 0x12}, {0x14, 0x14}, {0x15, 0x15}, {0xFF, 0xFF}}};
  for (const auto& [answered, reported] : cases) {
    SCOPED_TRACE(static_cast<int>(answered));
    skype.Answer(1, {answered});
    unsigned char version = 0x5A;
    EXPECT_EQ(ZEMAPI_GetSkypeXUVersion(handle(), &version), 0);
    EXPECT_EQ(version, reported);
    EXPECT_EQ(TakeWire(), Lines{"get skype 1 [1]"});
  }
}

TEST_F(IdentificationTest, SkypeVersionThatCannotBeRead) {
  unsigned char version = 0x5A;
  EXPECT_EQ(ZEMAPI_GetSkypeXUVersion(nullptr, &version), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_GetSkypeXUVersion(handle(), &version), ZEM_E_REFUSED) << "no such unit";
  AddUnit(zem::SkypeXu);
  FailTransfer(1);
  EXPECT_EQ(ZEMAPI_GetSkypeXUVersion(handle(), &version), ZEM_E_REFUSED);
  EXPECT_EQ(version, 0x5A);
}

}  // namespace
