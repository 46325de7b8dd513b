// How many times the process asked for heap memory, and for how much.
#pragma once

#include <cstdint>

namespace zem::testing {

// True where the build can count: with the address sanitizer, which sees every allocation.
bool CanCountAllocations();

// Bytes that are allocated now; 0 where the build cannot count.
std::uint64_t LiveBytes();

// Allocations since the process began.
std::uint64_t AllocationCount();

// Bytes of all these allocations, released by now or not.
std::uint64_t AllocatedBytes();

}  // namespace zem::testing
