// The library's call of clock_nanosleep, by which it waits: a time span on the steady clock.
#pragma once

#include <cerrno>
#include <cstdint>
#include <ctime>

namespace zemctl {

inline std::uint32_t MillisecondsOf(const timespec& time) {
  return static_cast<std::uint32_t>(time.tv_sec * 1000 + time.tv_nsec / 1000000);
}

// Lets so many milliseconds pass by `sleep`, whatever signals come.
inline void LetPass(std::uint32_t milliseconds, decltype(&::clock_nanosleep) sleep) {
  timespec left = {static_cast<std::time_t>(milliseconds / 1000),
                   static_cast<long>(milliseconds % 1000) * 1000000};
  while (sleep(CLOCK_MONOTONIC, 0, &left, &left) == EINTR) {
  }
}

}  // namespace zemctl
