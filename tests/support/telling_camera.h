// A camera on the stack that answers every transfer as told, with results and bytes that a camera's
// driver rarely gives together.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "tests/support/bare_camera.h"

namespace zem::testing {

class TellingCamera : public BareCamera {
 public:
  HRESULT Request(const KSP_NODE& request, void* data, ULONG length,
                  ULONG* bytesReturned) override {
    ++transfers;
    *bytesReturned = 0;
    if (request.Property.Flags == 0x10000002) {
      return writeResult;
    }
    const std::size_t count = std::min<std::size_t>(length, answer.size());
    std::copy_n(answer.begin(), count, static_cast<std::uint8_t*>(data));
    *bytesReturned = static_cast<ULONG>(count);
    return readResult;
  }

  HRESULT writeResult = S_OK;
  HRESULT readResult = S_OK;
  // What a read delivers, whatever its result; the rest of its buffer stays as it is.
  std::vector<std::uint8_t> answer;
  int transfers = 0;
};

}  // namespace zem::testing
