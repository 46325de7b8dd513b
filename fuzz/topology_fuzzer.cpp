// Information blocks of extension units with any content and any length that a device may claim.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "device/extension_units.h"
#include "device/topology.h"
#include "device/unit_check.h"
#include "tests/support/bare_camera.h"

namespace {

// Answers every request for an information block with the fuzzer's bytes.
class FuzzedCamera : public zem::testing::BareCamera {
 public:
  FuzzedCamera(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  HRESULT Request(const KSP_NODE& /*request*/, void* data, ULONG length,
                  ULONG* bytesReturned) override {
    *bytesReturned = Claim();
    if (data != nullptr && length > 0) {
      std::memcpy(data, data_, std::min<std::size_t>(length, size_));
    }
    return S_OK;
  }

 private:
  ULONG Claim() const {
    ULONG claim = 0;
    std::memcpy(&claim, data_, std::min(sizeof(claim), size_));
    return claim;
  }

  const std::uint8_t* data_;
  std::size_t size_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedCamera camera(data, size);
  camera.nodeCount = size > 0 ? data[0] % 8U : 0;
  zem::FindXuNode(&camera, zem::VendorXu);
  static_cast<void>(zem::CheckXuGuid(zem::VendorXu, &camera));
  return 0;
}
