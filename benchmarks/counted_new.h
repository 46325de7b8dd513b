// Counts what a benchmark's process asks of the heap through operator new.
#pragma once

#include <cstdint>

namespace zem::benchmarks {

// Allocations since the process began.
std::uint64_t AllocationCount();

}  // namespace zem::benchmarks
