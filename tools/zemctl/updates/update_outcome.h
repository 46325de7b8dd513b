// What state a camera is in when an update did not go through, and what comes next.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "include/ZemUVCExtApi.h"
#include "tools/zemctl/updates/transfer_watch.h"

namespace zemctl {

// A clause each, without a full stop.
struct CameraState {
  std::string state;
  std::string next;
};

// After a procedure that returned `result`: `watch` saw its progress, `status` is the camera's
// transfer status read afterwards, if it could be read. Nothing when all went well.
std::optional<CameraState> StateAfter(ZemResult result, const ImageWatch& watch,
                                      std::optional<std::uint8_t> status);

// When the person stops the tool in the middle of a procedure.
CameraState StateWhenStopped(const ImageWatch& watch);

}  // namespace zemctl
