// Runs out of heap memory on request.
#pragma once

namespace zem::testing {

// As long as it lives, allocations that may fail without an exception do; others go on.
class MemoryExhausted {
 public:
  MemoryExhausted();
  ~MemoryExhausted();
  MemoryExhausted(const MemoryExhausted&) = delete;
  MemoryExhausted& operator=(const MemoryExhausted&) = delete;
};

}  // namespace zem::testing
