#include <system_error>
#include <thread>

#include "tools/zemctl/camera/session.h"
#include "tools/zemctl/frame/side_by_side.h"

namespace zemctl {

void RunSideBySide(const std::vector<std::function<void()>>& work) {
  std::vector<std::thread> threads;
  for (const std::function<void()>& one : work) {
    try {
      threads.emplace_back([&one] {
        const ComThread com;
        one();
      });
    } catch (const std::system_error&) {
      one();
    }
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

}  // namespace zemctl
