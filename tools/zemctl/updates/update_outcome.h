// What state a camera is in when an update did not go through, and what comes next.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "include/ZemUVCExtApi.h"
#include "tools/zemctl/updates/image_transfers.h"

namespace zemctl {

// A clause each, without a full stop.
struct CameraState {
  std::string state;
  std::string next;
};

// After a procedure that returned `result`: `image` saw its transfers, of which one was lost or
// not, `status` is the camera's transfer status read afterwards, if it could be read. Nothing when
// all went well.
std::optional<CameraState> StateAfter(ZemResult result, const ImageTransfers& image, bool hasLoss,
                                      std::optional<std::uint8_t> status);

// When the person stops the tool in the middle of a procedure.
CameraState StateWhenStopped(const ImageTransfers& image);

}  // namespace zemctl
