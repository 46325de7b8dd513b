// What the library adds to a register read: the export against the bare property requests that the
// read consists of, on a camera that costs nothing. The last line prints the difference.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <map>
#include <string>

#include "device/extension_units.h"
#include "device/property_request.h"
#include "include/ZemUVCExtApi.h"
#include "platform/simulated/simulated_platform.h"
#include "tests/support/bare_camera.h"

namespace {

// A camera whose vendor unit is its third node, as on the real ones.
class FreeCamera final : public zem::testing::BareCamera {
 public:
  FreeCamera() { nodeCount = 3; }

  HRESULT Request(const KSP_NODE& request, void* data, ULONG length,
                  ULONG* bytesReturned) override {
    *bytesReturned = sizeof(GUID);
    if (request.Property.Id == 0 && request.NodeId == 2 && length >= sizeof(GUID)) {
      std::memcpy(data, &zem::VendorXu, sizeof(GUID));
    }
    return S_OK;
  }
};

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

// The same fourteen requests: for the command and for the reply, size and value of the information
// block of each of three nodes, and the transfer itself.
void BareRequests(benchmark::State& state) {
  FreeCamera camera;
  IKsControl* control = &camera;
  std::array<unsigned char, 32> data = {};
  for (auto _ : state) {
    // As to the library, any implementation may stand behind the interface.
    benchmark::DoNotOptimize(control);
    for (const zem::Direction direction : {zem::Direction::kSet, zem::Direction::kGet}) {
      ULONG moved = 0;
      for (ULONG node = 0; node < 3; ++node) {
        KSP_NODE request = zem::MakeNodeRequest(zem::Direction::kGet, zem::VendorXu, 0, node);
        zem::IssueRequest(control, request, nullptr, 0, &moved);
        zem::IssueRequest(control, request, data.data(), moved, &moved);
      }
      KSP_NODE request = zem::MakeNodeRequest(direction, zem::VendorXu, 1, 2);
      benchmark::DoNotOptimize(zem::IssueRequest(control, request, data.data(), 8, &moved));
    }
  }
}
BENCHMARK(BareRequests);

// Prints the table as usual and keeps the times for the last line.
class KeepingReporter : public benchmark::ConsoleReporter {
 public:
  KeepingReporter() : ConsoleReporter(OO_None) {}
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      nanoseconds[run.benchmark_name()] = run.GetAdjustedRealTime();
    }
    ConsoleReporter::ReportRuns(runs);
  }
  std::map<std::string, double> nanoseconds;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  KeepingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  std::printf("The library adds %.0f ns to a register read.\n",
              reporter.nanoseconds["ExportedRegisterRead"] - reporter.nanoseconds["BareRequests"]);
  return 0;
}
