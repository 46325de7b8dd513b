#include "benchmarks/counted_new.h"

#include <cstdlib>
#include <new>

namespace {

std::uint64_t allocations = 0;

}  // namespace

// The other forms end up here.
void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size)) {
    return memory;
  }
  std::abort();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }

namespace zem::benchmarks {

std::uint64_t AllocationCount() { return allocations; }

}  // namespace zem::benchmarks
