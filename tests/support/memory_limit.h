// Runs out of heap memory on request, and lets a test act where memory is asked for.
#pragma once

#include <cstddef>
#include <functional>

namespace zem::testing {

// What each allocation that may fail without an exception asks: whether it does.
bool AllocationFails(std::size_t size);

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

// As long as it lives, calls `act` before each allocation that may fail without an exception.
class BeforeAllocation {
 public:
  explicit BeforeAllocation(std::function<void()> act);
  ~BeforeAllocation();
  BeforeAllocation(const BeforeAllocation&) = delete;
  BeforeAllocation& operator=(const BeforeAllocation&) = delete;
};

}  // namespace zem::testing
