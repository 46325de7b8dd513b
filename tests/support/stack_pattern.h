// Makes a local that is not initialised show it.
#pragma once

#include <cstddef>

namespace zem::testing {

inline constexpr unsigned char kStackPattern = 0xA5;

// Fills the stack below the caller, where the next function called has its locals.
__attribute__((noinline, no_sanitize("address"))) inline void FillStackBelow() {
  volatile unsigned char pattern[8192];
  for (std::size_t index = 0; index < sizeof(pattern); ++index) {
    pattern[index] = kStackPattern;
  }
}

}  // namespace zem::testing
