#include "tests/support/allocation_count.h"

#include <atomic>
#include <cstddef>

// GCC and Clang tell of their sanitizer in different ways.
#if defined(__SANITIZE_ADDRESS__)
#define ZEM_ADDRESS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZEM_ADDRESS_SANITIZER
#endif
#endif

#ifdef ZEM_ADDRESS_SANITIZER
// The sanitizer's own; GCC ships the functions without the header that declares them.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
extern "C" int __sanitizer_install_malloc_and_free_hooks(
    void (*onMalloc)(const volatile void* memory, std::size_t size),
    void (*onFree)(const volatile void* memory));
#endif

namespace zem::testing {

#ifdef ZEM_ADDRESS_SANITIZER

namespace {

std::atomic<std::uint64_t> allocations = 0;
std::atomic<std::uint64_t> allocatedBytes = 0;

void CountOne(const volatile void* /*memory*/, std::size_t size) {
  ++allocations;
  allocatedBytes += size;
}
void Ignore(const volatile void* /*memory*/) {}

const bool installed = __sanitizer_install_malloc_and_free_hooks(CountOne, Ignore) != 0;

}  // namespace

bool CanCountAllocations() { return installed; }

std::uint64_t AllocationCount() { return allocations; }
std::uint64_t AllocatedBytes() { return allocatedBytes; }
std::uint64_t LiveBytes() { return __sanitizer_get_current_allocated_bytes(); }

#else

bool CanCountAllocations() { return false; }

std::uint64_t AllocationCount() { return 0; }
std::uint64_t AllocatedBytes() { return 0; }
std::uint64_t LiveBytes() { return 0; }

#endif

}  // namespace zem::testing
