// Each function of ZemUVC.hpp makes one call, of the right export with the right arguments, brings
// what that brings, and tells a failure as an exception or as an error code.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "device/extension_units.h"
#include "include/ZemUVC.hpp"
#include "tests/header/fake_exports.h"

namespace {

using zem::testing::fake;
using zem::testing::kWrappedExports;
using zemuvc::Block;
using zemuvc::Camera;
using zemuvc::Errc;
using zemuvc::Error;
using zemuvc::RomBoot;

// What an export that works returns, and one that fails.
struct Results {
  ZemResult success = ZEM_OK;
  ZemResult failure = ZEM_E_DEVICE_REFUSED;
  Errc failureMeans = Errc::kDeviceRefused;
};
constexpr Results kZeroFails = {1, 0, Errc::kFail};

std::set<std::string> called;

// "ZEMAPI_GetFWVersion" of "?ZEMAPI_GetFWVersion@@YAJPEAXPEAD@Z(camera, out)".
std::string FunctionOf(const std::string& call) {
  const std::string symbol = call.substr(0, call.find('('));
  return symbol[0] == '?' ? symbol.substr(1, symbol.find("@@") - 1) : symbol;
}

void ExpectOneCall(const std::string& line) {
  EXPECT_EQ(fake.calls, std::vector<std::string>{line});
  if (!fake.calls.empty()) {
    called.insert(line.substr(0, line.find('(')));
  }
  fake.calls.clear();
}

// `call` takes an error code or none.
template <class Call>
void Check(const std::string& line, const Call& call, const Results& results = {}) {
  SCOPED_TRACE(line);
  fake.calls.clear();
  fake.result = results.success;
  EXPECT_NO_THROW(call());
  ExpectOneCall(line);

  std::error_code code = Errc::kFail;
  call(code);
  EXPECT_FALSE(code) << code.message();
  ExpectOneCall(line);

  fake.result = results.failure;
  call(code);
  EXPECT_EQ(code, results.failureMeans) << code.message();
  ExpectOneCall(line);

  try {
    call();
    ADD_FAILURE() << "no exception";
  } catch (const Error& error) {
    EXPECT_EQ(error.function(), FunctionOf(line));
    EXPECT_EQ(error.code(), results.failureMeans);
  }
  ExpectOneCall(line);
  fake.result = ZEM_OK;
}

// The same, and what it brings.
template <class Value, class Call>
void CheckValue(const std::string& line, const Value& value, const Call& call,
                const Results& results = {}) {
  SCOPED_TRACE(line);
  fake.result = results.success;
  EXPECT_TRUE(call() == value);
  Check(line, call, results);
}

class WrappersTest : public ::testing::Test {
 protected:
  WrappersTest() {
    fake = {};
    fake.names[fake.opened()] = "opened";
    fake.names[data.data()] = "data";
    fake.names[buffer.data()] = "buffer";
    camera = Camera::Open();
    fake.calls.clear();
  }
  ~WrappersTest() override {
    camera.Close();
    fake = {};
  }

  void Opening();
  void RawAccess();
  void Registers();
  void Tuning();
  void StandardControls();
  void BulkData();
  void Updates();
  void Memory();
  void Tables();
  void IntoRomBoot();
  void H264();
  void Streams();
  void Microphones();
  void EncodingUnits();
  void RomBootSessions();
  void RomBootFiles();
  void DefaultCamera();
  void DefaultCameraData();
  void FramesAndSound();

