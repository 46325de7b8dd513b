// What the library costs when an 8 MiB image goes out through the 512-byte control: number of
// requests and allocations, and the host's time beside that of a bare loop that issues the same
// requests, on a camera that costs nothing.
//
// The protocol's minimum is one probe and one write for each 512 bytes, 16,385 transfers. A
// transfer looks the vendor unit's node up anew, which on this camera (the unit is its third node)
// takes six requests before its own: 114,695 requests in all. The program fails when the library
// issues any other number, or allocates anything but its two buffers.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "benchmarks/bare_transfer.h"
#include "benchmarks/counted_new.h"
#include "benchmarks/paired_runs.h"
#include "include/ZemUVCExtApi.h"
#include "platform/simulated/simulated_platform.h"
#include "tests/support/free_camera.h"

namespace {

using zem::Direction;
using zem::benchmarks::AllocationCount;
using zem::benchmarks::BareTransfer;
using zem::benchmarks::Forget;
using zem::benchmarks::Keep;
using zem::benchmarks::PairedRuns;
using zem::benchmarks::Table;
using zem::benchmarks::Text;
using zem::testing::FreeCamera;

constexpr std::uint32_t kImageLength = 8 * 1024 * 1024;
constexpr std::uint32_t kChunkLength = 512;
constexpr std::uint64_t kChunks = 16384;
constexpr std::uint64_t kTransfers = kChunks + 1;
constexpr std::uint64_t kRequests = 114695;
// The buffer of the chunks and that of the probe.
constexpr std::uint64_t kAllocations = 2;

static_assert(kChunks == kImageLength / kChunkLength);
static_assert(kRequests == kTransfers * zem::benchmarks::kRequestsPerTransfer);

constexpr ULONG kFastControl = 13;

// Counts what it is asked, and has the 512-byte control.
class CountingCamera final : public FreeCamera {
 public:
  HRESULT Request(const KSP_NODE& request, void* data, ULONG length,
                  ULONG* bytesReturned) override {
    ++requests;
    const HRESULT result = FreeCamera::Request(request, data, length, bytesReturned);
    if (request.Property.Id == kFastControl) {
      ++transfers;
      *bytesReturned = length;
    }
    return result;
  }

  std::uint64_t requests = 0;
  std::uint64_t transfers = 0;
};

const std::vector<std::uint8_t>& Image() {
  static const std::vector<std::uint8_t> image(kImageLength, 0x5A);
  return image;
}

std::string MeasureTransfer(PairedRuns& runs) {
  zem::platform::simulated::TheSystem().recordDebuggerLines = false;
  CountingCamera camera;
  void* handle = nullptr;
  if (ZEMAPI_OpenDeviceBySourceFilter(&camera, &handle) != 0) {
    std::fprintf(stderr, "the handle cannot be made\n");
    std::exit(EXIT_FAILURE);
  }
  const auto exported = [&] {
    camera.requests = 0;
    camera.transfers = 0;
    const std::uint64_t allocationsBefore = AllocationCount();
    const ZemResult result = ZEMAPI_WriteFWData(handle, Image().data(), kImageLength, nullptr, 0);
    const std::uint64_t allocated = AllocationCount() - allocationsBefore;
    if (result != 0 || camera.transfers != kTransfers || camera.requests != kRequests ||
        allocated != kAllocations) {
      std::fprintf(stderr,
                   "result %ld, %llu transfers, %llu requests, %llu allocations instead of "
                   "0, %llu, %llu, %llu\n",
                   static_cast<long>(result), static_cast<unsigned long long>(camera.transfers),
                   static_cast<unsigned long long>(camera.requests),
                   static_cast<unsigned long long>(allocated),
                   static_cast<unsigned long long>(kTransfers),
                   static_cast<unsigned long long>(kRequests),
                   static_cast<unsigned long long>(kAllocations));
      std::exit(EXIT_FAILURE);
    }
  };
  IKsControl* control = &camera;
  std::vector<std::uint8_t> image = Image();
  const auto bare = [&] {
    Forget(control);
    camera.requests = 0;
    Keep(BareTransfer(control, Direction::kGet, kFastControl, image.data(), kChunkLength));
    for (std::uint32_t offset = 0; offset < kImageLength; offset += kChunkLength) {
      Keep(BareTransfer(control, Direction::kSet, kFastControl, image.data() + offset,
                        kChunkLength));
    }
    if (camera.requests != kRequests) {
      std::fprintf(stderr, "the bare loop issues other requests\n");
      std::exit(EXIT_FAILURE);
    }
  };
  runs.Run(61, exported, bare);
  ZEMAPI_CloseDevice(&handle);
  return Text("requests of the protocol: %llu transfers for the image, no more than the bare ones",
              static_cast<unsigned long long>(kTransfers));
}

}  // namespace

int main(int argc, char** argv) {
  Table table(argc, argv,
              "An image of 8 MiB through the 512-byte control, beside its bare requests");
  table.Row("a chunk of 512 bytes", static_cast<double>(kTransfers), " ns", MeasureTransfer);
  return 0;
}
