// The camera's flash as a host reads it back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "tools/zemctl/camera/session.h"
#include "tools/zemctl/frame/progress.h"

namespace zemctl {

// Reads `size` bytes from `address` on, in pieces whose size the camera can be told whole. Moves
// the present phase of `progress`. Throws CallFailure.
std::vector<unsigned char> ReadFlash(const Session& session, std::uint32_t address,
                                     std::uint32_t size, Progress& progress);

// Where two runs of bytes begin to differ; nothing when they are equal.
std::optional<std::size_t> FirstDifference(std::span<const unsigned char> left,
                                           std::span<const unsigned char> right);

}  // namespace zemctl
