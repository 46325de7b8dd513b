#include <malloc.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <iterator>

#include "tests/long_run/process_state.h"

namespace {

std::uint64_t PrivateBytes() {
  unsigned long long resident = 0;
  unsigned long long shared = 0;
  if (std::FILE* const file = std::fopen("/proc/self/statm", "rb")) {
    if (std::fscanf(file, "%*s %llu %llu", &resident, &shared) != 2) {
      resident = shared = 0;
    }
    std::fclose(file);
  }
  return (resident - shared) * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

}  // namespace

ProcessState MeasureProcess() {
  ProcessState state;
  const struct mallinfo2 heap = ::mallinfo2();
  state.heapBytes = heap.uordblks + heap.hblkhd;
  state.privateBytes = PrivateBytes();
  const std::filesystem::directory_iterator open("/proc/self/fd");
  state.handles = static_cast<std::uint64_t>(std::distance(begin(open), end(open)));
  timespec used = {};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
  state.processorMilliseconds =
      static_cast<double>(used.tv_sec) * 1e3 + static_cast<double>(used.tv_nsec) / 1e6;
  return state;
}
