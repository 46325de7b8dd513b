// The standard controls of a camera over V4L2.
#include <linux/videodev2.h>

#include <cerrno>
#include <string>
#include <tuple>
#include <vector>

#include "tests/linux/linux_test.h"

namespace {

using zem::testing::FakeCamera;
using zem::testing::FakeV4l2Control;
using zem::testing::kAccessDeniedResult;
using zem::testing::kInvalidParameterResult;
using zem::testing::kNotConnectedResult;
using zem::testing::kNotFoundResult;
using zem::testing::kPointerResult;
using zem::testing::LinuxTest;
using zem::testing::PortFolder;

constexpr ZemLong kAutomaticFlag = 1;
constexpr ZemLong kManualFlag = 2;

// minimum, maximum, step, default, flags
using Range = std::tuple<ZemLong, ZemLong, ZemLong, ZemLong, ZemLong>;

class CameraControlsTest : public LinuxTest {
 protected:
  CameraControlsTest() {
    camera_ = AddCamera(0, "1-1");
    EXPECT_EQ(ZEMAPI_OpenDevice(0, &handle_), ZEM_OK);
    kernel.calls.clear();
  }
  ~CameraControlsTest() override { ZEMAPI_CloseDevice(&handle_); }

  std::map<std::uint32_t, FakeV4l2Control>& v4l2() { return camera_->v4l2; }
  FakeCamera& camera() { return *camera_; }

  Range VideoRange(ZemLong property) {
    Range range = {};
    auto& [minimum, maximum, step, first, flags] = range;
    EXPECT_EQ(
        ZEMAPI_GetVideoProcAmpRange(handle_, property, &minimum, &maximum, &step, &first, &flags),
        ZEM_OK);
    return range;
  }
  Range CameraRange(ZemLong property) {
    Range range = {};
    auto& [minimum, maximum, step, first, flags] = range;
    EXPECT_EQ(
        ZEMAPI_GetCameraControlRange(handle_, property, &minimum, &maximum, &step, &first, &flags),
        ZEM_OK);
    return range;
  }

  void AddExposure(std::vector<std::uint32_t> modes, std::int32_t mode) {
    v4l2()[V4L2_CID_EXPOSURE_ABSOLUTE] = {1, 5000, 1, 313, 625};
    v4l2()[V4L2_CID_EXPOSURE_AUTO] = {0, 3, 1, 3, mode, 0, std::move(modes)};
  }

  void* handle_ = nullptr;

