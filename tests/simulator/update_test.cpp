// The library's transfers and updates against the simulated camera: what arrives in its flash.
#include <gtest/gtest.h>

#include <memory>
#include <numeric>
#include <vector>

#include "include/ZemUVCExtApi.h"
#include "simulator/firmware_image.h"
#include "simulator/options.h"
#include "tests/support/device_test.h"

namespace {

using zem::simulator::CameraOptions;
using zem::simulator::FirmwareVersion;
using zem::simulator::MakeFirmwareImage;
using zem::simulator::VendorSettings;
using zem::simulator::VendorUnit;
using zem::testing::DeviceTest;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kFirmware = 0x00000;
constexpr std::uint32_t kDataArea = 0xC0000;
constexpr std::uint32_t kCalibration = 0xE0000;

void Ignore(std::uint32_t /*value*/, std::uint64_t /*user*/) {}

Bytes Pattern(std::size_t size) {
  Bytes bytes(size);
  for (std::size_t index = 0; index < size; ++index) {
    bytes[index] = static_cast<std::uint8_t>(index * 31 + index / 251);
  }
  return bytes;
}

class SimulatedUpdateTest : public DeviceTest {
 protected:
  // The camera that the next handle() is for.
  void Attach(const CameraOptions& options) {
    ListNothing();
    simulated = MakeCamera(options);
    List(zem::testing::DisplayName(0x5A45, 0x8C00), simulated);
  }

  Bytes ReadFlash(std::uint32_t address, std::uint32_t size) {
    Bytes bytes(size);
    std::uint32_t read = 0;
    EXPECT_EQ(ZEMAPI_ReadPartialFlashData(handle(), address, size, bytes.data(), &read, nullptr, 0),
              ZEM_OK);
    EXPECT_EQ(read, size);
    return bytes;
  }

  static CameraOptions Chip516x() {
    CameraOptions options;
    options.vendor.chip = VendorSettings::Chip::k516x;
    return options;
  }

