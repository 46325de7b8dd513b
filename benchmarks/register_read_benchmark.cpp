// What the library adds to a register read: the export against the bare property requests that the
// read consists of, on a camera that costs nothing.
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "benchmarks/bare_transfer.h"
#include "benchmarks/paired_runs.h"
#include "include/ZemUVCExtApi.h"
#include "platform/simulated/simulated_platform.h"
#include "tests/support/free_camera.h"

namespace {

using zem::Direction;
using zem::benchmarks::BareTransfer;
using zem::benchmarks::Forget;
using zem::benchmarks::Keep;
using zem::benchmarks::PairedRuns;
using zem::benchmarks::Table;
using zem::benchmarks::Text;
using zem::testing::FreeCamera;

// The command and the reply.
constexpr int kRequests = 2 * zem::benchmarks::kRequestsPerTransfer;

// Counts what it is asked.
class CountingCamera final : public FreeCamera {
 public:
  HRESULT Request(const KSP_NODE& request, void* data, ULONG length,
                  ULONG* bytesReturned) override {
    ++requests;
    return FreeCamera::Request(request, data, length, bytesReturned);
  }

  int requests = 0;
};

std::string MeasureRegisterRead(PairedRuns& runs) {
  zem::platform::simulated::TheSystem().recordDebuggerLines = false;
  CountingCamera camera;
  void* handle = nullptr;
  if (ZEMAPI_OpenDeviceBySourceFilter(&camera, &handle) != 0) {
    std::fprintf(stderr, "the handle cannot be made\n");
    std::exit(EXIT_FAILURE);
  }
  unsigned short value = 0;
  camera.requests = 0;
  ZEMAPI_GetRegister(handle, 0x123456, &value);
  if (camera.requests != kRequests) {
    std::fprintf(stderr, "%d requests instead of %d\n", camera.requests, kRequests);
    std::exit(EXIT_FAILURE);
  }
  IKsControl* control = &camera;
  std::array<unsigned char, 8> data = {};
  runs.Run(
      61, [&] { Keep(ZEMAPI_GetRegister(handle, 0x123456, &value)); },
      [&] {
        Forget(control);
        Keep(BareTransfer(control, Direction::kSet, 1, data.data(), data.size()));
        Keep(BareTransfer(control, Direction::kGet, 2, data.data(), data.size()));
      });
  ZEMAPI_CloseDevice(&handle);
  return Text("requests of the protocol: %d, no more than the bare ones", kRequests);
}

}  // namespace

int main(int argc, char** argv) {
  Table table(argc, argv, "A register read, beside its bare requests");
  table.Row("`ZEMAPI_GetRegister`", 1, " ns", MeasureRegisterRead);
  return 0;
}
