// Every family of exports, with the bytes that reach the camera through the kernel. Units in their
// order: 2 is the processing unit, 3 the vendor's, then H.264, Skype, streams, encoding, stream
// probe, TIRELLA.
#include <array>
#include <cstring>
#include <memory>
#include <numeric>
#include <string>

#include "include/ZemUVCExtApi.h"
#include "tests/kernel/plugged_camera.h"
#include "tests/windows/support/opened_camera.h"

namespace {

using zem::testing::Lines;
using zem::testing::OpenedCamera;
using zem::testing::PluggedCamera;
using Bytes = std::vector<unsigned char>;

class Commands : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    plugged = std::make_unique<PluggedCamera>(R"({"cameras": [{"chip": "516x", "h264Unit": true,
        "skypeUnit": true, "orvaUnit": true, "encodingUnit": true, "streamProbeUnit": true,
        "tirellaUnit": true, "h264Formats": [{"index": 3, "width": 640, "height": 480}],
        "tables": [{"id": 7, "data": [1, 2, 3]}]}]})");
  }
  static void TearDownTestSuite() { plugged.reset(); }

  Commands() { plugged->TakeTransfers(); }

  static Lines Wire() { return plugged->TakeTransfers(); }

  OpenedCamera camera;

 private:
  static inline std::unique_ptr<PluggedCamera> plugged;
};

// NOLINTBEGIN(bugprone-suspicious-missing-comma): a long transfer takes two lines
TEST_F(Commands, Registers) {
  unsigned short word = 0;
  unsigned char byte = 0;
  EXPECT_EQ(ZEMAPI_SetRegister(camera, 0x123456, 0xABCD), 0);
  EXPECT_EQ(ZEMAPI_GetRegister(camera, 0x123456, &word), 0);
  EXPECT_EQ(word, 0xABCD);
  EXPECT_EQ(ZEMAPI_SetSensorRegister(camera, 0x3012, 0xEF), 0);
  EXPECT_EQ(ZEMAPI_GetSensorRegister(camera, 0x3012, &byte), 0);
  EXPECT_EQ(byte, 0xEF);
  EXPECT_EQ(ZEMAPI_SetSensorRegisterW(camera, 0x10, 0x1234), 0);
  EXPECT_EQ(ZEMAPI_GetSensorRegisterW(camera, 0x10, &word), 0);
  EXPECT_EQ(word, 0x1234);
  EXPECT_EQ(ZEMAPI_SetVCMRegister(camera, 0x20, 0x4321), 0);
  EXPECT_EQ(ZEMAPI_GetVCMRegister(camera, 0x20, &word), 0);
  EXPECT_EQ(word, 0x4321);
  EXPECT_EQ(ZEMAPI_SetLensPos(camera, 0x0102), 0);
  EXPECT_EQ(Wire(), (Lines{"set 3.1 0a 01 56 34 cd ab 12 00", "get 3.2 00 00 00 00 00 00 00 00",
                           "set 3.1 0a 00 56 34 00 00 12 00", "get 3.2 00 00 cd ab 00 00 00 00",
                           "set 3.1 0a 03 12 30 ef 00 00 00", "get 3.2 00 00 00 00 00 00 00 00",
                           "set 3.1 0a 02 12 30 00 00 00 00", "get 3.2 00 00 ef 00 00 00 00 00",
                           "set 3.1 0a 03 10 00 34 12 00 00", "get 3.2 00 00 00 00 00 00 00 00",
                           "set 3.1 0a 02 10 00 00 00 00 00", "get 3.2 00 00 34 12 00 00 00 00",
                           "set 3.1 0a 05 20 00 21 43 00 00", "get 3.2 00 00 00 00 00 00 00 00",
                           "set 3.1 0a 04 20 00 00 00 00 00", "get 3.2 00 00 21 43 00 00 00 00",
                           "set 3.1 00 00 00 00 02 01 00 00", "get 3.2 00 00 00 00 00 00 00 00"}));
  EXPECT_EQ(ZEMAPI_WriteCodecReg(camera, 0x30, 0x77), 0);
  EXPECT_EQ(ZEMAPI_ReadCodecReg(camera, 0x30, &byte), 0);
  EXPECT_EQ(byte, 0x77);
  EXPECT_EQ(Wire(), (Lines{"set 3.4 ff 00 14 00 00 00 00 00", "set 3.4 ff 01 00 30 77 00 00 00",
                           "set 3.4 ff 00 14 00 00 00 00 00", "set 3.4 ff 02 00 30 00 00 00 00",
                           "get 3.5 00 00 77 00 00 00 00 00"}));
}

