#include <windows.h>

#include <atomic>
#include <optional>

#include "simulator/windows/import_hook.h"
#include "tests/zemctl/virtual_time/virtual_time.h"

namespace {

using zem::simulator::AsImport;
using zem::simulator::HeldModule;
using zem::simulator::ImportHook;

std::atomic<std::uint64_t> now = 1000;

void WINAPI PassTime(DWORD milliseconds) { now += milliseconds; }
DWORD WINAPI LibraryClock() { return static_cast<DWORD>(now); }
BOOL WINAPI ProgramClock(LARGE_INTEGER* count) {
  LARGE_INTEGER frequency;
  QueryPerformanceFrequency(&frequency);
  count->QuadPart = static_cast<LONGLONG>(now) * frequency.QuadPart / 1000;
  return TRUE;
}

// A program need not wait or look at the clock by itself.
std::optional<ImportHook> HookOf(HMODULE program, const char* name, FARPROC replacement) {
  return ImportHook::IsPossible(program, name)
             ? std::optional<ImportHook>(std::in_place, program, name, replacement)
             : std::nullopt;
}

}  // namespace

struct VirtualTime::Hooks {
  HeldModule library = zem::simulator::HoldLibrary();
  HeldModule program = zem::simulator::HoldProgram();
  ImportHook librarySleep{library.get(), "Sleep", AsImport(PassTime)};
  ImportHook libraryClock{library.get(), "timeGetTime", AsImport(LibraryClock)};
  std::optional<ImportHook> programSleep = HookOf(program.get(), "Sleep", AsImport(PassTime));
  std::optional<ImportHook> programClock =
      HookOf(program.get(), "QueryPerformanceCounter", AsImport(ProgramClock));
};

VirtualTime::VirtualTime() : hooks_(std::make_unique<Hooks>()) {}
VirtualTime::~VirtualTime() = default;

std::uint64_t VirtualTime::Milliseconds() { return now; }
