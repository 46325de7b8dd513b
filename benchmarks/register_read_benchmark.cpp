// What the library adds to a register read: the export against the bare property requests that the
// read consists of, on a camera that costs nothing. The last line prints the difference.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>

#include "benchmarks/bare_transfer.h"
#include "benchmarks/keeping_reporter.h"
#include "include/ZemUVCExtApi.h"
#include "platform/simulated/simulated_platform.h"
#include "tests/support/free_camera.h"

namespace {

using zem::Direction;
using zem::benchmarks::BareTransfer;
using zem::testing::FreeCamera;

void ExportedRegisterRead(benchmark::State& state) {
  zem::platform::simulated::TheSystem().recordDebuggerLines = false;
  FreeCamera camera;
  void* handle = nullptr;
  if (ZEMAPI_OpenDeviceBySourceFilter(&camera, &handle) != 0) {
    state.SkipWithError("the handle could not be made");
    return;
  }
  unsigned short value = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(ZEMAPI_GetRegister(handle, 0x123456, &value));
  }
  ZEMAPI_CloseDevice(&handle);
}
BENCHMARK(ExportedRegisterRead);

// The same fourteen requests, for the command and for the reply.
void BareRequests(benchmark::State& state) {
  FreeCamera camera;
  IKsControl* control = &camera;
  std::array<unsigned char, 8> data = {};
  for (auto _ : state) {
    // As to the library, any implementation may stand behind the interface.
    benchmark::DoNotOptimize(control);
    benchmark::DoNotOptimize(BareTransfer(control, Direction::kSet, 1, data.data(), data.size()));
    benchmark::DoNotOptimize(BareTransfer(control, Direction::kGet, 2, data.data(), data.size()));
  }
}
BENCHMARK(BareRequests);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  zem::benchmarks::KeepingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  std::printf("The library adds %.0f ns to a register read.\n",
              reporter.times["ExportedRegisterRead"] - reporter.times["BareRequests"]);
  return 0;
}
