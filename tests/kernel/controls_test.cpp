// Standard controls set by the library and seen by V4L2, and the other way round.
#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "include/ZemUVCExtApi.h"
#include "tests/kernel/plugged_camera.h"
#include "tests/linux/platform_results.h"
#include "tests/windows/support/opened_camera.h"

namespace {

using zem::testing::kInvalidParameterResult;
using zem::testing::kNotFoundResult;
using zem::testing::OpenedCamera;
using zem::testing::PluggedCamera;

constexpr ZemLong kAutomatic = 1;
constexpr ZemLong kManual = 2;
// Properties.
constexpr ZemLong kBrightness = 0;
constexpr ZemLong kWhiteBalance = 7;
constexpr ZemLong kPan = 0;
constexpr ZemLong kRoll = 2;
constexpr ZemLong kExposure = 4;

// The camera as any other program sees it.
class V4l2 {
 public:
  V4l2() : file_(open(zem::testing::kVideoFile, O_RDWR)) { EXPECT_GE(file_, 0); }
  ~V4l2() { close(file_); }
  V4l2(const V4l2&) = delete;
  V4l2& operator=(const V4l2&) = delete;

  int Get(unsigned id) const {
    v4l2_control control = {id, 0};
    EXPECT_EQ(ioctl(file_, VIDIOC_G_CTRL, &control), 0) << id;
    return control.value;
  }
  void Set(unsigned id, int value) const {
    v4l2_control control = {id, value};
    EXPECT_EQ(ioctl(file_, VIDIOC_S_CTRL, &control), 0) << id;
  }

 private:
  int file_;
};

TEST(Controls, SetByTheLibraryAndSeenByV4l2) {
  PluggedCamera plugged;
  const OpenedCamera camera;
  const V4l2 v4l2;
  EXPECT_EQ(ZEMAPI_SetVideoProcAmp(camera, kBrightness, 200, kManual), 0);
  EXPECT_EQ(v4l2.Get(V4L2_CID_BRIGHTNESS), 200);
  EXPECT_EQ(ZEMAPI_SetCameraControl(camera, kExposure, -7, kManual), 0);
  EXPECT_EQ(v4l2.Get(V4L2_CID_EXPOSURE_AUTO), V4L2_EXPOSURE_MANUAL);
  EXPECT_EQ(v4l2.Get(V4L2_CID_EXPOSURE_ABSOLUTE), 78) << "1/128 s in 100 us";
  EXPECT_EQ(ZEMAPI_SetCameraControl(camera, kExposure, 0, kAutomatic), 0);
  EXPECT_EQ(v4l2.Get(V4L2_CID_EXPOSURE_AUTO), V4L2_EXPOSURE_APERTURE_PRIORITY);
  EXPECT_EQ(ZEMAPI_SetVideoProcAmp(camera, kWhiteBalance, 3000, kManual), 0);
  EXPECT_EQ(v4l2.Get(V4L2_CID_AUTO_WHITE_BALANCE), 0);
  EXPECT_EQ(v4l2.Get(V4L2_CID_WHITE_BALANCE_TEMPERATURE), 3000);
  EXPECT_EQ(ZEMAPI_SetCameraControl(camera, kPan, 7200, kManual), 0);
  EXPECT_EQ(v4l2.Get(V4L2_CID_PAN_ABSOLUTE), 25920000) << "arc seconds";
  EXPECT_EQ(plugged.TakeTransfers(),
            (zem::testing::Lines{"set 2.2 c8 00", "get 2.2 c8 00", "get 1.2 08", "set 1.2 01",
                                 "get 1.4 39 01 00 00", "set 1.4 4e 00 00 00", "set 1.2 08",
                                 "get 2.11 01", "set 2.11 00", "get 2.10 a0 0f", "set 2.10 b8 0b",
                                 "get 1.13 00 00 00 00 00 00 00 00",
                                 "set 1.13 00 82 8b 01 00 00 00 00"}));
}

TEST(Controls, SetByV4l2AndSeenByTheLibrary) {
  const PluggedCamera plugged;
  const OpenedCamera camera;
  const V4l2 v4l2;
  ZemLong value = 0;
  ZemLong flags = 0;
  v4l2.Set(V4L2_CID_BRIGHTNESS, 7);
  EXPECT_EQ(ZEMAPI_GetVideoProcAmp(camera, kBrightness, &value, &flags), 0);
  EXPECT_EQ(value, 7);
  EXPECT_EQ(flags, kManual);
  v4l2.Set(V4L2_CID_EXPOSURE_AUTO, V4L2_EXPOSURE_MANUAL);
  v4l2.Set(V4L2_CID_EXPOSURE_ABSOLUTE, 5);
  EXPECT_EQ(ZEMAPI_GetCameraControl(camera, kExposure, &value, &flags), 0);
  EXPECT_EQ(value, -11) << "the nearest to 0.5 ms";
  EXPECT_EQ(flags, kManual);
  v4l2.Set(V4L2_CID_EXPOSURE_AUTO, V4L2_EXPOSURE_APERTURE_PRIORITY);
  EXPECT_EQ(ZEMAPI_GetCameraControl(camera, kExposure, &value, &flags), 0);
  EXPECT_EQ(flags, kAutomatic);
  v4l2.Set(V4L2_CID_AUTO_WHITE_BALANCE, 0);
  EXPECT_EQ(ZEMAPI_GetVideoProcAmp(camera, kWhiteBalance, &value, &flags), 0);
  EXPECT_EQ(flags, kManual);
  v4l2.Set(V4L2_CID_PAN_ABSOLUTE, -12960000);
  EXPECT_EQ(ZEMAPI_GetCameraControl(camera, kPan, &value, &flags), 0);
  EXPECT_EQ(value, -3600);
}

TEST(Controls, RangesAndRefusals) {
  const PluggedCamera plugged;
  const OpenedCamera camera;
  std::array<ZemLong, 5> range = {};
  EXPECT_EQ(ZEMAPI_GetVideoProcAmpRange(camera, kBrightness, &range[0], &range[1], &range[2],
                                        &range[3], &range[4]),
            0);
  EXPECT_EQ(range, (std::array<ZemLong, 5>{0, 255, 1, 128, 2}));
  EXPECT_EQ(ZEMAPI_GetCameraControlRange(camera, kExposure, &range[0], &range[1], &range[2],
                                         &range[3], &range[4]),
            0);
  EXPECT_EQ(range, (std::array<ZemLong, 5>{-11, -2, 1, -5, 3}));
  ZemLong value = 0;
  ZemLong flags = 0;
  EXPECT_EQ(ZEMAPI_SetVideoProcAmp(camera, kBrightness, 256, kManual), kInvalidParameterResult);
  EXPECT_EQ(ZEMAPI_SetVideoProcAmp(camera, kBrightness, 20, kAutomatic), kInvalidParameterResult);
  EXPECT_EQ(ZEMAPI_GetVideoProcAmp(camera, kBrightness, &value, &flags), 0);
  EXPECT_EQ(value, 128) << "nothing was set";
  EXPECT_EQ(ZEMAPI_GetCameraControl(camera, kRoll, &value, &flags), kNotFoundResult);
}

}  // namespace