  const std::array<std::uint8_t, 100> data = {0x11, 0x22, 0x33};
  std::array<std::uint8_t, 64> buffer = {};
  Camera camera;
};

void WrappersTest::Opening() {
  // What is opened is closed by the destructor: the calls are looked at before.
  std::vector<Camera> kept;
  const auto keep = [&](Camera&& opened) {
    EXPECT_EQ(static_cast<bool>(opened), fake.result == 0);
    kept.push_back(std::move(opened));
  };
  Check("ZEMAPI_OpenDevice(3, out)", [&](auto&... code) { keep(Camera::Open(3, code...)); });
  Check("ZEMAPI_OpenDeviceEx(2, out, 23109, 35840)",
        [&](auto&... code) { keep(Camera::OpenByIds(0x5A45, 0x8C00, 2, code...)); });
  Check("ZEMAPI_OpenZemDevice(out)", [&](auto&... code) { keep(Camera::OpenAny(code...)); });
  Check("ZEMAPI_OpenDeviceByPath(\"name\", out)",
        [&](auto&... code) { keep(Camera::OpenByDisplayName(L"name", code...)); });
  Check("ZEMAPI_OpenDeviceByDevPath(\"path\", out)",
        [&](auto&... code) { keep(Camera::OpenByDevicePath(L"path", code...)); });
  Check("ZEMAPI_OpenDeviceBySourceFilter(null, out)",
        [&](auto&... code) { keep(Camera::OpenBySourceFilter(nullptr, code...)); });
  fake.calls.clear();
  kept.clear();
  EXPECT_EQ(fake.calls, std::vector<std::string>(12, "ZEMAPI_CloseDevice(&opened)"));
  called.insert("ZEMAPI_CloseDevice");
}

void WrappersTest::RawAccess() {
  CheckValue("ZEMAPI_UvcExtSet(opened, {A29E7641}, 9, data, 100, out)", 1U,
             [&](auto&... code) { return camera.UvcExtSet(zemuvc::kH264Unit, 9, data, code...); });
  CheckValue("ZEMAPI_UvcExtGet(opened, {B42153BD}, 9, buffer, 64, out)", 1U, [&](auto&... code) {
    return camera.UvcExtGet(zemuvc::kSkypeUnit, 9, buffer, code...);
  });
  CheckValue("ZEMAPI_ZemExtSet(opened, 2, data, 100, out)", 1U,
             [&](auto&... code) { return camera.ZemExtSet(2, data, code...); });
  CheckValue("ZEMAPI_ZemExtGet(opened, 2, buffer, 64, out)", 1U,
             [&](auto&... code) { return camera.ZemExtGet(2, buffer, code...); });
  CheckValue("ZEMAPI_UvcCheckXuGuid(opened, {23E49ED0})", true,
             [&](auto&... code) { return camera.HasExtensionUnit(zemuvc::kVendorUnit, code...); });
  CheckValue("ZEMAPI_UvcCheckXuGuid(opened, {F679EF5B})", false,
             [&](auto&... code) { return camera.HasExtensionUnit(zemuvc::kTirellaUnit, code...); },
             {1, ZEM_E_NO_DEVICE, Errc::kNoDevice});
}

void WrappersTest::Registers() {
  Check("ZEMAPI_SetRegister(opened, 1193046, 43981)",
        [&](auto&... code) { camera.SetRegister(0x123456, 0xABCD, code...); });
  CheckValue("ZEMAPI_GetRegister(opened, 1193046, out)", 1,
             [&](auto&... code) { return camera.GetRegister(0x123456, code...); });
  Check("ZEMAPI_SetSensorRegister(opened, 12306, 239)",
        [&](auto&... code) { camera.SetSensorRegister(0x3012, 0xEF, code...); });
  CheckValue("ZEMAPI_GetSensorRegister(opened, 12306, out)", 1,
             [&](auto&... code) { return camera.GetSensorRegister(0x3012, code...); });
  Check("ZEMAPI_SetSensorRegisterW(opened, 12306, 4660)",
        [&](auto&... code) { camera.SetSensorRegisterW(0x3012, 0x1234, code...); });
  CheckValue("ZEMAPI_GetSensorRegisterW(opened, 12306, out)", 1,
             [&](auto&... code) { return camera.GetSensorRegisterW(0x3012, code...); });
  Check("ZEMAPI_SetVCMRegister(opened, 5, 600)",
        [&](auto&... code) { camera.SetVcmRegister(5, 600, code...); });
  CheckValue("ZEMAPI_GetVCMRegister(opened, 5, out)", 1,
             [&](auto&... code) { return camera.GetVcmRegister(5, code...); });
  Check("ZEMAPI_SetLensPos(opened, 70000)",
        [&](auto&... code) { camera.SetLensPosition(70000, code...); });
  Check("ZEMAPI_GetCheckSumResult(opened)", [&](auto&... code) { camera.CheckFirmware(code...); });
  CheckValue("ZEMAPI_ReadCodecReg(opened, 513, out)", 1,
             [&](auto&... code) { return camera.ReadCodecRegister(513, code...); });
  Check("ZEMAPI_WriteCodecReg(opened, 513, 7)",
        [&](auto&... code) { camera.WriteCodecRegister(513, 7, code...); });

  fake.answer = {1, 2, 3, 4, 5, 6};
  CheckValue("ZEMAPI_GetFWVersion(opened, out)", Block<6>{1, 2, 3, 4, 5, 6},
             [&](auto&... code) { return camera.GetFirmwareVersion(code...); });
  fake.answer = {0, 0, 1, 2, 3, 4, 5, 0xFE};
  CheckValue("?ZEMAPI_GetFWVersion@@YAJPEAXPEAD@Z(opened, out)",
             Block<8>{0, 0, 1, 2, 3, 4, 5, 0xFE},
             [&](auto&... code) { return camera.GetFirmwareVersionReply(code...); });
  CheckValue("ZEMAPI_GetDeviceInfo(opened, out)", Block<8>{0, 0, 1, 2, 3, 4, 5, 0xFE},
             [&](auto&... code) { return camera.GetDeviceInfo(code...); });

  fake.look = 8;
  const Block<8> command = {0x0B, 1, 2, 3, 4, 5, 6, 7};
  const std::string sent = "(opened, 0b 01 02 03 04 05 06 07, 00 00 00 00 00 00 00 00)";
  CheckValue("ZEMAPI_IspCommand" + sent, Block<8>{0, 0, 1, 2, 3, 4, 5, 0xFE},
             [&](auto&... code) { return camera.IspCommand(command, code...); });
  CheckValue("ZEMAPI_VcpCommand" + sent, Block<8>{0, 0, 1, 2, 3, 4, 5, 0xFE},
             [&](auto&... code) { return camera.VcpCommand(command, code...); });
  fake.look = 16;
  fake.answer = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  const Block<16> reply = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  const Block<16> extended = {0xFF, 3};
  const std::string sentExtended =
      "(opened, ff 03 00 00 00 00 00 00 00 00 00 00 00 00 00 00, "
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00)";
  CheckValue("ZEMAPI_IspCommandEx" + sentExtended, reply,
             [&](auto&... code) { return camera.IspCommandEx(extended, code...); });
  CheckValue("ZEMAPI_VcpCommandEx" + sentExtended, reply,
             [&](auto&... code) { return camera.VcpCommandEx(extended, code...); });
  fake.look = 0;
  fake.answer.clear();
}

void WrappersTest::Tuning() {
  fake.answer = {'2', '0', '2', '1', '.', 'D', 'e', 'c', '.', '1', '5', 0};
  CheckValue("ZEMAPI_GetFWBuildDate(opened, out)",
             std::array<char, 12>{'2', '0', '2', '1', '.', 'D', 'e', 'c', '.', '1', '5', 0},
             [&](auto&... code) { return camera.GetFirmwareBuildDate(code...); });
  fake.answer.clear();
  Check("ZEMAPI_EnableAF(opened, 1)",
        [&](auto&... code) { camera.EnableAutoFocus(true, code...); });
  Check("ZEMAPI_EnableAE(opened, 0)",
        [&](auto&... code) { camera.EnableAutoExposure(false, code...); });
  CheckValue("ZEMAPI_GetAFACC(opened, out)", std::array<std::uint32_t, 9>{1},
             [&](auto&... code) { return camera.GetFocusAccumulators(code...); });
  Check("ZEMAPI_SetVideoRecMode(opened, 2)",
        [&](auto&... code) { camera.SetVideoRecordingMode(2, code...); });
  Check("ZEMAPI_SetAWBGain(opened, 256, 257, 258)", [&](auto&... code) {
    camera.SetWhiteBalanceGains({256, 257, 258}, code...);
  });
  Check("ZEMAPI_GetAWBGain(opened, out, out, out)", [&](auto&... code) {
    const auto gains = camera.GetWhiteBalanceGains(code...);
    EXPECT_EQ(gains.first, 1);
    EXPECT_EQ(gains.second, 2);
    EXPECT_EQ(gains.third, 3);
  });
  Check("ZEMAPI_EnableManualGainCtrl(opened, 1)",
        [&](auto&... code) { camera.EnableManualGain(true, code...); });
  Check("ZEMAPI_SetShadding(opened, 9)", [&](auto&... code) { camera.SetShading(9, code...); });
  fake.look = 6;
  Check("ZEMAPI_SetMiscSetting(opened, 01 02 03 04 05 06)", [&](auto&... code) {
    camera.SetMiscSettings({1, 2, 3, 4, 5, 6}, code...);
  });
  fake.look = 0;
  fake.answer = {6, 5, 4, 3, 2, 1};
  CheckValue("ZEMAPI_GetMiscSetting(opened, out)", Block<6>{6, 5, 4, 3, 2, 1},
             [&](auto&... code) { return camera.GetMiscSettings(code...); });
  Check("ZEMAPI_SetMjpgQuality(opened)", [&](auto&... code) { camera.SetMjpegQuality(code...); });
  Check("ZEMAPI_SetImageEffect(opened, 3)",
        [&](auto&... code) { camera.SetImageEffect(3, code...); });
  Check("ZEMAPI_SetMaxQP(opened, 40)", [&](auto&... code) { camera.SetMaxQuantiser(40, code...); });
  Check("ZEMAPI_SetMinQP(opened, 20)", [&](auto&... code) { camera.SetMinQuantiser(20, code...); });
  fake.answer.assign(32, 0xA5);
  CheckValue("ZEMAPI_GetSensorSN(opened, out)", 32, [&](auto&... code) {
    const Block<32> serial = camera.GetSensorSerialNumber(code...);
    return std::count(serial.begin(), serial.end(), 0xA5);
  });
  fake.answer.clear();
  CheckValue("ZEMAPI_GetSkypeXUVersion(opened, out)", 1,
             [&](auto&... code) { return camera.GetSkypeUnitVersion(code...); });
}

