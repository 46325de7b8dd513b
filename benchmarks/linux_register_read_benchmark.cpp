// What the library adds to a register read on Linux: the export, down to the ioctls, against the
// bare ioctls that the read consists of, over a kernel whose ioctl costs nothing. The last line
// prints both. Sysfs is a test's; it is read when the camera is opened, and not again.
#include <benchmark/benchmark.h>
#include <linux/usb/video.h>
#include <linux/uvcvideo.h>
#include <linux/videodev2.h>

#include <array>
#include <cstdint>
#include <cstdio>

#include "benchmarks/keeping_reporter.h"
#include "include/ZemUVCExtApi.h"
#include "platform/linux/kernel.h"
#include "tests/linux/linux_test.h"

namespace {

constexpr std::uint8_t kControlLength = 8;
constexpr int kDescriptor = 3;
std::uint64_t ioctls = 0;

class Machine : public zem::testing::LinuxTest {
 public:
  Machine() { AddCamera(0, "1-1"); }
  void TestBody() override {}
};

void ExportedRegisterRead(benchmark::State& state) {
  const Machine machine;
  void* handle = nullptr;
  if (ZEMAPI_OpenDevice(0, &handle) != ZEM_OK) {
    state.SkipWithError("the camera could not be opened");
    return;
  }
  unsigned short value = 0;
  ioctls = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(ZEMAPI_GetRegister(handle, 0x123456, &value));
  }
  state.counters["ioctls"] =
      benchmark::Counter(static_cast<double>(ioctls), benchmark::Counter::kAvgIterations);
  ZEMAPI_CloseDevice(&handle);
}
BENCHMARK(ExportedRegisterRead);

int Query(std::uint8_t selector, std::uint8_t query, std::uint16_t length, std::uint8_t* data) {
  uvc_xu_control_query request = {3, selector, query, length, data};
  return zem::platform::kernel::Control(kDescriptor, UVCIOC_CTRL_QUERY, &request);
}

// The same four requests, for the command and for the reply.
void BareIoctls(benchmark::State& state) {
  std::array<std::uint8_t, kControlLength> data = {};
  std::array<std::uint8_t, 2> length = {};
  ioctls = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(Query(1, UVC_GET_LEN, length.size(), length.data()));
    benchmark::DoNotOptimize(Query(1, UVC_SET_CUR, data.size(), data.data()));
    benchmark::DoNotOptimize(Query(2, UVC_GET_LEN, length.size(), length.data()));
    benchmark::DoNotOptimize(Query(2, UVC_GET_CUR, data.size(), data.data()));
  }
  state.counters["ioctls"] =
      benchmark::Counter(static_cast<double>(ioctls), benchmark::Counter::kAvgIterations);
}
BENCHMARK(BareIoctls);

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
  benchmark::Initialize(&argc, argv);
  zem::benchmarks::KeepingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  std::printf("A register read takes %.0f ns, its bare ioctls %.0f ns.\n",
              reporter.times["ExportedRegisterRead"], reporter.times["BareIoctls"]);
  return 0;
}
