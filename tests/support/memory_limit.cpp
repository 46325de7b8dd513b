#include "tests/support/memory_limit.h"

#include <cstddef>
#include <new>

namespace {

thread_local bool exhausted = false;

}  // namespace

// The library asks for memory with these forms only. What they hand out is released by the forms
// that belong to the ones they call.
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return exhausted ? nullptr : ::operator new(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return exhausted ? nullptr : ::operator new[](size);
}

namespace zem::testing {

MemoryExhausted::MemoryExhausted() { exhausted = true; }

MemoryExhausted::~MemoryExhausted() { exhausted = false; }

}  // namespace zem::testing
