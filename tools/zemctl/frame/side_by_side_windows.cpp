#include <windows.h>

#include "tools/zemctl/camera/session.h"
#include "tools/zemctl/frame/side_by_side.h"

namespace zemctl {
namespace {

DWORD WINAPI RunOne(void* work) {
  const ComThread com;
  (*static_cast<const std::function<void()>*>(work))();
  return 0;
}

}  // namespace

void RunSideBySide(const std::vector<std::function<void()>>& work) {
  std::vector<HANDLE> threads;
  for (const std::function<void()>& one : work) {
    void* const given = const_cast<std::function<void()>*>(&one);
    if (const HANDLE thread = CreateThread(nullptr, 0, RunOne, given, 0, nullptr)) {
      threads.push_back(thread);
    } else {
      one();
    }
  }
  for (const HANDLE thread : threads) {
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
  }
}

}  // namespace zemctl
