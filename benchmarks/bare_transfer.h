// The property requests that the library issues for one transfer to the vendor unit of a
// FreeCamera.
#pragma once

#include <array>

#include "device/extension_units.h"
#include "device/property_request.h"

namespace zem::benchmarks {

// Size and value of the information block of each of three nodes, and the transfer itself.
inline constexpr unsigned kRequestsPerTransfer = 3 * 2 + 1;

inline HRESULT BareTransfer(IKsControl* control, Direction direction, ULONG selector, void* data,
                            ULONG length) {
  std::array<unsigned char, 32> information = {};
  ULONG moved = 0;
  for (ULONG node = 0; node < 3; ++node) {
    KSP_NODE request = MakeNodeRequest(Direction::kGet, VendorXu, 0, node);
    IssueRequest(control, request, nullptr, 0, &moved);
    IssueRequest(control, request, information.data(), moved, &moved);
  }
  KSP_NODE request = MakeNodeRequest(direction, VendorXu, selector, 2);
  return IssueRequest(control, request, data, length, &moved);
}

}  // namespace zem::benchmarks
