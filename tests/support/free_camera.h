// A camera that costs nothing: it accepts everything, answers nothing and allocates nothing.
#pragma once

#include <cstring>

#include "device/extension_units.h"
#include "tests/support/bare_camera.h"

namespace zem::testing {

// Its vendor unit is its third node, as on the real ones.
class FreeCamera : public BareCamera {
 public:
  FreeCamera() { nodeCount = 3; }

  HRESULT Request(const KSP_NODE& request, void* data, ULONG length,
                  ULONG* bytesReturned) override {
    *bytesReturned = sizeof(GUID);
    if (request.Property.Id == 0 && request.NodeId == 2 && length >= sizeof(GUID)) {
      std::memcpy(data, &VendorXu, sizeof(GUID));
    }
    return S_OK;
  }
};

}  // namespace zem::testing
