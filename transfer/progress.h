// The caller's progress function, which may be missing.
#pragma once

#include <cstdint>

#include "include/ZemUVCExtApi.h"

namespace zem {

struct Progress {
  ProgressCallback callback = nullptr;
  std::uint64_t user = 0;

  explicit operator bool() const { return callback != nullptr; }

  void Report(std::uint32_t value) const {
    if (callback != nullptr) {
      callback(value, user);
    }
  }
};

// The share of `length`, which is not 0, that is still to go.
inline std::uint32_t RemainingPercent(std::uint32_t remaining, std::uint32_t length) {
  return static_cast<std::uint32_t>(std::uint64_t{remaining} * 100 / length);
}

}  // namespace zem
