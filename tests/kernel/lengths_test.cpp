// Lengths, and the errors of the kernel, as the library reports them.
#include <sys/ioctl.h>

#include <chrono>
#include <string>
#include <utility>

#include "include/ZemUVCExtApi.h"
#include "tests/kernel/plugged_camera.h"
#include "tests/linux/platform_results.h"
#include "tests/windows/support/opened_camera.h"

namespace {

using zem::testing::kBusyResult;
using zem::testing::kDeviceErrorResult;
using zem::testing::kGeneralFailureResult;
using zem::testing::kInvalidFunctionResult;
using zem::testing::kInvalidParameterResult;
using zem::testing::kInvalidStateResult;
using zem::testing::kMoreDataResult;
using zem::testing::kNotConnectedResult;
using zem::testing::kNotFoundResult;
using zem::testing::kNotReadyResult;
using zem::testing::kTimeoutResult;
using zem::testing::Lines;
using zem::testing::OpenedCamera;
using zem::testing::PluggedCamera;
using zem::testing::WaitUntil;
using Bytes = std::vector<unsigned char>;

TEST(Lengths, OfABuffer) {
  PluggedCamera plugged;
  const OpenedCamera camera;
  Bytes data(20, 0x55);
  ZemULong count = 0;
  EXPECT_EQ(ZEMAPI_ZemExtGet(camera, 2, data.data(), 0, &count), kMoreDataResult);
  EXPECT_EQ(count, 8U);
  EXPECT_EQ(ZEMAPI_ZemExtGet(camera, 2, data.data(), 7, &count), kMoreDataResult);
  EXPECT_EQ(count, 8U);
  EXPECT_EQ(data, Bytes(20, 0x55));
  EXPECT_EQ(ZEMAPI_ZemExtSet(camera, 1, data.data(), 7, &count), kMoreDataResult);
  EXPECT_EQ(count, 8U);
  EXPECT_EQ(plugged.TakeTransfers(), Lines{}) << "nothing reaches the camera";
  EXPECT_EQ(ZEMAPI_ZemExtSet(camera, 1, data.data(), 20, &count), 0);
  EXPECT_EQ(count, 8U);
  EXPECT_EQ(ZEMAPI_ZemExtGet(camera, 2, data.data(), 20, &count), 0);
  EXPECT_EQ(count, 8U);
  EXPECT_EQ(data[0], 1);
  EXPECT_EQ(data[8], 0x55);
  EXPECT_EQ(plugged.TakeTransfers(),
            (Lines{"set 3.1 55 55 55 55 55 55 55 55", "get 3.2 01 00 00 00 00 00 00 00"}));
}

TEST(Lengths, OfAnAnswer) {
  const PluggedCamera plugged(R"({"cameras": [{"faults": ["short@2=3"]}]})");
  const OpenedCamera camera;
  Bytes data = {0x0B, 0, 0, 0, 0, 0, 0, 0};
  ZemULong count = 0;
  EXPECT_EQ(ZEMAPI_ZemExtSet(camera, 1, data.data(), 8, &count), 0);
  data.assign(8, 0x55);
  EXPECT_EQ(ZEMAPI_ZemExtGet(camera, 2, data.data(), 8, &count), 0);
  EXPECT_EQ(count, 3U);
  EXPECT_EQ(Bytes(data.begin(), data.begin() + 3), (Bytes{0, 0, 1}));
}

TEST(Errors, OfControls) {
  const PluggedCamera plugged(
      R"({"cameras": [{"faults": ["fail@1", "silent@3", "length@5=600"]}]})");
  const OpenedCamera camera;
  Bytes data(512);
  ZemULong count = 0;
  EXPECT_EQ(ZEMAPI_ZemExtGet(camera, 2, data.data(), 8, &count), kGeneralFailureResult) << "EPIPE";
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(ZEMAPI_ZemExtGet(camera, 2, data.data(), 8, &count), 0) << "but the next is answered";
  EXPECT_EQ(ZEMAPI_ZemExtGet(camera, 2, data.data(), 8, &count), kTimeoutResult) << "ETIMEDOUT";
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(ZEMAPI_ZemExtGet(camera, 2, data.data(), 8, &count), 0) << "but the next is answered";
  EXPECT_EQ(ZEMAPI_ZemExtGet(camera, 2, data.data(), 8, &count), kDeviceErrorResult) << "EOVERFLOW";
  EXPECT_EQ(ZEMAPI_ZemExtGet(camera, 12, data.data(), 512, &count), kNotFoundResult) << "ENOENT";
  EXPECT_EQ(ZEMAPI_ZemExtGet(camera, 1, data.data(), 8, &count), kInvalidFunctionResult)
      << "EBADRQC";
  EXPECT_EQ(ZEMAPI_ZemExtSet(camera, 2, data.data(), 8, &count), kInvalidFunctionResult)
      << "EBADRQC";
  const GUID absent = ZEM_TIRELLA_XU;
  EXPECT_EQ(ZEMAPI_UvcExtGet(camera, &absent, 2, data.data(), 1, &count), kNotFoundResult);
}

// Each reason that the video class has for a stall, and one that it has not.
TEST(Errors, OfTheReasonsForAStall) {
  const PluggedCamera plugged(R"({"cameras": [{"faults": ["fail@1=1", "fail@2=2", "fail@3=3",
      "fail@4=4", "fail@5=5", "fail@6=6", "fail@7=7", "fail@8=8", "fail@9=9"]}]})");
  const OpenedCamera camera;
  const std::pair<const char*, ZemResult> kExpected[] = {
      {"EBUSY", kBusyResult},           {"EILSEQ", kInvalidStateResult},
      {"EREMOTE", kNotReadyResult},     {"ERANGE", kInvalidParameterResult},
      {"EIO", kDeviceErrorResult},      {"EIO", kDeviceErrorResult},
      {"EIO", kDeviceErrorResult},      {"EINVAL", kInvalidParameterResult},
      {"EPIPE", kGeneralFailureResult},
  };
  for (const auto& [name, expected] : kExpected) {
    Bytes data(8);
    ZemULong count = 7;
    EXPECT_EQ(ZEMAPI_ZemExtGet(camera, 2, data.data(), 8, &count), expected) << name;
    EXPECT_EQ(count, 0U);
  }
}

TEST(Errors, OfACameraThatIsUnplugged) {
  PluggedCamera plugged(R"({"cameras": [{"faults": ["unplug@3"]}]})");
  const OpenedCamera camera;
  Bytes data(8);
  ZemULong count = 7;
  EXPECT_EQ(ZEMAPI_ZemExtSet(camera, 1, data.data(), 8, &count), 0);
  EXPECT_EQ(ZEMAPI_ZemExtGet(camera, 2, data.data(), 8, &count), 0);
  EXPECT_EQ(ZEMAPI_ZemExtGet(camera, 2, data.data(), 8, &count), kNotConnectedResult)
      << "in a request";
  EXPECT_EQ(count, 0U);
  EXPECT_TRUE(WaitUntil(zem::testing::IsCameraGone));
  EXPECT_EQ(ZEMAPI_ZemExtGet(camera, 2, data.data(), 8, &count), kNotConnectedResult)
      << "behind it";
  void* second = nullptr;
  EXPECT_EQ(ZEMAPI_OpenDevice(0, &second), ZEM_E_FAIL);
}

}  // namespace
