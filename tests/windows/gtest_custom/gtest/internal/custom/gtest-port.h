// The framework's hook for a platform: its class Notification without std::mutex, which the runtime
// of the Windows build does not have.
#pragma once

#include <atomic>

#define GTEST_HAS_NOTIFICATION_ 1

namespace testing::internal {

class Notification {
 public:
  void Notify() { notified_ = true; }
  void WaitForNotification() const {
    while (!notified_) {
    }
  }

 private:
  std::atomic<bool> notified_ = false;
};

}  // namespace testing::internal