TEST_F(Commands, RawAccess) {
  Bytes block = {0x0B, 0, 0, 0, 0, 0, 0, 0};
  ZemULong count = 0;
  EXPECT_EQ(ZEMAPI_ZemExtSet(camera, 1, block.data(), 8, &count), 0);
  EXPECT_EQ(count, 8U);
  EXPECT_EQ(ZEMAPI_ZemExtGet(camera, 2, block.data(), 8, &count), 0);
  EXPECT_EQ(count, 8U);
  EXPECT_EQ(block, (Bytes{0, 0, 1, 2, 3, 4, 5, 6}));
  const GUID tirella = ZEM_TIRELLA_XU;
  unsigned char led = 0xA5;
  EXPECT_EQ(ZEMAPI_UvcExtSet(camera, &tirella, 2, &led, 1, &count), 0);
  EXPECT_EQ(ZEMAPI_UvcExtGet(camera, &tirella, 2, &led, 1, &count), 0);
  EXPECT_EQ(Wire(), (Lines{"set 3.1 0b 00 00 00 00 00 00 00", "get 3.2 00 00 01 02 03 04 05 06",
                           "set 9.2 a5", "get 9.2 a5"}));
  Bytes longBlock(16);
  Bytes reply(16);
  std::iota(longBlock.begin(), longBlock.end(), static_cast<unsigned char>(1));
  EXPECT_EQ(ZEMAPI_IspCommand(camera, Bytes{0x0B, 1, 2, 3, 4, 5, 6, 7}.data(), reply.data()), 0);
  EXPECT_EQ(ZEMAPI_VcpCommand(camera, Bytes{0x06, 1, 2, 3, 4, 5, 6, 7}.data(), reply.data()), 0);
  EXPECT_EQ(ZEMAPI_IspCommandEx(camera, longBlock.data(), reply.data()), 0);
  EXPECT_EQ(ZEMAPI_VcpCommandEx(camera, longBlock.data(), reply.data()), 0);
  EXPECT_EQ(Wire(), (Lines{"set 3.1 0b 01 02 03 04 05 06 07", "get 3.2 00 00 01 02 03 04 05 06",
                           "set 3.4 06 01 02 03 04 05 06 07", "get 3.5 00 00 00 00 00 00 00 00",
                           "set 3.6 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10",
                           "get 3.7 00 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10",
                           "set 3.14 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10",
                           "get 3.15 00 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10"}));
}

