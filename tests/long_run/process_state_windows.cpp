// The first one is for the others.
// clang-format off
#include <windows.h>
#include <psapi.h>
#include <winternl.h>
// clang-format on

#include <algorithm>
#include <vector>

#include "simulator/windows/import_hook.h"
#include "tests/long_run/process_state.h"

namespace {

using zem::simulator::AsImport;
using zem::simulator::ImportHook;

// From the system's list of all handles: Wine's GetProcessHandleCount gives 0.
std::uint64_t OpenHandles() {
  std::vector<SYSTEM_HANDLE_ENTRY> list(1U << 14);
  ULONG length = 0;
  while (NtQuerySystemInformation(SystemHandleInformation, list.data(),
                                  static_cast<ULONG>(list.size() * sizeof(list[0])), &length) < 0) {
    list.resize(2 * list.size());
  }
  const auto* const information = reinterpret_cast<const SYSTEM_HANDLE_INFORMATION*>(list.data());
  const SYSTEM_HANDLE_ENTRY* const first = &information->Handle[0];
  return static_cast<std::uint64_t>(std::count_if(
      first, first + information->Count,
      [](const SYSTEM_HANDLE_ENTRY& each) { return each.OwnerPid == GetCurrentProcessId(); }));
}

double Milliseconds(const FILETIME& time) {
  constexpr double kTicks = 10000;  // of 100 ns
  return (static_cast<double>(time.dwHighDateTime) * 4294967296.0 + time.dwLowDateTime) / kTicks;
}

// ---- What the library has allocated ----

// The walk over the process's heap shows small blocks by the group only.
std::uint64_t heldBytes = 0;

void* Counted(void* block) {
  heldBytes += block != nullptr ? _msize(block) : 0;
  return block;
}

void Uncount(void* block) { heldBytes -= block != nullptr ? _msize(block) : 0; }

void* CountedMalloc(std::size_t size) { return Counted(std::malloc(size)); }

void* CountedCalloc(std::size_t count, std::size_t size) {
  return Counted(std::calloc(count, size));
}

void* CountedRealloc(void* block, std::size_t size) {
  Uncount(block);
  return Counted(std::realloc(block, size));
}

void CountedFree(void* block) {
  Uncount(block);
  std::free(block);
}

// As long as it lives, the library's blocks are counted.
struct LibraryHeap {
  zem::simulator::HeldModule library = zem::simulator::HoldLibrary();
  ImportHook malloc{library.get(), "malloc", AsImport(CountedMalloc)};
  ImportHook calloc{library.get(), "calloc", AsImport(CountedCalloc)};
  ImportHook realloc{library.get(), "realloc", AsImport(CountedRealloc)};
  ImportHook free{library.get(), "free", AsImport(CountedFree)};
};

}  // namespace

ProcessState MeasureProcess() {
  static const LibraryHeap heap;
  ProcessState state;
  state.handles = OpenHandles();
  state.heapBytes = heldBytes;
  PROCESS_MEMORY_COUNTERS memory = {};
  GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof(memory));
  // The same as PrivateUsage, which Wine leaves 0.
  state.privateBytes = memory.PagefileUsage;
  FILETIME created = {};
  FILETIME ended = {};
  FILETIME kernel = {};
  FILETIME user = {};
  GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user);
  state.processorMilliseconds = Milliseconds(kernel) + Milliseconds(user);
  return state;
}
