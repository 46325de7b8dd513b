// The memory of texts that COM calls hand out, so that a test may take it away.
#include <cstddef>

#include "tests/support/memory_limit.h"

// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): the linker's names
extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __wrap_malloc(std::size_t size) {
  return zem::testing::AllocationFails(size) ? nullptr : __real_malloc(size);
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
