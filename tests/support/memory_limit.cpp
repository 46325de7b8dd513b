#include "tests/support/memory_limit.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <utility>

namespace {

thread_local bool exhausted = false;
thread_local std::size_t wanted = 0;
thread_local std::function<void()> beforeAllocation;

}  // namespace

// The library asks for memory with these forms only. What they hand out is released by the forms
// that belong to the ones they call.
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return zem::testing::AllocationFails(size) ? nullptr : ::operator new(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return zem::testing::AllocationFails(size) ? nullptr : ::operator new[](size);
}

namespace zem::testing {

bool AllocationFails(std::size_t size) {
  if (beforeAllocation) {
    beforeAllocation();
  }
  wanted = exhausted ? std::max(wanted, size) : wanted;
  return exhausted;
}

MemoryExhausted::MemoryExhausted() {
  exhausted = true;
  wanted = 0;
}

MemoryExhausted::~MemoryExhausted() { exhausted = false; }

std::size_t MemoryExhausted::TakeWanted() { return std::exchange(wanted, 0); }

BeforeAllocation::BeforeAllocation(std::function<void()> act) { beforeAllocation = std::move(act); }

BeforeAllocation::~BeforeAllocation() { beforeAllocation = nullptr; }

}  // namespace zem::testing