 private:
  std::shared_ptr<FakeCamera> camera_;
};

TEST_F(CameraControlsTest, EachPropertyHasItsControlOfV4l2) {
  const std::pair<ZemLong, std::uint32_t> kVideo[] = {{0, V4L2_CID_BRIGHTNESS},
                                                      {1, V4L2_CID_CONTRAST},
                                                      {2, V4L2_CID_HUE},
                                                      {3, V4L2_CID_SATURATION},
                                                      {4, V4L2_CID_SHARPNESS},
                                                      {5, V4L2_CID_GAMMA},
                                                      {7, V4L2_CID_WHITE_BALANCE_TEMPERATURE},
                                                      {8, V4L2_CID_BACKLIGHT_COMPENSATION},
                                                      {9, V4L2_CID_GAIN}};
  for (const auto& [property, control] : kVideo) {
    v4l2().clear();
    v4l2()[control] = {-10, 300, 5, 20, 17};
    EXPECT_EQ(VideoRange(property), Range(-10, 300, 5, 20, kManualFlag)) << property;
    ZemLong value = 0;
    ZemLong flags = 0;
    EXPECT_EQ(ZEMAPI_GetVideoProcAmp(handle_, property, &value, &flags), ZEM_OK);
    EXPECT_EQ(value, 17);
    EXPECT_EQ(flags, kManualFlag);
    EXPECT_EQ(ZEMAPI_SetVideoProcAmp(handle_, property, 300, kManualFlag), ZEM_OK);
    EXPECT_EQ(v4l2()[control].value, 300);
  }
  const std::tuple<ZemLong, std::uint32_t, ZemLong> kTerminal[] = {
      {0, V4L2_CID_PAN_ABSOLUTE, 3600},
      {1, V4L2_CID_TILT_ABSOLUTE, 3600},
      {3, V4L2_CID_ZOOM_ABSOLUTE, 1},
      {5, V4L2_CID_IRIS_ABSOLUTE, 10},
      {6, V4L2_CID_FOCUS_ABSOLUTE, 1}};
  for (const auto& [property, control, ratio] : kTerminal) {
    v4l2().clear();
    v4l2()[control] = {-10 * ratio, 20 * ratio, 2 * ratio, 6 * ratio, 8 * ratio};
    EXPECT_EQ(CameraRange(property), Range(-10, 20, 2, 6, kManualFlag)) << property;
    ZemLong value = 0;
    ZemLong flags = 0;
    EXPECT_EQ(ZEMAPI_GetCameraControl(handle_, property, &value, &flags), ZEM_OK);
    EXPECT_EQ(value, 8);
    EXPECT_EQ(ZEMAPI_SetCameraControl(handle_, property, -10, kManualFlag), ZEM_OK);
    EXPECT_EQ(v4l2()[control].value, -10 * ratio);
  }
}

TEST_F(CameraControlsTest, PropertiesThatV4l2OrTheCameraLacks) {
  ZemLong numbers[5] = {};
  for (const ZemLong property : {-1, 6, 10, 13}) {
    EXPECT_EQ(ZEMAPI_GetVideoProcAmp(handle_, property, &numbers[0], &numbers[1]), kNotFoundResult);
    EXPECT_EQ(ZEMAPI_SetVideoProcAmp(handle_, property, 0, kManualFlag), kNotFoundResult);
  }
  for (const ZemLong property : {2, 7}) {
    EXPECT_EQ(ZEMAPI_GetCameraControlRange(handle_, property, &numbers[0], &numbers[1], &numbers[2],
                                           &numbers[3], &numbers[4]),
              kNotFoundResult);
    EXPECT_EQ(ZEMAPI_GetCameraControl(handle_, property, &numbers[0], &numbers[1]),
              kNotFoundResult);
  }
  EXPECT_TRUE(kernel.calls.empty());
  EXPECT_EQ(ZEMAPI_GetVideoProcAmp(handle_, 0, &numbers[0], &numbers[1]), kNotFoundResult);
  EXPECT_EQ(ZEMAPI_SetVideoProcAmp(handle_, 0, 0, kManualFlag), kNotFoundResult);
  v4l2()[V4L2_CID_BRIGHTNESS].flags = V4L2_CTRL_FLAG_DISABLED;
  EXPECT_EQ(ZEMAPI_SetVideoProcAmp(handle_, 0, 0, kManualFlag), kNotFoundResult);
}

// The control's own description is all that is asked of a camera for a property without a switch.
TEST_F(CameraControlsTest, PropertiesWithoutASwitch) {
  const std::pair<ZemLong, std::uint32_t> kVideo[] = {{1, V4L2_CID_CONTRAST},
                                                      {3, V4L2_CID_SATURATION},
                                                      {4, V4L2_CID_SHARPNESS},
                                                      {5, V4L2_CID_GAMMA},
                                                      {8, V4L2_CID_BACKLIGHT_COMPENSATION}};
  const std::pair<ZemLong, std::uint32_t> kTerminal[] = {{0, V4L2_CID_PAN_ABSOLUTE},
                                                         {1, V4L2_CID_TILT_ABSOLUTE},
                                                         {3, V4L2_CID_ZOOM_ABSOLUTE},
                                                         {5, V4L2_CID_IRIS_ABSOLUTE}};
  for (const auto& [property, control] : kVideo) {
    v4l2()[control] = {0, 10, 1, 5, 5};
    kernel.calls.clear();
    VideoRange(property);
    EXPECT_EQ(kernel.calls, (std::vector<std::string>{"video0 c0445624"})) << property;
  }
  for (const auto& [property, control] : kTerminal) {
    v4l2()[control] = {0, 36000, 1, 5, 5};
    kernel.calls.clear();
    CameraRange(property);
    EXPECT_EQ(kernel.calls, (std::vector<std::string>{"video0 c0445624"})) << property;
  }
}

TEST_F(CameraControlsTest, AutomaticAndManualBySwitch) {
  const std::pair<ZemLong, std::pair<std::uint32_t, std::uint32_t>> kSwitches[] = {
      {0, {V4L2_CID_BRIGHTNESS, V4L2_CID_AUTOBRIGHTNESS}},
      {2, {V4L2_CID_HUE, V4L2_CID_HUE_AUTO}},
      {7, {V4L2_CID_WHITE_BALANCE_TEMPERATURE, V4L2_CID_AUTO_WHITE_BALANCE}},
      {9, {V4L2_CID_GAIN, V4L2_CID_AUTOGAIN}}};
  for (const auto& [property, ids] : kSwitches) {
    v4l2().clear();
    v4l2()[ids.first] = {2800, 6500, 10, 4000, 5000};
    v4l2()[ids.second] = {0, 1, 1, 1, 1};
    EXPECT_EQ(VideoRange(property), Range(2800, 6500, 10, 4000, kAutomaticFlag | kManualFlag));
    ZemLong value = 0;
    ZemLong flags = 0;
    EXPECT_EQ(ZEMAPI_GetVideoProcAmp(handle_, property, &value, &flags), ZEM_OK);
    EXPECT_EQ(value, 5000);
    EXPECT_EQ(flags, kAutomaticFlag);
    EXPECT_EQ(ZEMAPI_SetVideoProcAmp(handle_, property, 3000, kManualFlag), ZEM_OK);
    EXPECT_EQ(v4l2()[ids.second].value, 0);
    EXPECT_EQ(v4l2()[ids.first].value, 3000);
    EXPECT_EQ(ZEMAPI_GetVideoProcAmp(handle_, property, &value, &flags), ZEM_OK);
    EXPECT_EQ(flags, kManualFlag);
    // An automatic control keeps its value; the one that comes with it is not looked at.
    EXPECT_EQ(ZEMAPI_SetVideoProcAmp(handle_, property, 999999, kAutomaticFlag), ZEM_OK);
    EXPECT_EQ(v4l2()[ids.second].value, 1);
    EXPECT_EQ(v4l2()[ids.first].value, 3000);
  }
}

TEST_F(CameraControlsTest, FocusHasASwitchToo) {
  v4l2()[V4L2_CID_FOCUS_ABSOLUTE] = {0, 250, 5, 0, 50};
  v4l2()[V4L2_CID_FOCUS_AUTO] = {0, 1, 1, 1, 1};
  EXPECT_EQ(CameraRange(6), Range(0, 250, 5, 0, kAutomaticFlag | kManualFlag));
  EXPECT_EQ(ZEMAPI_SetCameraControl(handle_, 6, 30, kManualFlag), ZEM_OK);
  EXPECT_EQ(v4l2()[V4L2_CID_FOCUS_AUTO].value, 0);
  EXPECT_EQ(v4l2()[V4L2_CID_FOCUS_ABSOLUTE].value, 30);
}

TEST_F(CameraControlsTest, RefusedBeforeAnythingIsSet) {
  v4l2()[V4L2_CID_WHITE_BALANCE_TEMPERATURE] = {2800, 6500, 10, 4000, 5000};
  v4l2()[V4L2_CID_AUTO_WHITE_BALANCE] = {0, 1, 1, 1, 1};
  for (const ZemLong flags : {0, 3, 4, -1}) {
    EXPECT_EQ(ZEMAPI_SetVideoProcAmp(handle_, 7, 3000, flags), kInvalidParameterResult) << flags;
  }
  EXPECT_EQ(ZEMAPI_SetVideoProcAmp(handle_, 7, 2799, kManualFlag), kInvalidParameterResult);
  EXPECT_EQ(ZEMAPI_SetVideoProcAmp(handle_, 7, 6501, kManualFlag), kInvalidParameterResult);
  v4l2()[V4L2_CID_CONTRAST] = {0, 10, 1, 5, 5};
  EXPECT_EQ(ZEMAPI_SetVideoProcAmp(handle_, 1, 5, kAutomaticFlag), kInvalidParameterResult)
      << "a control without an automatic";
  EXPECT_EQ(v4l2()[V4L2_CID_AUTO_WHITE_BALANCE].value, 1);
  EXPECT_EQ(v4l2()[V4L2_CID_WHITE_BALANCE_TEMPERATURE].value, 5000);
}

TEST_F(CameraControlsTest, ExposureInPowersOfTwoSeconds) {
  AddExposure({1, 3}, 1);
  EXPECT_EQ(CameraRange(4), Range(-13, -1, 1, -5, kAutomaticFlag | kManualFlag));
  ZemLong value = 0;
  ZemLong flags = 0;
  EXPECT_EQ(ZEMAPI_GetCameraControl(handle_, 4, &value, &flags), ZEM_OK);
  EXPECT_EQ(value, -4);
  EXPECT_EQ(flags, kManualFlag);
  EXPECT_EQ(ZEMAPI_SetCameraControl(handle_, 4, -7, kManualFlag), ZEM_OK);
  EXPECT_EQ(v4l2()[V4L2_CID_EXPOSURE_ABSOLUTE].value, 78);
  EXPECT_EQ(ZEMAPI_SetCameraControl(handle_, 4, 0, kManualFlag), kInvalidParameterResult);
  EXPECT_EQ(ZEMAPI_SetCameraControl(handle_, 4, -14, kManualFlag), kInvalidParameterResult);
}

// The nearest power of the range's ends may lie outside the range.
TEST_F(CameraControlsTest, ExposureAtTheEndsOfTheRangeIsTheEnd) {
  AddExposure({1, 3}, 1);
  v4l2()[V4L2_CID_EXPOSURE_ABSOLUTE] = {6, 2047, 1, 313, 625};
  EXPECT_EQ(CameraRange(4), Range(-11, -2, 1, -5, kAutomaticFlag | kManualFlag));
  EXPECT_EQ(ZEMAPI_SetCameraControl(handle_, 4, -11, kManualFlag), ZEM_OK);
  EXPECT_EQ(v4l2()[V4L2_CID_EXPOSURE_ABSOLUTE].value, 6);
  EXPECT_EQ(ZEMAPI_SetCameraControl(handle_, 4, -2, kManualFlag), ZEM_OK);
  EXPECT_EQ(v4l2()[V4L2_CID_EXPOSURE_ABSOLUTE].value, 2047);
}

TEST_F(CameraControlsTest, ExposureModesByWhatTheCameraHas) {
  struct Case {
    std::vector<std::uint32_t> menu;
    ZemLong caps;
    std::int32_t automatic;
    std::int32_t manual;
  };
  const Case kCases[] = {{{0, 1, 2, 3}, 3, 0, 1}, {{1, 3}, 3, 3, 1}, {{0, 2}, 3, 0, 2},
                         {{0}, 1, 0, -1},         {{1}, 2, -1, 1},   {{}, 2, -1, -1}};
  for (const Case& each : kCases) {
    AddExposure(each.menu, -7);
    EXPECT_EQ(std::get<4>(CameraRange(4)), each.caps);
    EXPECT_EQ(ZEMAPI_SetCameraControl(handle_, 4, -5, kAutomaticFlag),
              each.automatic >= 0 ? ZEM_OK : kInvalidParameterResult);
    EXPECT_EQ(v4l2()[V4L2_CID_EXPOSURE_AUTO].value, each.automatic >= 0 ? each.automatic : -7);
    const bool isManual = (each.caps & kManualFlag) != 0;
    EXPECT_EQ(ZEMAPI_SetCameraControl(handle_, 4, -5, kManualFlag),
              isManual ? ZEM_OK : kInvalidParameterResult);
    if (each.manual >= 0) {
      EXPECT_EQ(v4l2()[V4L2_CID_EXPOSURE_AUTO].value, each.manual);
    }
  }
}

TEST_F(CameraControlsTest, ExposureIsAutomaticInTwoOfItsModes) {
  const ZemLong kFlags[] = {kAutomaticFlag, kManualFlag, kManualFlag, kAutomaticFlag};
  for (std::int32_t mode = 0; mode < 4; ++mode) {
    AddExposure({0, 1, 2, 3}, mode);
    ZemLong value = 0;
    ZemLong flags = 0;
    EXPECT_EQ(ZEMAPI_GetCameraControl(handle_, 4, &value, &flags), ZEM_OK);
    EXPECT_EQ(flags, kFlags[mode]) << mode;
  }
}

TEST_F(CameraControlsTest, NullOutputsAreRefused) {
  v4l2()[V4L2_CID_BRIGHTNESS] = {0, 255, 1, 128, 128};
  ZemLong number = 0;
  EXPECT_EQ(ZEMAPI_GetVideoProcAmp(handle_, 0, nullptr, &number), kPointerResult);
  EXPECT_EQ(ZEMAPI_GetVideoProcAmp(handle_, 0, &number, nullptr), kPointerResult);
  EXPECT_EQ(ZEMAPI_GetVideoProcAmpRange(handle_, 0, &number, &number, &number, &number, nullptr),
            kPointerResult);
  v4l2()[V4L2_CID_PAN_ABSOLUTE] = {0, 3600, 3600, 0, 0};
  EXPECT_EQ(ZEMAPI_GetCameraControl(handle_, 0, nullptr, &number), kPointerResult);
  EXPECT_EQ(ZEMAPI_GetCameraControlRange(handle_, 0, nullptr, &number, &number, &number, &number),
            kPointerResult);
}

// Every ioctl of each operation failing in turn.
TEST_F(CameraControlsTest, EveryRequestFails) {
  AddExposure({1, 3}, 3);
  const auto get = [&] {
    ZemLong value = 0;
    ZemLong flags = 0;
    return ZEMAPI_GetCameraControl(handle_, 4, &value, &flags);
  };
  const auto set = [&] { return ZEMAPI_SetCameraControl(handle_, 4, -5, kManualFlag); };
  const auto range = [&] {
    ZemLong numbers[5] = {};
    return ZEMAPI_GetCameraControlRange(handle_, 4, &numbers[0], &numbers[1], &numbers[2],
                                        &numbers[3], &numbers[4]);
  };
  const std::pair<std::function<ZemResult()>, int> kOperations[] = {{get, 6}, {set, 7}, {range, 5}};
  for (const auto& [run, calls] : kOperations) {
    kernel.calls.clear();
    kernel.failingCall = -1;
    EXPECT_EQ(run(), ZEM_OK);
    EXPECT_EQ(kernel.calls.size(), static_cast<std::size_t>(calls));
    for (int call = 0; call < calls; ++call) {
      for (const auto& [error, expected] :
           {std::pair(ENODEV, kNotConnectedResult), std::pair(EPERM, kAccessDeniedResult)}) {
        kernel.calls.clear();
        kernel.failingCall = call;
        kernel.failure = -error;
        EXPECT_EQ(run(), expected) << call;
        EXPECT_EQ(kernel.calls.size(), static_cast<std::size_t>(call) + 1);
      }
    }
  }
}

TEST_F(CameraControlsTest, ASettingThatTheDriverRefusesIsToldByItsError) {
  v4l2()[V4L2_CID_BRIGHTNESS] = {0, 255, 1, 128, 128};
  // The range, the switch that is not there, the setting itself.
  kernel.failingCall = 2;
  kernel.failure = -EACCES;
  EXPECT_EQ(ZEMAPI_SetVideoProcAmp(handle_, 0, 1, kManualFlag), kAccessDeniedResult);
}

TEST_F(CameraControlsTest, ACameraWithoutTheUnitHasNoSuchControls) {
  std::string descriptors = zem::testing::CameraDescriptors();
  const std::size_t terminal = descriptors.find(std::string("\x12\x24\x02\x01\x01\x02", 6));
  const std::size_t processing = descriptors.find(std::string("\x0C\x24\x05\x02", 4));
  ASSERT_NE(terminal, std::string::npos);
  ASSERT_NE(processing, std::string::npos);
  descriptors[terminal + 4] = 0x02;    // a media transport
  descriptors[processing + 2] = 0x42;  // no unit
  kernel.AddFile(PortFolder("1-1") + "/descriptors", descriptors);
  void* handle = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDevice(0, &handle), ZEM_OK);
  ZemLong value = 0;
  ZemLong flags = 0;
  EXPECT_EQ(ZEMAPI_GetVideoProcAmp(handle, 0, &value, &flags), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(ZEMAPI_GetCameraControl(handle, 0, &value, &flags), ZEM_E_DEVICE_REFUSED);
  ZEMAPI_CloseDevice(&handle);
}

}  // namespace
