// Ctrl-C: noted, and acted on where it is safe. What a camera is in the middle of comes to its end
// by itself: the watched camera and the watched volumes take nothing more.
#pragma once

#include <optional>
#include <string>

namespace zemctl {

// As long as one lives, Ctrl-C and Ctrl-Break do not end the program but are noted. A second one
// ends it.
class InterruptGuard {
 public:
  InterruptGuard();
  ~InterruptGuard();
  InterruptGuard(const InterruptGuard&) = delete;
  InterruptGuard& operator=(const InterruptGuard&) = delete;
};

// Whether one was noted.
bool StopRequested();

// A line of standard input; nothing when Ctrl-C comes first, or the input's end.
std::optional<std::string> ReadAnswer();

}  // namespace zemctl