void WrappersTest::StandardControls() {
  const auto setting = [](const zemuvc::ControlValue& value) {
    EXPECT_EQ(value.value, 1);
    EXPECT_EQ(value.flags, 2);
  };
  const auto range = [](const zemuvc::ControlRange& value) {
    EXPECT_EQ(value.minimum, 1);
    EXPECT_EQ(value.maximum, 2);
    EXPECT_EQ(value.step, 3);
    EXPECT_EQ(value.defaultValue, 4);
    EXPECT_EQ(value.flags, 5);
  };
  Check("ZEMAPI_GetVideoProcAmp(opened, 4, out, out)",
        [&](auto&... code) { setting(camera.GetVideoProcAmp(4, code...)); });
  Check("ZEMAPI_SetVideoProcAmp(opened, 4, -5, 2)", [&](auto&... code) {
    camera.SetVideoProcAmp(4, {-5, 2}, code...);
  });
  Check("ZEMAPI_GetVideoProcAmpRange(opened, 4, out, out, out, out, out)",
        [&](auto&... code) { range(camera.GetVideoProcAmpRange(4, code...)); });
  Check("ZEMAPI_GetCameraControl(opened, 4, out, out)",
        [&](auto&... code) { setting(camera.GetCameraControl(4, code...)); });
  Check("ZEMAPI_SetCameraControl(opened, 4, -5, 2)", [&](auto&... code) {
    camera.SetCameraControl(4, {-5, 2}, code...);
  });
  Check("ZEMAPI_GetCameraControlRange(opened, 4, out, out, out, out, out)",
        [&](auto&... code) { range(camera.GetCameraControlRange(4, code...)); });
  CheckValue("ZEMAPI_Get_IVideoProcAmp_Interface(opened, out)", fake.opened(),
             [&](auto&... code) { return camera.GetVideoProcAmpInterface(code...); });
}

// What a callable was told in a call.
std::vector<std::uint32_t> told;
const auto kTell = [](std::uint32_t progress) { told.push_back(progress); };

template <class Call>
void CheckProgress(const std::string& line, const Call& call) {
  fake.progress = {90, 10};
  Check(line, [&](auto&... code) {
    told.clear();
    call(kTell, code...);
    EXPECT_EQ(told, (std::vector<std::uint32_t>{90, 10}));
  });
  fake.progress.clear();
}

void WrappersTest::BulkData() {
  fake.look = 128;
  const std::string padded = "11 22 33" + [] {
    std::string zeros;
    for (int index = 0; index < 125; ++index) {
      zeros += " 00";
    }
    return zeros;
  }();
  CheckProgress("ZEMAPI_SendData(opened, " + padded + ", 100, callback, user, 2, 3)",
                [&](auto tell, auto&... code) { camera.SendData(data, 2, 3, tell, code...); });
  fake.look = 0;
  CheckProgress("ZEMAPI_WriteFWData(opened, data, 100, callback, user)",
                [&](auto tell, auto&... code) { camera.WriteFirmwareData(data, tell, code...); });
  Check("ZEMAPI_WriteFWData(opened, data, 100, null, 0)",
        [&](auto&... code) { camera.WriteFirmwareData(data, nullptr, code...); });
  CheckProgress("ZEMAPI_ReadFWData(opened, buffer, 64, out, callback, user)",
                [&](auto tell, auto&... code) {
                  EXPECT_EQ(camera.ReadFirmwareData(buffer, tell, code...), 1U);
                });
  CheckProgress("ZEMAPI_ReadPartialFlashData(opened, 4096, 64, buffer, out, callback, user)",
                [&](auto tell, auto&... code) {
                  EXPECT_EQ(camera.ReadFlash(4096, buffer, tell, code...), 1U);
                });
}

void WrappersTest::Updates() {
  CheckProgress(
      "ZEMAPI_UpdateFW_516x(opened, data, 100, callback, user, 6)",
      [&](auto tell, auto&... code) { camera.UpdateFirmware516x(data, 6, tell, code...); });
  CheckProgress("ZEMAPI_UpdateFW_517x(opened, data, 100, callback, user)",
                [&](auto tell, auto&... code) { camera.UpdateFirmware517x(data, tell, code...); });
  // It needs somebody to tell.
  Check("ZEMAPI_UpdateFW_517x(opened, data, 100, callback, user)",
        [&](auto&... code) { camera.UpdateFirmware517x(data, nullptr, code...); });
  CheckProgress("ZEMAPI_UpdateFlash(opened, data, 100, callback, user, 4, 5)",
                [&](auto tell, auto&... code) { camera.UpdateFlash(data, 4, 5, tell, code...); });
  CheckProgress("ZEMAPI_UpdateCaliData(opened, data, 100, callback, user)",
                [&](auto tell, auto&... code) { camera.UpdateCalibration(data, tell, code...); });
}

void WrappersTest::Memory() {
  CheckValue("ZEMAPI_WriteNVMEM(opened, 32, data, 100, out)", 1U,
             [&](auto&... code) { return camera.WriteNvmem(32, data, code...); });
  CheckValue("ZEMAPI_ReadNVMEM(opened, 32, buffer, 64, out)", 1U,
             [&](auto&... code) { return camera.ReadNvmem(32, buffer, code...); });
  CheckValue("ZEMAPI_TIRELLA_WriteNVMEM(opened, data, 100, out)", 1U,
             [&](auto&... code) { return camera.WriteTirellaNvmem(data, code...); });
  CheckValue("ZEMAPI_TIRELLA_ReadNVMEM(opened, buffer, 64, out)", 1U,
             [&](auto&... code) { return camera.ReadTirellaNvmem(buffer, code...); });
  Check("ZEMAPI_TIRELLA_LedCtrl(opened, 1)",
        [&](auto&... code) { camera.SetTirellaLed(1, code...); });
}

