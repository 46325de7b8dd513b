#include "tools/zemctl/camera/waiting.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <chrono>
#include <thread>
#endif

#include "tools/zemctl/camera/replay.h"

namespace zemctl {
namespace {

// The language's own steady clock is not steady with every compiler for Windows.
#ifdef _WIN32

std::uint64_t SystemClock() {
  LARGE_INTEGER frequency;
  LARGE_INTEGER count;
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&count);
  const auto ticks = static_cast<std::uint64_t>(count.QuadPart);
  const auto aSecond = static_cast<std::uint64_t>(frequency.QuadPart);
  return ticks / aSecond * 1000 + ticks % aSecond * 1000 / aSecond;
}

void SystemWait(std::uint32_t milliseconds) { Sleep(milliseconds); }

#else

std::uint64_t SystemClock() {
  const auto since = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(since).count());
}

void SystemWait(std::uint32_t milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

#endif

}  // namespace

std::uint64_t SteadyClock() { return SystemClock(); }

std::uint64_t WaitingClock() {
  const auto replay = ThreadReplay();
  return replay ? replay->waited() : SystemClock();
}

void Wait(std::uint32_t milliseconds) {
  if (const auto replay = ThreadReplay()) {
    replay->Wait(milliseconds);
  } else {
    SystemWait(milliseconds);
  }
}

}  // namespace zemctl
