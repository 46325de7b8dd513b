// Ctrl-C while a camera is in the middle of something: noted, and acted on where it is safe.
#pragma once

namespace zemctl {

// As long as one lives, Ctrl-C and Ctrl-Break do not end the program but are noted.
class InterruptGuard {
 public:
  InterruptGuard();
  ~InterruptGuard();
  InterruptGuard(const InterruptGuard&) = delete;
  InterruptGuard& operator=(const InterruptGuard&) = delete;

  bool requested() const;
};

}  // namespace zemctl