void WrappersTest::Tables() {
  std::vector<zemuvc::TableStore> kept;
  Check("ZEMAPI_OpenTableHandle(opened, out)",
        [&](auto&... code) { kept.push_back(camera.OpenTables(code...)); });
  zemuvc::TableStore store = std::move(kept.front());
  fake.names[&store] = "store";
  CheckValue("ZEMAPI_GetTableSize(null, opened, 9, out)", 1,
             [&](auto&... code) { return store.GetTableSize(9, code...); });
  CheckValue("ZEMAPI_ReadTableEx(null, opened, 9, out, 8192, out 4294967295)", 2U,
             [&](auto&... code) { return store.ReadTable(9, buffer, code...); });
  CheckValue("ZEMAPI_ReadTable(opened, 9, out, 8192, out 4294967295)", 2U,
             [&](auto&... code) { return camera.ReadTable(9, buffer, code...); });
  fake.look = 4;
  CheckValue("ZEMAPI_WriteTableEx(opened, opened, 9, 11 22 33 00, 100, out)", 1U,
             [&](auto&... code) { return store.WriteTable(9, data, code...); });
  CheckValue("ZEMAPI_WriteTable(opened, 9, 11 22 33 00, 100, out)", 1U,
             [&](auto&... code) { return camera.WriteTable(9, data, code...); });
  fake.look = 0;
  Check("ZEMAPI_WriteInitialTable(opened, data, 100)",
        [&](auto&... code) { camera.WriteInitialTable(data, code...); });
  CheckValue("ZEMAPI_DumpWholeTable(null, opened, buffer, 64, out)", 1U,
             [&](auto&... code) { return store.Dump(buffer, code...); });
  fake.calls.clear();
  store.Close();
  ExpectOneCall("ZEMAPI_CloseTableHandle(null, &opened)");
}

void WrappersTest::IntoRomBoot() {
  Check("ZEMAPI_ResetToRomboot(opened)", [&](auto&... code) { camera.ResetToRomBoot(code...); });
  Check("ZEMAPI_ResetToRomboot_VCP8(opened)",
        [&](auto&... code) { camera.ResetToRomBootVcp8(code...); });
  Check("ZEMAPI_ResetToRomboot_VCP16(opened)",
        [&](auto&... code) { camera.ResetToRomBootVcp16(code...); });
}

void WrappersTest::H264() {
  std::vector<zemuvc::H264Formats> kept;
  Check("ZEMAPI_GetH264FrameList(opened, out)",
        [&](auto&... code) { kept.push_back(camera.GetH264Formats(code...)); }, {808});
  zemuvc::H264Formats formats = std::move(kept.front());
  ASSERT_EQ(formats.size(), 2U);
  EXPECT_EQ(formats[0].wFrameIndex, 7);
  EXPECT_EQ((formats.end() - 1)->wFrameIndex, 8);
  fake.calls.clear();
  formats = {};
  ExpectOneCall("ZEMAPI_ReleaseH264FrameList(opened)");
  EXPECT_EQ(formats.size(), 0U);
  EXPECT_EQ(formats.begin(), formats.end());

  Check("ZEMAPI_SetH264FrameIndex(opened, 7)",
        [&](auto&... code) { camera.StartH264(7, code...); });
  Check(
      "ZEMAPI_SetH264Mode(opened, 1280, 720)",
      [&](auto&... code) { camera.SetH264Mode(1280, 720, code...); }, kZeroFails);
  Check("ZEMAPI_GetH264_UVC_PayloadFormat(null, 2, out, out, out)", [&](auto&... code) {
    const auto format = Camera::GetPayloadFormat(2, code...);
    ASSERT_EQ(format.has_value(), fake.result == 0);
    if (format) {
      EXPECT_EQ(format->width, 1);
      EXPECT_EQ(format->height, 2);
      EXPECT_EQ(format->subtype.Data1, 3U);
    }
  });
  fake.result = 1;
  EXPECT_EQ(Camera::GetPayloadFormat(3), std::nullopt);
  fake.result = 0;
  Check("ZEMAPI_SetFps(opened, 30)", [&](auto&... code) { camera.SetFrameRate(30, code...); });
  Check("ZEMAPI_SetBitRate(opened, 2500)",
        [&](auto&... code) { camera.SetBitRate(2500, code...); });
  Check("ZEMAPI_ForceIFrame(opened)", [&](auto&... code) { camera.ForceKeyFrame(code...); });
}

void WrappersTest::Streams() {
  CheckValue("ORVAAPI_GetVersion(opened, out)", 1,
             [&](auto&... code) { return camera.GetStreamUnitVersion(code...); });
  CheckValue("ORVAAPI_FirmwareBuildDay(opened, out)", 1,
             [&](auto&... code) { return camera.GetStreamFirmwareBuildDay(code...); });
  Check("ORVAAPI_SetStreamID(opened, 3)", [&](auto&... code) { camera.SelectStream(3, code...); });
  CheckValue("ORVAAPI_GetEndpointSetting(opened, out)", 1,
             [&](auto&... code) { return camera.GetEndpointSetting(code...); });
  const OrvaStreamFormat format = {1, 640, 480, 5, 6};
  const auto isRead = [](const OrvaStreamFormat& read) {
    return read.bStreamFormat == 5 && read.wWidth == 1280 && read.wHeight == 720 &&
           read.dwFrameInterval == 333333 && read.dwBitRate == 2000;
  };
  const std::string probeCommit = "ORVAAPI_StreamFormatProbeCommit(opened, ";
  Check(probeCommit + "1/640/480/5/6, 0)",
        [&](auto&... code) { camera.ProbeStreamFormat(format, code...); });
  CheckValue(probeCommit + "0/0/0/0/0, 1)", true,
             [&](auto&... code) { return isRead(camera.GetProbedStreamFormat(code...)); });
  Check(probeCommit + "1/640/480/5/6, 2)",
        [&](auto&... code) { camera.CommitStreamFormat(format, code...); });
  CheckValue(probeCommit + "0/0/0/0/0, 3)", true,
             [&](auto&... code) { return isRead(camera.GetCommittedStreamFormat(code...)); });
  Check("ORVAAPI_ToggleLayerControl(opened, 4)",
        [&](auto&... code) { camera.ToggleLayer(4, code...); });
  Check("ZEMAPI_MulticastStreamID(opened, 4)",
        [&](auto&... code) { camera.SelectMulticastStream(4, code...); });
  Check("ZEMAPI_MulticasToggleLayer(opened, 4)",
        [&](auto&... code) { camera.ToggleMulticastLayer(4, code...); });
  Check("ZEMAPI_MulticastCommit(opened, 1, 1280, 720, 31, 2047)",
        [&](auto&... code) { camera.CommitMulticastFormat(1, 1280, 720, 31, 2047, code...); });
}

