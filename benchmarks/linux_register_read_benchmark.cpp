// What the library adds to a register read on Linux: the export, down to the ioctls, against the
// bare ioctls that the read consists of, over a kernel whose ioctl costs nothing. Sysfs is a
// test's; it is read when the camera is opened, and not again.
#include <linux/usb/video.h>
#include <linux/uvcvideo.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "benchmarks/paired_runs.h"
#include "include/ZemUVCExtApi.h"
#include "platform/linux/kernel.h"
#include "tests/linux/linux_test.h"

namespace {

using zem::benchmarks::Keep;
using zem::benchmarks::PairedRuns;
using zem::benchmarks::Table;
using zem::benchmarks::Text;

constexpr std::uint8_t kControlLength = 8;
constexpr int kDescriptor = 3;
// For the command and for the reply the length and the transfer.
constexpr std::uint64_t kIoctls = 4;
std::uint64_t ioctls = 0;

class Machine : public zem::testing::LinuxTest {
 public:
  Machine() { AddCamera(0, "1-1"); }
  void TestBody() override {}
};

int Query(std::uint8_t selector, std::uint8_t query, std::uint16_t length, std::uint8_t* data) {
  uvc_xu_control_query request = {3, selector, query, length, data};
  return zem::platform::kernel::Control(kDescriptor, UVCIOC_CTRL_QUERY, &request);
}

std::string MeasureRegisterRead(PairedRuns& runs) {
  const Machine machine;
  void* handle = nullptr;
  if (ZEMAPI_OpenDevice(0, &handle) != ZEM_OK) {
    std::fprintf(stderr, "the camera cannot be opened\n");
    std::exit(EXIT_FAILURE);
  }
  unsigned short value = 0;
  ioctls = 0;
  ZEMAPI_GetRegister(handle, 0x123456, &value);
  if (ioctls != kIoctls) {
    std::fprintf(stderr, "%llu ioctls instead of %llu\n", static_cast<unsigned long long>(ioctls),
                 static_cast<unsigned long long>(kIoctls));
    std::exit(EXIT_FAILURE);
  }
  std::array<std::uint8_t, kControlLength> data = {};
  std::array<std::uint8_t, 2> length = {};
  runs.Run(
      61, [&] { Keep(ZEMAPI_GetRegister(handle, 0x123456, &value)); },
      [&] {
        Keep(Query(1, UVC_GET_LEN, length.size(), length.data()));
        Keep(Query(1, UVC_SET_CUR, data.size(), data.data()));
        Keep(Query(2, UVC_GET_LEN, length.size(), length.data()));
        Keep(Query(2, UVC_GET_CUR, data.size(), data.data()));
      });
  // No such file: the kernel turns round at once.
  PairedRuns calls;
  calls.Run(
      31, [&] { Keep(ZEMAPI_GetRegister(handle, 0x123456, &value)); },
      [] { Keep(ioctl(-1, UVCIOC_CTRL_QUERY, nullptr)); });
  ZEMAPI_CloseDevice(&handle);
  return Text(
      "requests of the protocol: %llu ioctls, no more than the bare ones; into the kernel "
      "and back takes %.0f ns for each",
      static_cast<unsigned long long>(kIoctls), calls.Second().median);
}

}  // namespace

namespace zem::platform::kernel {

const char* SysFolder() { return testing::FakeKernel::Present().sysFolder().c_str(); }

const char* DeviceFolder() { return "/dev"; }

int Open(const char* /*path*/, int /*flags*/) { return kDescriptor; }

void Close(int /*descriptor*/) {}

// Called as any other function, though it stands here.
[[gnu::noinline]] int Control(int /*descriptor*/, unsigned long request, void* argument) {
  ++ioctls;
  if (request == VIDIOC_QUERYCAP) {
    static_cast<v4l2_capability*>(argument)->device_caps = V4L2_CAP_VIDEO_CAPTURE;
  } else if (request == UVCIOC_CTRL_QUERY) {
    const auto& query = *static_cast<uvc_xu_control_query*>(argument);
    if (query.query == UVC_GET_LEN) {
      query.data[0] = kControlLength;
    }
  }
  return 0;
}

int ControlWithSignalsHeld(int descriptor, unsigned long request, void* argument) {
  return Control(descriptor, request, argument);
}

}  // namespace zem::platform::kernel

int main(int argc, char** argv) {
  Table table(argc, argv, "A register read on Linux, beside its bare ioctls");
  table.Row("`ZEMAPI_GetRegister` on Linux", 1, " ns", MeasureRegisterRead);
  return 0;
}
