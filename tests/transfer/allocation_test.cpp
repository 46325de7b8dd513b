// Transfers allocate their buffers, and nothing for each chunk but where that is how they work.
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "include/ZemUVCExtApi.h"
#include "platform/bytes.h"
#include "platform/simulated/simulated_platform.h"
#include "tests/support/allocation_count.h"
#include "tests/support/free_camera.h"

namespace {

using zem::testing::AllocationCount;

// Moves 32 bytes at once and has as many bytes ready as it is told.
class ReadyCamera : public zem::testing::FreeCamera {
 public:
  HRESULT Request(const KSP_NODE& request, void* data, ULONG length,
                  ULONG* bytesReturned) override {
    const HRESULT result = FreeCamera::Request(request, data, length, bytesReturned);
    if (request.Property.Id == 5) {
      zem::StoreLe32(static_cast<std::uint8_t*>(data) + 2, ready);
    } else if (request.Property.Id != 0) {
      *bytesReturned = length == 512 ? 512 : 32;
    }
    return result;
  }

  std::uint32_t ready = 0;
};

class TransferAllocationTest : public ::testing::Test {
 protected:
  TransferAllocationTest() {
    zem::platform::simulated::Reset();
    zem::platform::simulated::TheSystem().recordDebuggerLines = false;
    EXPECT_EQ(ZEMAPI_OpenDeviceBySourceFilter(&camera, &handle), 0);
  }
  ~TransferAllocationTest() override { ZEMAPI_CloseDevice(&handle); }

  // Allocations of an operation on `length` bytes.
  template <class Operation>
  std::uint64_t Count(Operation operation, std::uint32_t length) {
    camera.ready = length;
    const std::uint64_t before = AllocationCount();
    const ZemResult result = operation(length);
    const std::uint64_t made = AllocationCount() - before;
    EXPECT_EQ(result, 0);
    return made;
  }

  ReadyCamera camera;
  void* handle = nullptr;
  std::vector<std::uint8_t> data = std::vector<std::uint8_t>(64 * 512);
  std::uint32_t outLength = 0;
};

TEST_F(TransferAllocationTest, BuffersOnly) {
  if (!zem::testing::CanCountAllocations()) {
    GTEST_SKIP() << "needs the address sanitizer";
  }
  const auto send = [&](std::uint32_t length) {
    return ZEMAPI_SendData(handle, data.data(), length, nullptr, 0, 0, 0);
  };
  const auto write = [&](std::uint32_t length) {
    return ZEMAPI_WriteFWData(handle, data.data(), length, nullptr, 0);
  };
  const auto readFlash = [&](std::uint32_t length) {
    return ZEMAPI_ReadPartialFlashData(handle, 0, length, data.data(), &outLength, nullptr, 0);
  };
  for (const std::uint32_t chunks : {1U, 64U}) {
    EXPECT_EQ(Count(send, chunks * 32), 1U) << "the chunk's";
    EXPECT_EQ(Count(write, chunks * 512), 2U) << "the chunk's and the probe's";
    EXPECT_EQ(Count(readFlash, chunks * 512), 2U) << "the chunk's and the probe's";
  }
}

TEST_F(TransferAllocationTest, ReadFWDataHasABufferForEachChunk) {
  if (!zem::testing::CanCountAllocations()) {
    GTEST_SKIP() << "needs the address sanitizer";
  }
  const auto read = [&](std::uint32_t /*length*/) {
    return ZEMAPI_ReadFWData(handle, data.data(), 4096, &outLength, nullptr, 0);
  };
  EXPECT_EQ(Count(read, 32), 1U);
  EXPECT_EQ(Count(read, 33), 2U);
  EXPECT_EQ(Count(read, 2048), 64U);
}

}  // namespace