void WrappersTest::Microphones() {
  std::vector<zemuvc::Microphone> kept;
  Check("ZEMAPI_AudioOpenDeviceByPath(\"name\", out)",
        [&](auto&... code) { kept.push_back(zemuvc::Microphone::Open(L"name", code...)); });
  zemuvc::Microphone microphone = std::move(kept.front());
  Check("ZEMAPI_AudioSetVolume(opened, 80)",
        [&](auto&... code) { microphone.SetVolume(80, code...); });
  fake.calls.clear();
  microphone.Close();
  ExpectOneCall("ZEMAPI_AudioCloseDevice(&opened)");
}

void WrappersTest::EncodingUnits() {
  std::vector<zemuvc::EncodingUnit> kept;
  Check("WREN_OpenDevice(2, out)",
        [&](auto&... code) { kept.push_back(zemuvc::EncodingUnit::Open(2, code...)); });
  zemuvc::EncodingUnit unit = std::move(kept.front());
  Check("WREN_EuSet(opened, 5, data, 100)", [&](auto&... code) { unit.Set(5, data, code...); });
  Check("?WREN_EuGet@@YAJPEAXI0G@Z(opened, 5, buffer, 64)",
        [&](auto&... code) { unit.Get(5, buffer, code...); });
  fake.answer.assign(51, 0x51);
  Block<51> block = {};
  block.fill(0x51);
  CheckValue("WREN_ProbeGet(opened, out)", block,
             [&](auto&... code) { return unit.GetProbe(code...); });
  CheckValue("WREN_CommitGet(opened, out)", block,
             [&](auto&... code) { return unit.GetCommit(code...); });
  fake.look = 3;
  Check("WREN_ProbeSet(opened, 51 51 51)", [&](auto&... code) { unit.SetProbe(block, code...); });
  Check("WREN_CommitSet(opened, 51 51 51)", [&](auto&... code) { unit.SetCommit(block, code...); });
  fake.look = 0;
  fake.answer.clear();
  fake.calls.clear();
  zemuvc::EncodingUnit::WriteLog(L"text");
  ExpectOneCall("WREN_WriteLog(\"text\")");
  unit.Close();
  ExpectOneCall("WREN_CloseDevice(&opened)");
  Check("WREN_EuSet(null, 5, data, 100)", [&](auto&... code) { unit.Set(5, data, code...); });
}

void WrappersTest::RomBootSessions() {
  std::vector<RomBoot> kept;
  const Results kNone = {0, -1, Errc::kFail};
  Check(
      "ZEMROMAPI_OpenDevice(1)",
      [&](auto&... code) {
        kept.push_back(RomBoot::Open(zemuvc::RomMode::kBootLoader, false, code...));
      },
      kNone);
  Check(
      "ZEMROMAPI_OpenDevice(18)",
      [&](auto&... code) {
        kept.push_back(RomBoot::Open(zemuvc::RomMode::kUpdater, true, code...));
      },
      kNone);
  RomBoot session = std::move(kept.front());
  Check("ZEMROMAPI_ResetSystem(opened)", [&](auto&... code) { session.ResetSystem(code...); });
  Check("ZEMROMAPI_SwitchModePCAM_SF(opened)",
        [&](auto&... code) { session.SelectSerialFlash(code...); });
  Check("?ZEMROMAPI_SwitchModePCAM_DRAM@@YAJPEAX@Z(opened)",
        [&](auto&... code) { session.SelectMemory(code...); });
  Check("ZEMROMAPI_SwitchModePCAM_PARALLEL_NAND(opened, 3)",
        [&](auto&... code) { session.SelectParallelNand(3, code...); });
  Check("ZEMROMAPI_SwitchModePCAM_SPI_NAND(opened, 3)",
        [&](auto&... code) { session.SelectSpiNand(3, code...); });
  Check("ZEMROMAPI_SwitchModePCAM_EMMC(opened, 3)",
        [&](auto&... code) { session.SelectEmmc(3, code...); });
  Check("ZEMROMAPI_LongJump(opened)", [&](auto&... code) { session.LongJump(code...); });
  Check("ZEMROMAPI_SetFwDownloadAddr(opened, 4096)",
        [&](auto&... code) { session.SetFirmwareDownloadAddress(4096, code...); });
  Check("ZEMROMAPI_WriteRegister(opened, 4096, 7)",
        [&](auto&... code) { session.WriteRegister(4096, 7, code...); });
  CheckValue("ZEMROMAPI_ReadRegister(opened, 4096, out)", 1,
             [&](auto&... code) { return session.ReadRegister(4096, code...); });
  const Block<16> cdb = {0x12};
  Check("ZEMROMAPI_ScsiCommand(opened, 1, 64, out, buffer)",
        [&](auto&... code) { session.ReadScsi(cdb, buffer, code...); });
  Check("ZEMROMAPI_ScsiCommand(opened, 0, 100, out, data)",
        [&](auto&... code) { session.WriteScsi(cdb, data, code...); });
  fake.look = 2;
  Check("ZEMROMAPI_ScsiCommand(opened, 0, 0, 12 00, null)",
        [&](auto&... code) { session.WriteScsi(cdb, {}, code...); });
  fake.look = 0;
  Check(
      "ZEMROMAPI_MkEmmcEhancedArea(opened, 8, 9)",
      [&](auto&... code) { session.MakeEmmcEnhancedArea(8, 9, code...); }, kZeroFails);
  Check("ZEMROMAPI_Erase(opened, 4096, 8192)",
        [&](auto&... code) { session.Erase(4096, 8192, code...); });
  fake.calls.clear();
  session.Close();
  ExpectOneCall("ZEMROMAPI_CloseDevice(&opened)");

  // The two exports that do not look at their session are not called without one.
  std::error_code code;
  session.Erase(0, 1, code);
  EXPECT_EQ(code, Errc::kFail);
  session.MakeEmmcEnhancedArea(0, 1, code);
  EXPECT_EQ(code, Errc::kFail);
  EXPECT_EQ(fake.calls, std::vector<std::string>());
}

