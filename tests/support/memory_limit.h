// Runs out of heap memory on request.
#pragma once

#include <cstddef>

namespace zem::testing {

// As long as it lives, allocations that may fail without an exception do; others go on.
class MemoryExhausted {
 public:
  MemoryExhausted();
  ~MemoryExhausted();
  MemoryExhausted(const MemoryExhausted&) = delete;
  MemoryExhausted& operator=(const MemoryExhausted&) = delete;

  // The largest allocation that failed since the last call; 0 when none was asked for.
  static std::size_t TakeWanted();
};

}  // namespace zem::testing