  std::shared_ptr<zem::simulator::Camera> simulated;
  const Bytes image = MakeFirmwareImage({2, 0, 0, 0, 0, 1}, Pattern(5000));
};

TEST_F(SimulatedUpdateTest, FirmwareOf516xAtBothSpeeds) {
  for (const bool highSpeed : {true, false}) {
    CameraOptions options = Chip516x();
    options.vendor.data = {.highSpeed = highSpeed, .burnPolls = 3};
    Attach(options);
    void* camera = nullptr;
    ASSERT_EQ(ZEMAPI_OpenDevice(0, &camera), ZEM_OK);
    EXPECT_EQ(ZEMAPI_UpdateFW_516x(camera, image.data(), 5020, Ignore, 0, 7), ZEM_OK);
    EXPECT_EQ(ZEMAPI_GetCheckSumResult(camera), ZEM_OK);
    Bytes flash(6000);
    std::uint32_t read = 0;
    EXPECT_EQ(ZEMAPI_ReadPartialFlashData(camera, kFirmware, 6000, flash.data(), &read, nullptr, 0),
              ZEM_OK);
    Bytes expected = image;
    expected.resize(highSpeed ? 5120 : 5024, 0x00);
    expected.resize(6000, 0xFF);
    EXPECT_EQ(flash, expected);
    ZEMAPI_CloseDevice(&camera);
  }
}

TEST_F(SimulatedUpdateTest, FirmwareOf517xLiftsTheProtection) {
  Attach({});
  EXPECT_EQ(ZEMAPI_UpdateFW_516x(handle(), image.data(), 5020, nullptr, 0, 0), ZEM_E_DEVICE_REFUSED)
      << "the procedure of the other series leaves it on";
  Bytes factory = MakeFirmwareImage({1, 2, 3, 4, 5, 6}, {});
  factory.resize(32, 0xFF);
  EXPECT_EQ(ReadFlash(kFirmware, 32), factory);
  EXPECT_EQ(ZEMAPI_UpdateFW_517x(handle(), image.data(), 5020, Ignore, 0), ZEM_OK);
  EXPECT_EQ(ReadFlash(kFirmware, 5020), image);
  EXPECT_EQ(ZEMAPI_GetCheckSumResult(handle()), ZEM_OK);
}

TEST_F(SimulatedUpdateTest, A517xThatIsStillBusyHasFailedAndBurnsOn) {
  CameraOptions options;
  options.vendor.data.burnPolls = 1;
  Attach(options);
  EXPECT_EQ(ZEMAPI_UpdateFW_517x(handle(), image.data(), 5020, Ignore, 0), ZEM_E_DEVICE_REFUSED);
  simulated->Settle();
  EXPECT_EQ(ReadFlash(kFirmware, 5020), image);
}

TEST_F(SimulatedUpdateTest, BurnErrorsReachTheHost) {
  CameraOptions options = Chip516x();
  options.vendor.data = {.burnPolls = 2, .burnError = true};
  Attach(options);
  EXPECT_EQ(ZEMAPI_UpdateCaliData(handle(), image.data(), 5020, nullptr, 0), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(system().debuggerLines.back(), L"[ERR] Calibration data burning error.\r\n");
  EXPECT_EQ(ReadFlash(kCalibration, 4), (Bytes{0xFF, 0xFF, 0xFF, 0xFF}));
}

TEST_F(SimulatedUpdateTest, ABusyCameraIsLeftAlone) {
  CameraOptions options = Chip516x();
  options.vendor.data.busy = true;
  Attach(options);
  EXPECT_EQ(ZEMAPI_UpdateCaliData(handle(), image.data(), 5020, nullptr, 0), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(ZEMAPI_UpdateFlash(handle(), image.data(), 5020, nullptr, 0, 2, 0),
            ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(ZEMAPI_UpdateFW_516x(handle(), image.data(), 5020, nullptr, 0, 0),
            ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(ZEMAPI_UpdateFW_517x(handle(), image.data(), 5020, Ignore, 0), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(system().clockMilliseconds, 0U) << "nothing was waited for";
}

TEST_F(SimulatedUpdateTest, AreasOfTheFlash) {
  Attach(Chip516x());
  EXPECT_EQ(ZEMAPI_UpdateFlash(handle(), image.data(), 5020, nullptr, 0, 2, 9), ZEM_OK);
  EXPECT_EQ(ZEMAPI_UpdateCaliData(handle(), image.data() + 20, 4096, nullptr, 0), ZEM_OK);
  EXPECT_EQ(ReadFlash(kDataArea, 5020), image);
  EXPECT_EQ(ReadFlash(kCalibration, 4096), Bytes(image.begin() + 20, image.begin() + 4116));
  EXPECT_EQ(ZEMAPI_UpdateFlash(handle(), image.data(), 5020, nullptr, 0, 9, 0),
            ZEM_E_DEVICE_REFUSED)
      << "no such area";
}

// The announcement holds 16 bits of the length; the camera knows.
TEST_F(SimulatedUpdateTest, FlashDataOfMoreThan16Bits) {
  Attach(Chip516x());
  const Bytes data = Pattern(70000);
  EXPECT_EQ(ZEMAPI_UpdateFlash(handle(), data.data(), 70000, nullptr, 0, 2, 0), ZEM_OK);
  EXPECT_EQ(ReadFlash(kDataArea, 65535), Bytes(data.begin(), data.begin() + 65535));
  Bytes far(70000);
  std::uint32_t read = 0;
  EXPECT_EQ(ZEMAPI_ReadPartialFlashData(handle(), kDataArea, 70000, far.data(), &read, nullptr, 0),
            ZEM_OK);
  Bytes expected(data.begin(), data.begin() + 4608);  // the chunks of the 4464 announced bytes
  expected.resize(70000, 0xFF);
  EXPECT_EQ(far, expected) << "a read-back of more than it announced";
}

TEST_F(SimulatedUpdateTest, DataGoesThereAndBack) {
  for (const bool highSpeed : {true, false}) {
    CameraOptions options = Chip516x();
    options.vendor.data.highSpeed = highSpeed;
    Attach(options);
    void* camera = nullptr;
    ASSERT_EQ(ZEMAPI_OpenDevice(0, &camera), ZEM_OK);
    for (const std::uint32_t length : {0U, 1U, 32U, 33U, 5000U}) {
      EXPECT_EQ(ZEMAPI_SendData(camera, image.data(), length, nullptr, 0, 0, 0), ZEM_OK);
      Bytes back(5000);
      std::uint32_t read = 12345;
      EXPECT_EQ(ZEMAPI_ReadFWData(camera, back.data(), 5000, &read, nullptr, 0), ZEM_OK);
      EXPECT_EQ(read, length);
      EXPECT_TRUE(std::equal(back.begin(), back.begin() + length, image.begin())) << length;
    }
    ZEMAPI_CloseDevice(&camera);
  }
}

TEST_F(SimulatedUpdateTest, WithoutAHandleIn64ByteChunks) {
  CameraOptions options = Chip516x();
  options.vendor.data = {.dataLength = 64, .burnPolls = 2};
  Attach(options);
  Bytes padded = image;
  padded.resize(6000);
  EXPECT_EQ(ZEMUVCEXT_UpdateFW(padded.data(), 5020), ZEM_OK);
  EXPECT_EQ(ReadFlash(kFirmware, 5020), image);
  Bytes back(6000);
  std::uint32_t read = 0;
  EXPECT_EQ(ZEMUVCEXT_ReadFWData(back.data(), 6000, &read, nullptr, 0), ZEM_OK);
  EXPECT_EQ(read, 5056U) << "the length was not announced: whole chunks of 64";
  EXPECT_TRUE(std::equal(image.begin(), image.end(), back.begin()));
}

TEST_F(SimulatedUpdateTest, VisionFirmwareGoesToItsArea) {
  Attach(Chip516x());
  Bytes padded = image;
  padded.resize(6000);
  EXPECT_EQ(ZEMUVCEXT_UpdateFW_Vision(padded.data(), 5020, 1, nullptr, 0), ZEM_OK);
  EXPECT_EQ(ReadFlash(0x80000, 5020), image);
}

TEST_F(SimulatedUpdateTest, ProcessorMemoryGoesThereAndBack) {
  Attach(Chip516x());
  const Bytes data = Pattern(40);
  EXPECT_EQ(ZEMUVCEXT_IspCmdWriteMem(data.data(), 40), ZEM_OK);
  std::uint8_t version[6] = {};
  EXPECT_EQ(ZEMUVCEXT_GetFWVersion(version), ZEM_OK);
  Bytes back(40);
  EXPECT_EQ(ZEMUVCEXT_IspCmdReadMem(back.data(), 40), ZEM_OK);
  EXPECT_EQ(back, data);
}

// Faults of single transfers: announce, status, probe, chunks 4 to 13, order, polls.
TEST_F(SimulatedUpdateTest, ALostChunkMakesTheBurnFail) {
  CameraOptions options = Chip516x();
  options.faults = {*zem::simulator::ParseFault("drop@6")};
  Attach(options);
  EXPECT_EQ(ZEMAPI_UpdateFW_516x(handle(), image.data(), 5020, nullptr, 0, 0),
            ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(ReadFlash(kFirmware, 2), (Bytes{'Z', 'E'})) << "nothing was erased";
}

TEST_F(SimulatedUpdateTest, AGarbledChunkIsFoundByTheCheckSum) {
  CameraOptions options = Chip516x();
  options.faults = {*zem::simulator::ParseFault("garbage@6")};
  Attach(options);
  EXPECT_EQ(ZEMAPI_UpdateFW_516x(handle(), image.data(), 5020, nullptr, 0, 0), ZEM_OK);
  EXPECT_EQ(ZEMAPI_GetCheckSumResult(handle()), ZEM_E_DEVICE_REFUSED);
  EXPECT_NE(ReadFlash(kFirmware, 5020), image);
}

TEST_F(SimulatedUpdateTest, AFailedChunkDoesNotStopTheCalibration) {
  CameraOptions options = Chip516x();
  options.faults = {*zem::simulator::ParseFault("fail@6")};
  Attach(options);
  EXPECT_EQ(ZEMAPI_UpdateCaliData(handle(), image.data(), 5020, nullptr, 0), ZEM_OK);
  Bytes expected(image.begin(), image.begin() + 1024);
  expected.resize(1100, 0xFF);
  EXPECT_EQ(ReadFlash(kCalibration, 1100), expected);
}

}  // namespace