void WrappersTest::RomBootFiles() {
  RomBoot session = RomBoot::Open(zemuvc::RomMode::kUpdater);
  const Results one = {1};
  Check("ZEMROMAPI_CreateDumpFile(opened, \"dump\", 8192)",
        [&](auto&... code) { session.CreateDumpFile(L"dump", 8192, code...); });
  Check(
      "ZEMROMAPI_LoadMiniUVC(opened, \"code\")",
      [&](auto&... code) { session.LoadMiniUvc(L"code", code...); }, one);
  Check(
      "ZEMROMAPI_LoadUpdater(opened, \"code\")",
      [&](auto&... code) { session.LoadUpdater(L"code", code...); }, one);
  CheckValue(
      "ZEMROMAPI_BurnFw(opened, \"image\", out 4096)", 1U,
      [&](auto&... code) { return session.BurnFirmware(L"image", 4096, code...); }, one);
  CheckValue(
      "ZEMROMAPI_BurnPcCamFw(opened, \"image\", out)", 1U,
      [&](auto&... code) { return session.BurnPackage(L"image", code...); }, one);
  CheckValue(
      "ZEMROMAPI_BurnPcCamFwPnsV2(opened, \"image\", out)", 1U,
      [&](auto&... code) { return session.BurnPackageWithHeader(L"image", code...); }, one);
  Check(
      "ZEMROMAPI_DispackZemPcCamFw(null, \"package\")",
      [&](auto&... code) { RomBoot::SplitPackage(L"package", code...); }, one);
  Check(
      "ZEMROMAPI_UpdateLinuxFwPkg(opened, \"package\", 4294967295, 4096)",
      [&](auto&... code) { session.UpdateLinuxPackage(L"package", 0xFFFFFFFF, 4096, code...); },
      one);
  Check(
      "ZEMROMAPI_UpdateLinuxFwPkg_(opened, \"package\", 4096)",
      [&](auto&... code) { session.UpdateLinuxPackageInPlace(L"package", 4096, code...); }, one);
  CheckValue(
      "ZEMROMAPI_PartialUpdateWithHeader(opened, \"file\", out 4096)", 1U,
      [&](auto&... code) { return session.WriteFileWithHeader(L"file", 4096, code...); }, one);
  CheckValue(
      "ZEMROMAPI_PartialUpdate(opened, \"file\", out 4096)", 1U,
      [&](auto&... code) { return session.WriteRawFile(L"file", 4096, code...); }, one);
  CheckValue(
      "ZEMROMAPI_PartialRead(opened, \"file\", out, 8192)", 1U,
      [&](auto&... code) { return session.ReadIntoFile(L"file", 8192, code...); }, one);
  CheckValue(
      "ZEMROMAPI_LoadFW2Memory(opened, \"file\", out)", 1U,
      [&](auto&... code) { return session.LoadIntoMemory(L"file", code...); }, one);
}

void WrappersTest::DefaultCamera() {
  namespace dc = zemuvc::default_camera;
  Check("ZEMUVCEXT_DoAF(1)", [](auto&... code) { dc::StartAutoFocus(1, code...); });
  Check("ZEMUVCEXT_SetFps(30)", [](auto&... code) { dc::SetFrameRate(30, code...); });
  Check("ZEMUVCEXT_SetResolution(640, 480)",
        [](auto&... code) { dc::SetResolution(640, 480, code...); });
  Check("ZEMUVCEXT_SetIFrame()", [](auto&... code) { dc::ForceKeyFrame(code...); });
  Check("ZEMUVCEXT_SetVideoQuality(5)", [](auto&... code) { dc::SetVideoQuality(5, code...); });
  Check("ZEMUVCEXT_SetBitRate(5)", [](auto&... code) { dc::SetBitRate(5, code...); });
  Check("ZEMUVCEXT_SetFlickMode(2)", [](auto&... code) { dc::SetFlickerMode(2, code...); });
  CheckValue("ZEMUVCEXT_GetRegister(256, out)", 1,
             [](auto&... code) { return dc::GetRegister(256, code...); });
  Check("ZEMUVCEXT_SetRegister(256, 7)", [](auto&... code) { dc::SetRegister(256, 7, code...); });
  CheckValue("ZEMUVCEXT_GetSensorRegister(256, out)", 1,
             [](auto&... code) { return dc::GetSensorRegister(256, code...); });
  CheckValue("ZEMUVCEXT_GetSensorRegisterW(256, out)", 1,
             [](auto&... code) { return dc::GetSensorRegisterW(256, code...); });
  Check("ZEMUVCEXT_SetSensorRegister(256, 7)",
        [](auto&... code) { dc::SetSensorRegister(256, 7, code...); });
  Check("ZEMUVCEXT_SetSensorRegisterW(256, 700)",
        [](auto&... code) { dc::SetSensorRegisterW(256, 700, code...); });
  Check("ZEMUVCEXT_SetH264Mode(1)", [](auto&... code) { dc::SetH264Mode(1, code...); });
  Check("ZEMUVCEXT_SetWDR(1)", [](auto&... code) { dc::SetWideDynamicRange(1, code...); });
}

void WrappersTest::DefaultCameraData() {
  namespace dc = zemuvc::default_camera;
  fake.answer = {1, 2, 3, 4, 5, 6};
  CheckValue("ZEMUVCEXT_GetFWVersion(out)", Block<6>{1, 2, 3, 4, 5, 6},
             [](auto&... code) { return dc::GetFirmwareVersion(code...); });
  fake.answer.assign(12, 'x');
  CheckValue("ZEMUVCEXT_GetFWBuildDay(out)", 'x',
             [](auto&... code) { return dc::GetFirmwareBuildDay(code...)[11]; });
  fake.answer.assign(16, 9);
  CheckValue("ZEMUVCEXT_GetChipInfo(out)", 9,
             [](auto&... code) { return dc::GetChipInfo(code...)[15]; });
  fake.answer.assign(8, 9);
  const Block<8> command = {0x0B};
  CheckValue("ZEMUVCEXT_IspCommand(bytes, out)", 9,
             [&](auto&... code) { return dc::IspCommand(command, code...)[7]; });
  CheckValue("ZEMUVCEXT_VcpCommand(bytes, out)", 9,
             [&](auto&... code) { return dc::VcpCommand(command, code...)[7]; });
  fake.answer.assign(16, 9);
  const Block<16> extended = {0xFF};
  CheckValue("ZEMUVCEXT_IspCommandEx(bytes, out)", 9,
             [&](auto&... code) { return dc::IspCommandEx(extended, code...)[15]; });
  fake.answer.clear();
  Check("ZEMUVCEXT_IspCmdWriteMem(data, 100)",
        [&](auto&... code) { dc::WriteMemory(data, code...); });
  Check("ZEMUVCEXT_IspCmdReadMem(buffer, 64)",
        [&](auto&... code) { dc::ReadMemory(buffer, code...); });
  CheckProgress("ZEMUVCEXT_ReadFWData(buffer, 64, out, callback, user)",
                [&](auto tell, auto&... code) {
                  EXPECT_EQ(dc::ReadFirmwareData(buffer, tell, code...), 1U);
                });
  // Whole chunks are readable: 100 bytes are two of 64.
  fake.look = 128;
  std::string padded = "11 22 33";
  for (int index = 3; index < 128; ++index) {
    padded += " 00";
  }
  CheckProgress("ZEMUVCEXT_WriteFWData(" + padded + ", 100, callback, user)",
                [&](auto tell, auto&... code) { dc::WriteFirmwareData(data, tell, code...); });
  Check("ZEMUVCEXT_UpdateFW(" + padded + ", 100)",
        [&](auto&... code) { dc::UpdateFirmwareWithoutProgress(data, code...); });
  CheckProgress("ZEMUVCEXT_UpdateFW_with_progress(" + padded + ", 100, callback, user)",
                [&](auto tell, auto&... code) { dc::UpdateFirmware(data, tell, code...); });
  CheckProgress("ZEMUVCEXT_UpdateFW_with_progressEx(" + padded + ", 100, callback, user)",
                [&](auto tell, auto&... code) { dc::UpdateOtherImage(data, tell, code...); });
  CheckProgress("ZEMUVCEXT_UpdateFW_Vision(" + padded + ", 100, 3, callback, user)",
                [&](auto tell, auto&... code) { dc::UpdateVision(data, 3, tell, code...); });
  fake.look = 0;
}

