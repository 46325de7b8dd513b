// A camera that is listed and cannot be opened: what the tool says, and what to do.
#include <string>

#include "tests/support/device_test.h"
#include "tools/zemctl/camera/session.h"

namespace {

using zem::testing::DeviceTest;
using zemctl::CallFailure;
using zemctl::DeviceSelection;
using zemctl::Failure;
using zemctl::Session;
using zemctl::Use;

class OpeningRefusalTest : public DeviceTest {
 protected:
  OpeningRefusalTest() { ListNothing(); }

  // What opening the default camera comes to when its binding gives `result`.
  Failure Open(std::uint32_t result, Use use) {
    auto& listed = List(L"usb#vid_5a45&pid_8c00&mi_00#1-2", nullptr);
    listed.friendlyName = L"Camera";
    listed.bindOnce = [result](IBaseFilter** filter) {
      *filter = nullptr;
      return static_cast<HRESULT>(result);
    };
    try {
      const Session session(DeviceSelection(), use);
    } catch (const CallFailure& failure) {
      return failure.failure();
    }
    return {};
  }
};

TEST_F(OpeningRefusalTest, SaysThatAPermissionIsMissing) {
  const Failure failure = Open(0x80070005U, Use::kReading);
  EXPECT_EQ(failure.code, zemctl::kTransferFailed);
  EXPECT_EQ(failure.function, "ZEMAPI_OpenDevice");
  EXPECT_EQ(failure.result, "0x80070005");
  EXPECT_EQ(failure.message, "\"Camera\" (5a45:8c00) at 1-2 may not be opened by this user");
  EXPECT_EQ(failure.cameraState, "it was not opened, and nothing was sent");
  EXPECT_EQ(failure.next,
            "Install the project's udev rules, packaging/60-zem-cameras.rules, and plug the camera "
            "in again; or run this as root.");
}

TEST_F(OpeningRefusalTest, SaysThatTheCameraIsBusy) {
  const Failure failure = Open(0x800700AAU, Use::kWriting);
  EXPECT_EQ(failure.code, zemctl::kTransferFailed);
  EXPECT_EQ(failure.result, "0x800700AA");
  EXPECT_EQ(failure.message, "\"Camera\" (5a45:8c00) at 1-2 is in use by another program");
  EXPECT_EQ(failure.cameraState, "it was not opened, and nothing was sent");
  EXPECT_EQ(failure.next, "End the program that uses it; \"sudo fuser -v /dev/video*\" names it.");
}

TEST_F(OpeningRefusalTest, LeavesOtherFailuresTheirWords) {
  const Failure failure = Open(0x8007001FU, Use::kReading);
  EXPECT_EQ(failure.message, zemctl::Describe(static_cast<ZemResult>(0x8007001FU)).meaning);
  EXPECT_EQ(failure.cameraState, "it was not opened, and nothing was sent");
}

}  // namespace
