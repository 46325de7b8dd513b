// What the program defines comes before the C library's, for the library of this process too.
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>

#include "tests/zemctl/virtual_time/virtual_time.h"

namespace {

std::atomic<std::uint64_t> now = 1000;
std::atomic<bool> isVirtual = false;

}  // namespace

struct VirtualTime::Hooks {
  Hooks() { isVirtual = true; }
  ~Hooks() { isVirtual = false; }
  Hooks(const Hooks&) = delete;
  Hooks& operator=(const Hooks&) = delete;
};

VirtualTime::VirtualTime() : hooks_(std::make_unique<Hooks>()) {}
VirtualTime::~VirtualTime() = default;

std::uint64_t VirtualTime::Milliseconds() { return now; }

extern "C" {

int clock_gettime(clockid_t clock, timespec* time) {
  if (!isVirtual || clock != CLOCK_MONOTONIC) {
    return static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
  }
  const std::uint64_t milliseconds = now;
  *time = {static_cast<time_t>(milliseconds / 1000),
           static_cast<long>(milliseconds % 1000) * 1000000};
  return 0;
}

int clock_nanosleep(clockid_t clock, int flags, const timespec* time, timespec* left) {
  if (!isVirtual) {
    return static_cast<int>(::syscall(SYS_clock_nanosleep, clock, flags, time, left));
  }
  now += static_cast<std::uint64_t>(time->tv_sec) * 1000 +
         static_cast<std::uint64_t>(time->tv_nsec) / 1000000;
  return 0;
}

int nanosleep(const timespec* time, timespec* left) {
  return clock_nanosleep(CLOCK_MONOTONIC, 0, time, left);
}

}  // extern "C"