void WrappersTest::FramesAndSound() {
  // Of the results only those of the files are looked at.
  fake.calls.clear();
  zemuvc::PlanesToPixels(data, buffer, 4, 4);
  ExpectOneCall("NV12_to_RGB(data, buffer, 4, 4)");
  Check(
      "ConvertYUY2toBMP(\"file\", data, 4, 4)",
      [&](auto&... code) { zemuvc::SaveYuy2AsBmp(L"file", data, 4, 4, code...); }, kZeroFails);
  Check(
      "ConvertNV12toBMP(\"file\", data, 4, 4)",
      [&](auto&... code) { zemuvc::SavePlanesAsBmp(L"file", data, 4, 4, code...); }, kZeroFails);
  Check(
      "PackWavFile(\"raw\", \"wav\", 2, 16000, 16)",
      [&](auto&... code) { zemuvc::PackWav(L"raw", L"wav", 2, 16000, 16, code...); }, kZeroFails);
}

TEST_F(WrappersTest, EachMakesOneCallAndNoExportIsLeftOut) {
  called.clear();
  Opening();
  RawAccess();
  Registers();
  Tuning();
  StandardControls();
  BulkData();
  Updates();
  Memory();
  Tables();
  IntoRomBoot();
  H264();
  Streams();
  Microphones();
  EncodingUnits();
  RomBootSessions();
  RomBootFiles();
  DefaultCamera();
  DefaultCameraData();
  FramesAndSound();
  // Its pixels are freed by the export: see below.
  called.insert("ConvertRGBtoBMP");

  const std::set<std::string> expected(kWrappedExports.begin(), kWrappedExports.end());
  EXPECT_EQ(expected.size(), 171U);
  EXPECT_EQ(called, expected);
}

TEST_F(WrappersTest, WithAnErrorCodeNothingIsThrown) {
  std::error_code code;
  static_assert(noexcept(camera.GetRegister(1, code)));
  static_assert(!noexcept(camera.GetRegister(1)));
  static_assert(noexcept(zemuvc::ListCameras(code)));
  static_assert(noexcept(camera.UpdateFirmware517x(data, nullptr, code)));
  static_assert(noexcept(RomBoot::SplitPackage(std::declval<const std::wstring&>(), code)));
}

TEST_F(WrappersTest, AnErrorSaysWhatZemctlSays) {
  fake.result = ZEM_E_DEVICE_REFUSED;
  try {
    static_cast<void>(camera.GetRegister(1));
    FAIL();
  } catch (const Error& error) {
    EXPECT_STREQ(error.what(),
                 "ZEMAPI_GetRegister: the camera refused the command (ZEM_E_DEVICE_REFUSED, "
                 "0x80000001)");
    EXPECT_EQ(error.result(), ZEM_E_DEVICE_REFUSED);
  }
}

TEST_F(WrappersTest, TextsOfTheCategory) {
  const auto text = [](std::uint32_t result) {
    return zemuvc::ResultCategory().message(static_cast<int>(result));
  };
  EXPECT_STREQ(zemuvc::ResultCategory().name(), "ZemUVCExtApi");
  EXPECT_EQ(text(0), "done");
  EXPECT_EQ(text(0x80000000), "the request was refused");
  EXPECT_EQ(text(0x80000001), "the camera refused the command");
  EXPECT_EQ(text(0x80000002), "the buffer is too small");
  EXPECT_EQ(text(0x80000003), "the command could not be written to the camera");
  EXPECT_EQ(text(0x80004005), "the library reports a failure");
  EXPECT_EQ(text(0x8007048F), "the camera is gone");
  EXPECT_EQ(text(0x80070037), "the camera is gone");
  EXPECT_EQ(text(0x8007001F), "the camera did not carry it out");
  EXPECT_EQ(text(0x80070490), "the camera has no such control");
  EXPECT_EQ(text(0x80070492), "the camera has no such control");
  EXPECT_EQ(text(0x8000FFFF), "the platform reported a failure");
  EXPECT_EQ(text(1), "the camera has no vendor extension unit");
  EXPECT_EQ(text(2), "done");
  EXPECT_STREQ(ZemResultName(ZEM_E_REFUSED), "ZEM_E_REFUSED");
  EXPECT_STREQ(ZemResultName(ZEM_E_BUFFER_TOO_SMALL), "ZEM_E_BUFFER_TOO_SMALL");
  EXPECT_STREQ(ZemResultName(5), "positive result");
  EXPECT_STREQ(ZemResultName(static_cast<ZemResult>(0x8000FFFF)), "platform failure");
}

TEST_F(WrappersTest, ACameraWithoutTheVendorUnitIsNoneByItsName) {
  std::error_code code;
  fake.result = 1;
  EXPECT_THROW(Camera::OpenByDisplayName(L"name"), Error);
  const Camera none = Camera::OpenByDevicePath(L"path", code);
  EXPECT_EQ(code, Errc::kNoVendorUnit);
}

TEST_F(WrappersTest, MovedObjectsCloseOnce) {
  {
    Camera first = Camera::Open();
    Camera second = std::move(first);
    EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move)
    EXPECT_TRUE(second);
    first = std::move(second);
    EXPECT_TRUE(first);
    fake.calls.clear();
  }
  EXPECT_EQ(fake.calls, std::vector<std::string>{"ZEMAPI_CloseDevice(&opened)"});
  fake.calls.clear();
  camera = Camera();
  EXPECT_EQ(fake.calls, std::vector<std::string>{"ZEMAPI_CloseDevice(&opened)"});
  static_assert(!std::is_copy_constructible_v<Camera> && !std::is_copy_assignable_v<Camera>);
  static_assert(std::is_nothrow_move_constructible_v<Camera>);
}

TEST_F(WrappersTest, WhatProgressThrowsArrivesAfterTheTransfer) {
  fake.progress = {90, 50, 10};
  int count = 0;
  const auto stop = [&count](std::uint32_t) {
    ++count;
    throw std::runtime_error("enough");
  };
  EXPECT_THROW(camera.UpdateCalibration(data, stop), std::runtime_error);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(fake.calls.size(), 1U);
}

