// Image tuning, standard controls and sound of the simulated camera, through the system.
#include <array>
#include <string>

#include "include/ZemUVCExtApi.h"
#include "platform/com_ptr.h"
#include "tests/windows/support/opened_camera.h"
#include "tests/windows/support/simulator_guard.h"

namespace {

using zem::ComPtr;
using zem::testing::OpenedCamera;
using zem::testing::SimulatorGuard;

constexpr const wchar_t* kMicrophone =
    L"@device:sw:{33D9A762-90C8-11D0-BD43-00A0C911CE86}\\USB#vid_5a45&pid_8c00&mi_02#"
    L"zem-simulator&0";

constexpr auto kNoInterface = static_cast<ZemResult>(0x80004002);
constexpr auto kUnknownControl = static_cast<ZemResult>(0x80070490);

TEST(ControlsTest, TuningIsKeptAndReadBack) {
  const SimulatorGuard simulator;
  const OpenedCamera camera;
  EXPECT_EQ(ZEMAPI_EnableAF(camera, 1), 0);
  EXPECT_EQ(ZEMAPI_EnableAE(camera, 1), 0);
  EXPECT_EQ(ZEMAPI_SetShadding(camera, 1), 0);
  EXPECT_EQ(ZEMAPI_SetImageEffect(camera, 1), 0);
  EXPECT_EQ(ZEMAPI_SetMjpgQuality(camera), 0);
  EXPECT_EQ(ZEMAPI_SetMaxQP(camera, 40), 0);
  EXPECT_EQ(ZEMAPI_SetMinQP(camera, 20), 0);
  EXPECT_EQ(ZEMAPI_SetVideoRecMode(camera, 2), 0);
  EXPECT_EQ(ZEMAPI_SetAWBGain(camera, 0x0102, 0x0304, 0x0506), 0);
  std::array<unsigned short, 3> gains = {};
  EXPECT_EQ(ZEMAPI_GetAWBGain(camera, &gains[0], &gains[1], &gains[2]), 0);
  EXPECT_EQ(gains, (std::array<unsigned short, 3>{0x0102, 0x0304, 0x0506}));
  std::array<unsigned char, 6> settings = {6, 5, 4, 3, 2, 1};
  EXPECT_EQ(ZEMAPI_SetMiscSetting(camera, settings.data()), 0);
  settings.fill(0);
  EXPECT_EQ(ZEMAPI_GetMiscSetting(camera, settings.data()), 0);
  EXPECT_EQ(settings, (std::array<unsigned char, 6>{6, 5, 4, 3, 2, 1}));
}

TEST(ControlsTest, Information) {
  const SimulatorGuard simulator;
  const OpenedCamera camera;
  std::array<char, 12> date = {};
  EXPECT_EQ(ZEMAPI_GetFWBuildDate(camera, date.data()), 0);
  EXPECT_EQ(std::string(date.data()), "2024.Mar.05");
  std::array<unsigned char, 32> serial = {};
  EXPECT_EQ(ZEMAPI_GetSensorSN(camera, serial.data()), 0);
  EXPECT_EQ(serial[0], 0xA0);
  EXPECT_EQ(serial[31], 0xBF);
  std::array<unsigned, 9> values = {};
  EXPECT_EQ(ZEMAPI_GetAFACC(camera, values.data()), 0);
  EXPECT_EQ(values, (std::array<unsigned, 9>{0x100, 0x101, 0x102, 0x103, 0x104, 0x105, 0x106, 0x107,
                                             0x108}));
}

TEST(ControlsTest, StandardControlsHaveRangesAndKeepWhatIsSet) {
  const SimulatorGuard simulator;
  const OpenedCamera camera;
  std::array<ZemLong, 5> range = {};
  EXPECT_EQ(
      ZEMAPI_GetVideoProcAmpRange(camera, 0, &range[0], &range[1], &range[2], &range[3], &range[4]),
      0);
  EXPECT_EQ(range, (std::array<ZemLong, 5>{0, 255, 1, 128, 2}));
  EXPECT_EQ(ZEMAPI_GetCameraControlRange(camera, 4, &range[0], &range[1], &range[2], &range[3],
                                         &range[4]),
            0);
  EXPECT_EQ(range, (std::array<ZemLong, 5>{-11, -2, 1, -5, 3}));
  ZemLong value = 0;
  ZemLong flags = 0;
  EXPECT_EQ(ZEMAPI_SetVideoProcAmp(camera, 0, 200, 2), 0);
  EXPECT_EQ(ZEMAPI_GetVideoProcAmp(camera, 0, &value, &flags), 0);
  EXPECT_EQ(value, 200);
  EXPECT_EQ(flags, 2);
  EXPECT_EQ(ZEMAPI_SetCameraControl(camera, 4, -7, 2), 0);
  EXPECT_EQ(ZEMAPI_GetCameraControl(camera, 4, &value, &flags), 0);
  EXPECT_EQ(value, -7);
  EXPECT_EQ(ZEMAPI_GetCameraControl(camera, 2, &value, &flags), kUnknownControl);
}

TEST(ControlsTest, ManualGainSwitchesPropertySeven) {
  const SimulatorGuard simulator;
  const OpenedCamera camera;
  ZemLong value = 0;
  ZemLong flags = 0;
  EXPECT_EQ(ZEMAPI_EnableManualGainCtrl(camera, 1), 0);
  EXPECT_EQ(ZEMAPI_GetVideoProcAmp(camera, 7, &value, &flags), 0);
  EXPECT_EQ(flags, 2);
  EXPECT_EQ(ZEMAPI_EnableManualGainCtrl(camera, 0), 0);
  EXPECT_EQ(ZEMAPI_GetVideoProcAmp(camera, 7, &value, &flags), 0);
  EXPECT_EQ(flags, 1);
  EXPECT_EQ(value, 4000);
}

TEST(ControlsTest, CameraWithoutStandardControls) {
  const SimulatorGuard simulator(
      R"({"cameras": [{"videoControls": false, "cameraControls": false, "microphone": false}]})");
  const OpenedCamera camera;
  ZemLong value = 0;
  ZemLong flags = 0;
  EXPECT_EQ(ZEMAPI_GetVideoProcAmp(camera, 0, &value, &flags), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(ZEMAPI_GetCameraControl(camera, 0, &value, &flags), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(ZEMAPI_EnableManualGainCtrl(camera, 1), ZEM_E_DEVICE_REFUSED);
  void* node = nullptr;
  EXPECT_EQ(ZEMAPI_Get_IVideoProcAmp_Interface(camera, &node), kNoInterface);
  EXPECT_EQ(node, nullptr);
  IBaseFilter* audio = nullptr;
  EXPECT_EQ(ZEMAPI_AudioOpenDeviceByPath(kMicrophone, &audio), ZEM_E_FAIL);
}

TEST(ControlsTest, NodeInterfaceIsTheCallersToRelease) {
  const SimulatorGuard simulator;
  const OpenedCamera camera;
  void* node = nullptr;
  ASSERT_EQ(ZEMAPI_Get_IVideoProcAmp_Interface(camera, &node), 0);
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(static_cast<IUnknown*>(node)->Release(), 0U);
}

TEST(ControlsTest, MicrophoneIsFoundAmongTheAudioInputsAndTakesItsLevel) {
  const SimulatorGuard simulator;
  IBaseFilter* audio = nullptr;
  ASSERT_EQ(ZEMAPI_AudioOpenDeviceByPath(kMicrophone, &audio), 0);
  ComPtr<IAMAudioInputMixer> mixer;
  ASSERT_EQ(audio->QueryInterface(zem::IID_IAMAudioInputMixer, mixer.ReceiveVoid()), 0);
  double level = 0;
  EXPECT_EQ(ZEMAPI_AudioSetVolume(audio, 50), 0);
  EXPECT_EQ(mixer->get_MixLevel(&level), 0);
  EXPECT_EQ(level, 0.5);
  EXPECT_EQ(ZEMAPI_AudioSetVolume(audio, 150), 0);
  EXPECT_EQ(mixer->get_MixLevel(&level), 0);
  EXPECT_EQ(level, 1.5);
  mixer.Reset();
  ZEMAPI_AudioCloseDevice(&audio);
  EXPECT_EQ(audio, nullptr);
}

TEST(ControlsTest, MicrophoneWithoutAMixer) {
  const SimulatorGuard simulator(R"({"cameras": [{"mixer": false}]})");
  IBaseFilter* audio = nullptr;
  ASSERT_EQ(ZEMAPI_AudioOpenDeviceByPath(kMicrophone, &audio), 0);
  EXPECT_EQ(ZEMAPI_AudioSetVolume(audio, 50), kNoInterface);
  ZEMAPI_AudioCloseDevice(&audio);
}

}  // namespace