TEST_F(Commands, Identification) {
  Bytes version(6);
  Bytes info(8);
  EXPECT_EQ(ZEMAPI_GetFWVersion(camera, version.data()), 0);
  EXPECT_EQ(version, (Bytes{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(ZEMAPI_GetCheckSumResult(camera), 0);
  EXPECT_EQ(ZEMAPI_GetDeviceInfo(camera, info.data()), 0);
  EXPECT_EQ(info, (Bytes{0x51, 0x60, 1, 0, 0x5A, 0x45, 0, 1}));
  EXPECT_EQ(Wire(), (Lines{"set 3.1 0b 00 00 00 00 00 00 00", "get 3.2 00 00 01 02 03 04 05 06",
                           "set 3.4 06 00 00 00 00 00 00 00", "get 3.5 00 00 00 00 00 00 00 00",
                           "get 3.10 51 60 01 00 5a 45 00 01"}));
  std::array<char, 12> date = {};
  EXPECT_EQ(ZEMAPI_GetFWBuildDate(camera, date.data()), 0);
  EXPECT_STREQ(date.data(), "2024.Mar.05");
  Bytes serial(32);
  EXPECT_EQ(ZEMAPI_GetSensorSN(camera, serial.data()), 0);
  EXPECT_EQ(serial[31], 0xBF);
  unsigned char skype = 0;
  EXPECT_EQ(ZEMAPI_GetSkypeXUVersion(camera, &skype), 0);
  EXPECT_EQ(skype, 0x12);
  EXPECT_EQ(Wire(), (Lines{"set 3.1 0c 00 00 00 00 00 00 00", "get 3.2 00 32 34 4d 61 72 30 35",
                           "set 3.4 19 81 00 00 00 00 00 00",
                           "get 3.11 a0 a1 a2 a3 a4 a5 a6 a7 a8 a9 aa ab ac ad ae af b0 b1 b2 b3 "
                           "b4 b5 b6 b7 b8 b9 ba bb bc bd be bf",
                           "get 5.1 13"}));
}

TEST_F(Commands, ImageTuning) {
  EXPECT_EQ(ZEMAPI_EnableAF(camera, 1), 0);
  EXPECT_EQ(ZEMAPI_EnableAE(camera, 1), 0);
  EXPECT_EQ(ZEMAPI_SetShadding(camera, 1), 0);
  EXPECT_EQ(ZEMAPI_SetImageEffect(camera, 1), 0);
  EXPECT_EQ(ZEMAPI_SetMjpgQuality(camera), 0);
  EXPECT_EQ(ZEMAPI_SetMaxQP(camera, 40), 0);
  EXPECT_EQ(ZEMAPI_SetMinQP(camera, 20), 0);
  EXPECT_EQ(ZEMAPI_SetVideoRecMode(camera, 2), 0);
  EXPECT_EQ(Wire(), (Lines{"set 3.1 ff 08 01 00 00 00 00 00", "get 3.2 00 00 00 00 00 00 00 00",
                           "set 3.1 ff 05 01 00 00 00 00 00", "get 3.2 00 00 00 00 00 00 00 00",
                           "set 3.1 ff 00 01 00 00 00 00 00", "get 3.2 00 00 00 00 00 00 00 00",
                           "set 3.1 ff 0b 01 00 00 00 00 00", "get 3.2 00 00 00 00 00 00 00 00",
                           "set 3.1 ff 13 00 00 00 00 00 00", "get 3.2 00 00 00 00 00 00 00 00",
                           "set 3.4 07 28 00 00 00 00 00 00", "get 3.5 00 00 00 00 00 00 00 00",
                           "set 3.4 08 14 00 00 00 00 00 00", "get 3.5 00 00 00 00 00 00 00 00",
                           "set 3.1 10 02 00 00 00 00 00 00"}));
  std::array<unsigned short, 3> gains = {};
  EXPECT_EQ(ZEMAPI_SetAWBGain(camera, 0x0102, 0x0304, 0x0506), 0);
  EXPECT_EQ(ZEMAPI_GetAWBGain(camera, &gains[0], &gains[1], &gains[2]), 0);
  EXPECT_EQ(gains, (std::array<unsigned short, 3>{0x0102, 0x0304, 0x0506}));
  Bytes settings = {6, 5, 4, 3, 2, 1};
  EXPECT_EQ(ZEMAPI_SetMiscSetting(camera, settings.data()), 0);
  EXPECT_EQ(ZEMAPI_GetMiscSetting(camera, settings.data()), 0);
  EXPECT_EQ(settings, (Bytes{6, 5, 4, 3, 2, 1}));
  EXPECT_EQ(Wire(), (Lines{"set 3.1 11 02 02 01 04 03 06 05", "get 3.2 00 00 00 00 00 00 00 00",
                           "set 3.1 11 03 00 00 00 00 00 00", "get 3.2 00 00 02 01 04 03 06 05",
                           "set 3.1 ff 11 06 05 04 03 02 01", "get 3.2 00 00 00 00 00 00 00 00",
                           "set 3.1 ff 12 00 00 00 00 00 00", "get 3.2 00 00 06 05 04 03 02 01"}));
}

TEST_F(Commands, ManualGainAndStandardControls) {
  ZemLong value = 0;
  ZemLong flags = 0;
  EXPECT_EQ(ZEMAPI_EnableManualGainCtrl(camera, 1), 0);
  EXPECT_EQ(ZEMAPI_SetVideoProcAmp(camera, 0, 200, 2), 0);
  EXPECT_EQ(ZEMAPI_SetCameraControl(camera, 4, -7, 2), 0);
  EXPECT_EQ(ZEMAPI_SetCameraControl(camera, 4, 0, 1), 0);
  EXPECT_EQ(ZEMAPI_GetVideoProcAmp(camera, 0, &value, &flags), 0);
  EXPECT_EQ(value, 200);
  EXPECT_EQ(Wire(), (Lines{"get 2.10 a0 0f", "get 2.11 01", "set 2.11 00", "set 2.10 a0 0f",
                           "set 3.1 11 00 00 00 00 00 00 00", "get 3.2 00 00 00 00 00 00 00 00",
                           "set 2.2 c8 00", "get 1.2 08", "set 1.2 01", "get 1.4 39 01 00 00",
                           "set 1.4 4e 00 00 00", "set 1.2 08", "get 2.2 c8 00"}));
}

TEST_F(Commands, BulkData) {
  Bytes data(40);
  std::iota(data.begin(), data.end(), static_cast<unsigned char>(1));
  EXPECT_EQ(ZEMAPI_SendData(camera, data.data(), 40, nullptr, 0, 2, 0), 0);
  EXPECT_EQ(Wire(), (Lines{"set 3.4 01 00 02 00 28 00 00 00",
                           "set 3.3 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10 11 12 13 14 15 "
                           "16 17 18 19 1a 1b 1c 1d 1e 1f 20",
                           "set 3.3 21 22 23 24 25 26 27 28 00 00 00 00 00 00 00 00 00 00 00 00 00 "
                           "00 00 00 00 00 00 00 00 00 00 00"}));
  Bytes read(64);
  std::uint32_t length = 0;
  EXPECT_EQ(ZEMAPI_ReadFWData(camera, read.data(), 64, &length, nullptr, 0), 0);
  EXPECT_EQ(length, 40U);
  EXPECT_EQ(Wire(), (Lines{"get 3.3 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
                           "00 00 00 00 00 00 00 00 00 00 00",
                           "set 3.4 01 02 00 00 00 00 00 00", "get 3.5 00 00 28 00 00 00 00 00",
                           "get 3.3 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10 11 12 13 14 15 "
                           "16 17 18 19 1a 1b 1c 1d 1e 1f 20",
                           "get 3.3 21 22 23 24 25 26 27 28 00 00 00 00 00 00 00 00 00 00 00 00 00 "
                           "00 00 00 00 00 00 00 00 00 00 00"}));
}

TEST_F(Commands, Memory) {
  Bytes data = {1, 2, 3, 4};
  Bytes read(4);
  std::uint32_t count = 0;
  EXPECT_EQ(ZEMAPI_WriteNVMEM(camera, 0x1000, data.data(), 4, &count), 0);
  EXPECT_EQ(ZEMAPI_ReadNVMEM(camera, 0x1000, read.data(), 4, &count), 0);
  EXPECT_EQ(read, data);
  EXPECT_EQ(Wire(), (Lines{"set 3.16 00 10 04 01 02 03 04 00 00 00 00 00 00 00 00 00 00 00 00 00 "
                           "00 00 00 00 00 00 00 00 00 00 00 00",
                           "set 3.16 00 10 84 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
                           "00 00 00 00 00 00 00 00 00 00 00 00",
                           "get 3.16 00 10 84 01 02 03 04 00 00 00 00 00 00 00 00 00 00 00 00 00 "
                           "00 00 00 00 00 00 00 00 00 00 00 00"}));
  EXPECT_EQ(ZEMAPI_TIRELLA_LedCtrl(camera, 0x5A), 0);
  data.resize(256, 0xEE);
  read.resize(256);
  EXPECT_EQ(ZEMAPI_TIRELLA_WriteNVMEM(camera, data.data(), 256, &count), 0);
  Lines wire = Wire();
  ASSERT_EQ(wire.size(), 10U);
  EXPECT_EQ(wire[0], "set 9.2 5a");
  EXPECT_EQ(wire[1],
            "set 9.4 00 00 1d 01 02 03 04 ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee "
            "ee ee ee ee ee ee");
  EXPECT_EQ(wire[9],
            "set 9.4 e8 00 18 ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee "
            "ee 00 00 00 00 00");
  EXPECT_EQ(ZEMAPI_TIRELLA_ReadNVMEM(camera, read.data(), 256, &count), 0);
  EXPECT_EQ(read, data);
  wire = Wire();
  ASSERT_EQ(wire.size(), 18U);
  EXPECT_EQ(wire[16],
            "set 9.4 e8 00 98 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
            "00 00 00 00 00 00");
  EXPECT_EQ(wire[17],
            "get 9.4 e8 00 98 ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee ee "
            "ee 00 00 00 00 00");
}

TEST_F(Commands, Tables) {
  std::uint8_t* table = nullptr;
  Bytes read(3);
  std::uint32_t count = 0;
  ASSERT_EQ(ZEMAPI_OpenTableHandle(camera, &table), 0);
  EXPECT_EQ(ZEMAPI_ReadTableEx(camera, table, 7, read.data(), 3, &count), 0);
  EXPECT_EQ(read, (Bytes{1, 2, 3}));
  EXPECT_EQ(Wire(), (Lines{"set 3.16 00 00 9d 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
                           "00 00 00 00 00 00 00 00 00 00 00 00",
                           "get 3.16 00 00 9d ee 00 0b 00 00 07 07 00 01 02 03 ff ff ff ff ff ff "
                           "ff ff ff ff ff ff ff ff ff ff ff ff",
                           "set 3.16 1d 00 83 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
                           "00 00 00 00 00 00 00 00 00 00 00 00",
                           "get 3.16 1d 00 83 ff ff ff 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
                           "00 00 00 00 00 00 00 00 00 00 00 00",
                           "set 3.16 00 00 8b 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
                           "00 00 00 00 00 00 00 00 00 00 00 00",
                           "get 3.16 00 00 8b ee 00 0b 00 00 07 07 00 01 02 03 00 00 00 00 00 00 "
                           "00 00 00 00 00 00 00 00 00 00 00 00"}));
  EXPECT_EQ(ZEMAPI_WriteTableEx(camera, table, 7, Bytes{4, 5, 6}.data(), 3, &count), 0);
  EXPECT_EQ(Wire(), (Lines{"set 3.16 04 00 07 00 07 07 00 04 05 06 00 00 00 00 00 00 00 00 00 00 "
                           "00 00 00 00 00 00 00 00 00 00 00 00"}));
  EXPECT_EQ(ZEMAPI_CloseTableHandle(camera, &table), 0);
}

TEST_F(Commands, WithoutAHandle) {
  std::uint8_t value = 0;
  EXPECT_EQ(ZEMUVCEXT_SetRegister(0x1234, 0xAB), 0);
  EXPECT_EQ(ZEMUVCEXT_GetRegister(0x1234, &value), 0);
  EXPECT_EQ(value, 0xAB);
  EXPECT_EQ(ZEMUVCEXT_SetFps(30), 0);
  Bytes memory(16, 0x5A);
  EXPECT_EQ(ZEMUVCEXT_IspCmdWriteMem(memory.data(), 16), 0);
  EXPECT_EQ(Wire(), (Lines{"set 3.1 0a 01 34 12 ab 00 00 00", "get 3.2 00 00 00 00 00 00 00 00",
                           "set 3.1 0a 00 34 12 00 00 00 00", "get 3.2 00 00 ab 00 00 00 00 00",
                           "set 3.1 02 1e 00 00 00 00 00 00", "get 3.2 00 00 00 00 00 00 00 00",
                           "set 3.9 5a 5a 5a 5a 5a 5a 5a 5a 5a 5a 5a 5a 5a 5a 5a 5a"}));
}

TEST_F(Commands, H264) {
  void* list = nullptr;
  EXPECT_EQ(ZEMAPI_GetH264FrameList(camera, &list), 38);
  ZEMAPI_ReleaseH264FrameList(list);
  EXPECT_EQ(Wire(), (Lines{"set 3.4 0a 01 00 00 00 00 00 00", "get 3.5 00 00 00 00 00 00 00 00",
                           "get 3.11 1a 00 01 00 16 00 01 03 80 02 e0 01 00 00 00 00 c4 09 00 00 "
                           "64 00 00 00 1e 05 00 00 00 00 00 00"}));
  EXPECT_EQ(ZEMAPI_SetFps(camera, 30), 0);
  EXPECT_EQ(ZEMAPI_SetBitRate(camera, 2500), 0);
  EXPECT_EQ(ZEMAPI_ForceIFrame(camera), 0);
  EXPECT_EQ(Wire(), (Lines{"set 3.1 02 1e 00 00 00 00 00 00", "get 3.2 00 00 00 00 00 00 00 00",
                           "set 3.1 08 ff c4 09 00 00 00 00", "get 3.2 00 00 00 00 00 00 00 00",
                           "set 3.1 04 00 00 00 00 00 00 00", "get 3.2 00 00 00 00 00 00 00 00"}));
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(camera, 3), 0);
  EXPECT_EQ(ZEMAPI_SetH264Mode(camera, 1280, 720), 1);
  EXPECT_EQ(Wire(), (Lines{"get 5.1 13", "set 5.15 02", "set 5.1 03", "get 5.1 13", "set 5.1 0a",
                           "set 5.15 02"}));
}

TEST_F(Commands, EncodingAndStreamProbe) {
  void* wren = nullptr;
  ASSERT_EQ(WREN_OpenDevice(0, &wren), 0);
  Bytes rate = {0x40, 0x42, 0x0F, 0x00};
  EXPECT_EQ(WREN_EuSet(wren, 2, rate.data(), 4), 0);
  EXPECT_EQ(WREN_EuGet(wren, 2, rate.data(), 4), 0);
  EXPECT_EQ(Wire(), (Lines{"set 7.2 40 42 0f 00", "get 7.2 40 42 0f 00"}));
  Bytes block(51);
  std::iota(block.begin(), block.end(), static_cast<unsigned char>(1));
  EXPECT_EQ(WREN_ProbeSet(wren, block.data()), 0);
  EXPECT_EQ(WREN_CommitSet(wren, block.data()), 0);
  EXPECT_EQ(WREN_ProbeGet(wren, block.data()), 0);
  EXPECT_EQ(
      Wire(),
      (Lines{"set 8.23 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10 11 12 13 14 15 16 17 18 19 "
             "1a 1b 1c 1d 1e 1f 20 21 22 23 24 25 26 27 28 29 2a 2b 2c 2d 2e 2f 30 31 32 33",
             "set 8.24 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10 11 12 13 14 15 16 17 18 19 "
             "1a 1b 1c 1d 1e 1f 20 21 22 23 24 25 26 27 28 29 2a 2b 2c 2d 2e 2f 30 31 32 33",
             "get 8.23 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10 11 12 13 14 15 16 17 18 19 "
             "1a 1b 1c 1d 1e 1f 20 21 22 23 24 25 26 27 28 29 2a 2b 2c 2d 2e 2f 30 31 32 33"}));
  WREN_CloseDevice(&wren);
}

TEST_F(Commands, StreamsAndMulticast) {
  unsigned char byte = 0;
  unsigned short day = 0;
  EXPECT_EQ(ORVAAPI_GetVersion(camera, &byte), 0);
  EXPECT_EQ(ORVAAPI_FirmwareBuildDay(camera, &day), 0);
  EXPECT_EQ(day, 0x0C1F);
  EXPECT_EQ(ORVAAPI_SetStreamID(camera, 2), 0);
  OrvaStreamFormat format = {3, 0x1234, 0x5678, 0x9ABCDEF0, 0x13579BDF};
  EXPECT_EQ(ORVAAPI_StreamFormatProbeCommit(camera, &format, 0), 0);
  EXPECT_EQ(ORVAAPI_ToggleLayerControl(camera, 1), 0);
  EXPECT_EQ(Wire(), (Lines{"get 6.1 10", "get 6.3 1f 0c", "set 6.4 02",
                           "set 6.8 03 34 12 78 56 f0 de bc 9a df 9b 57 13", "set 6.27 01"}));
  EXPECT_EQ(ZEMAPI_MulticastStreamID(camera, 1), 0);
  EXPECT_EQ(ZEMAPI_MulticasToggleLayer(camera, 1), 0);
  EXPECT_EQ(ZEMAPI_MulticastCommit(camera, 1, 1280, 720, 0x1F, 0x7FF), 0);
  EXPECT_EQ(Wire(), (Lines{"set 3.4 23 01 00 00 00 00 00 00", "set 3.4 24 01 00 00 00 00 00 00",
                           "set 3.4 25 01 00 05 d0 02 ff ff", "get 3.5 00 00 00 00 00 00 00 00"}));
}

// Pictures are in the test of the example that takes one.
TEST(Media, SoundOfAFile) {
  zem::testing::WriteText("/tmp/samples.raw", "abcd");
  EXPECT_EQ(PackWavFile(L"/tmp/samples.raw", L"/tmp/samples.wav", 1, 16000, 16), 1);
  EXPECT_EQ(zem::testing::ReadText("/tmp/samples.wav"),
            std::string("RIFF\x28\0\0\0WAVEfmt \x10\0\0\0\1\0\1\0"
                        "\x80\x3e\0\0\0\x7d\0\0\2\0\x10\0data\4\0\0\0abcd",
                        48));
}

// NOLINTEND(bugprone-suspicious-missing-comma)

}  // namespace