TEST_F(WrappersTest, LengthsThatAnExportCannotSayAreRefused) {
  std::error_code code;
  const zemuvc::Bytes tooLong(data.data(), std::size_t{1} << 32);
  camera.UpdateCalibration(tooLong, nullptr, code);
  EXPECT_EQ(code, Errc::kRefused);
  const zemuvc::EncodingUnit unit;
  unit.Get(1, zemuvc::Buffer(buffer.data(), 0x10000), code);
  EXPECT_EQ(code, Errc::kRefused);
  EXPECT_EQ(fake.calls, std::vector<std::string>());
}

TEST_F(WrappersTest, ATableFitsItsBufferOrIsRefused) {
  std::error_code code;
  // The export says 2 bytes.
  EXPECT_EQ(camera.ReadTable(9, zemuvc::Buffer(buffer.data(), 1), code), 2U);
  EXPECT_EQ(code, Errc::kBufferTooSmall);
  EXPECT_EQ(buffer[0], 0);
  EXPECT_EQ(camera.ReadTable(9, zemuvc::Buffer(buffer.data(), 2), code), 2U);
  EXPECT_FALSE(code);
  EXPECT_EQ(buffer[0], 1);
  // One that is not there is a success of the export, which says no size.
  fake.leavesNumbers = true;
  EXPECT_EQ(camera.ReadTable(9, buffer, code), 0U);
  EXPECT_EQ(code, Errc::kRefused);
  fake.calls.clear();
  EXPECT_EQ(camera.WriteTable(9, zemuvc::Bytes(data.data(), 8193), code), 0U);
  EXPECT_EQ(code, Errc::kRefused);
  EXPECT_EQ(fake.calls, std::vector<std::string>());
}

TEST_F(WrappersTest, FramesThatAreTooShortAreRefused) {
  std::error_code code;
  zemuvc::PlanesToPixels(zemuvc::Bytes(data.data(), 23), buffer, 4, 4, code);
  EXPECT_EQ(code, Errc::kRefused);
  zemuvc::PlanesToPixels(zemuvc::Bytes(data.data(), 24), zemuvc::Buffer(buffer.data(), 47), 4, 4,
                         code);
  EXPECT_EQ(code, Errc::kRefused);
  zemuvc::SaveYuy2AsBmp(L"file", zemuvc::Bytes(data.data(), 31), 4, 4, code);
  EXPECT_EQ(code, Errc::kRefused);
  zemuvc::SavePlanesAsBmp(L"file", data, 0xFFFFFFFF, 0xFFFFFFFF, code);
  EXPECT_EQ(code, Errc::kRefused);
  zemuvc::SavePixelsAsBmp(L"file", zemuvc::Bytes(data.data(), 47), 4, 4, code);
  EXPECT_EQ(code, Errc::kRefused);
  EXPECT_EQ(fake.calls, std::vector<std::string>());
  zemuvc::PlanesToPixels(zemuvc::Bytes(data.data(), 24), zemuvc::Buffer(buffer.data(), 48), 4, 4,
                         code);
  EXPECT_FALSE(code);
}

// The leak check sees a copy that nobody frees, and the address sanitizer one that is freed twice.
TEST_F(WrappersTest, PixelsAreHandedOverAsACopy) {
  fake.look = 3;
  fake.result = 0;
  std::error_code code;
  zemuvc::SavePixelsAsBmp(L"file", data, 4, 4, code);
  EXPECT_EQ(code, Errc::kFail);
  ExpectOneCall("ConvertRGBtoBMP(\"file\", 11 22 33, 4, 4)");
  fake.result = 1;
  fake.freesPixels = true;
  zemuvc::SavePixelsAsBmp(L"file", data, 4, 4, code);
  EXPECT_FALSE(code);
  ExpectOneCall("ConvertRGBtoBMP(\"file\", 11 22 33, 4, 4)");
}

TEST_F(WrappersTest, ViewsOfContainers) {
  const std::vector<std::uint8_t> constant = {1, 2};
  std::vector<std::uint8_t> variable = {1, 2, 3};
  const zemuvc::Bytes view = variable;
  EXPECT_EQ(view.size(), 3U);
  EXPECT_EQ(zemuvc::Bytes(constant).data(), constant.data());
  const std::span<const std::uint8_t> span = view;
  EXPECT_EQ(span.data(), variable.data());
  EXPECT_EQ(zemuvc::Bytes(span.subspan(1)).size(), 2U);
  std::uint8_t array[4] = {};
  EXPECT_EQ(zemuvc::Buffer(array).size(), 4U);
  EXPECT_EQ(zemuvc::Bytes(zemuvc::Buffer(array)).data(), array);
  static_assert(!std::is_convertible_v<const std::vector<std::uint8_t>&, zemuvc::Buffer>);
  static_assert(!std::is_convertible_v<std::vector<char>&, zemuvc::Bytes>);
}

// The header repeats what it may not include.
TEST_F(WrappersTest, UnitsAreThoseOfTheLibrary) {
  const std::pair<GUID, GUID> units[] = {
      {zemuvc::kVendorUnit, zem::VendorXu},
      {zemuvc::kH264Unit, zem::H264Xu},
      {zemuvc::kSkypeUnit, zem::SkypeXu},
      {zemuvc::kTirellaUnit, zem::TirellaXu},
      {zemuvc::kOrvaUnit, zem::OrvaXu},
      {zemuvc::kEncodingUnit, zem::EncodingUnitXu},
      {zemuvc::kStreamProbeUnit, zem::StreamProbeXu},
  };
  for (std::size_t index = 0; index < std::size(units); ++index) {
    EXPECT_EQ(std::memcmp(&units[index].first, &units[index].second, sizeof(GUID)), 0) << index;
  }
}

TEST_F(WrappersTest, TextGoesBothWays) {
  const std::string text = "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x93\xB7";
  EXPECT_EQ(zemuvc::FromUtf8(text), L"a\u00E4\u20AC\U0001F4F7");
  EXPECT_EQ(zemuvc::ToUtf8(zemuvc::FromUtf8(text)), text);
  // Bytes that are no UTF-8: a lone one, one that is cut short, a surrogate, one too long.
  for (const std::string& stray : {"\x80", "a\xE2\x82", "\xED\xA0\x80", "\xC0\xAF", "\xFF"}) {
    EXPECT_EQ(zemuvc::ToUtf8(zemuvc::FromUtf8(stray)), stray);
  }
  EXPECT_EQ(zemuvc::FromUtf8("\x80"), std::wstring(1, static_cast<wchar_t>(0xDC80)));
  EXPECT_EQ(zemuvc::ToUtf8(std::wstring(1, static_cast<wchar_t>(0xD800))), "?");
}

}  // namespace
