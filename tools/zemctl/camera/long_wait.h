// The library's waits: some are fixed, and go on however the camera fares.
#pragma once

#include <functional>

namespace zemctl {

// From its construction until its end, a long wait of the library on this thread goes on only as
// long as `isWorthwhile` says so; it must not throw.
class LongWait {
 public:
  explicit LongWait(std::function<bool()> isWorthwhile);
  ~LongWait();
  LongWait(const LongWait&) = delete;
  LongWait& operator=(const LongWait&) = delete;

  // Waits by `wait`, which takes milliseconds: a long time in parts, with a look before each.
  static void Sleep(unsigned milliseconds, const std::function<void(unsigned)>& wait);

 private:
  std::function<bool()> isWorthwhile_;
  const LongWait* before_;
};

}  // namespace zemctl
