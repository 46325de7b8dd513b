// What this process holds of the system.
#pragma once

#include <cstdint>

struct ProcessState {
  std::uint64_t handles = 0;  // open handles, open file descriptors
  // Allocated and not given back: by the whole process on Linux, by the library on Windows.
  std::uint64_t heapBytes = 0;
  std::uint64_t privateBytes = 0;    // memory that only this process has
  double processorMilliseconds = 0;  // so far, which virtual time leaves alone
};

ProcessState MeasureProcess();
