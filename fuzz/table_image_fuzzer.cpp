// Table-store images with any content: every operation that searches one, on a table handle and on
// a device.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>

#include "device/extension_units.h"
#include "platform/simulated/simulated_platform.h"
#include "simulator/nvmem_control.h"
#include "tests/support/bare_camera.h"

namespace {

constexpr std::size_t kImageSize = 8192;

// A camera whose memory holds the fuzzer's bytes.
class FuzzedMemory : public zem::testing::BareCamera {
 public:
  FuzzedMemory() { nodeCount = 1; }

  HRESULT Request(const KSP_NODE& request, void* data, ULONG length,
                  ULONG* bytesReturned) override {
    auto* const bytes = static_cast<std::uint8_t*>(data);
    if (request.Property.Id == 0) {
      *bytesReturned = sizeof(GUID);
      if (length >= sizeof(GUID)) {
        std::memcpy(data, &zem::VendorXu, sizeof(GUID));
      }
      return S_OK;
    }
    *bytesReturned = length;
    if (request.Property.Flags == 0x10000002) {
      static_cast<void>(control_.Set({bytes, length}));
    } else {
      static_cast<void>(control_.Get(block_));
      std::copy(block_.begin(), block_.end(), bytes);
    }
    return S_OK;
  }

  std::vector<std::uint8_t> memory;

 private:
  zem::simulator::NvmemControl control_{memory};
  std::vector<std::uint8_t> block_;
};

// A table buffer of just the size that GetTableSize tells, so that the sanitizer sees every byte
// more.
using Buffer = std::unique_ptr<std::uint8_t[]>;

void SearchHandle(void* device, std::uint8_t* table, std::uint8_t id) {
  std::uint16_t size = 0;
  std::uint32_t moved = 0;
  const bool found = ZEMAPI_GetTableSize(device, table, id, &size) == 0;
  const Buffer buffer(new std::uint8_t[size]());
  const ZemResult read = ZEMAPI_ReadTableEx(device, table, id, buffer.get(), size, &moved);
  // A table that has a size can be read in that size; no other can be read at all.
  if (found ? read != 0 || moved != size : moved != 0) {
    __builtin_trap();
  }
  ZEMAPI_WriteTableEx(device, table, id, buffer.get(), size, &moved);
  const std::unique_ptr<std::uint8_t[]> image(new std::uint8_t[kImageSize]);
  ZEMAPI_DumpWholeTable(device, table, image.get(), kImageSize, &moved);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  zem::platform::simulated::TheSystem().recordDebuggerLines = false;
  const std::uint8_t id = data[0];
  FuzzedMemory camera;
  camera.memory.assign(data + 1, data + std::min(size, kImageSize + 1));
  camera.memory.resize(kImageSize, 0xFF);

  const auto table = std::make_unique<std::array<std::uint8_t, kImageSize>>();
  std::copy(camera.memory.begin(), camera.memory.end(), table->begin());
  SearchHandle(nullptr, table->data(), id);

  void* device = nullptr;
  if (ZEMAPI_OpenDeviceBySourceFilter(&camera, &device) != 0) {
    return 0;
  }
  std::uint8_t* opened = nullptr;
  if (ZEMAPI_OpenTableHandle(device, &opened) == 0) {
    SearchHandle(device, opened, id);
    ZEMAPI_CloseTableHandle(device, &opened);
  }
  const Buffer buffer(new std::uint8_t[kImageSize]());
  std::uint32_t moved = 0;
  ZEMAPI_ReadTable(device, id, buffer.get(), kImageSize, &moved);
  ZEMAPI_WriteTable(device, id, buffer.get(), kImageSize, &moved);
  ZEMAPI_CloseDevice(&device);
  return 0;
}
