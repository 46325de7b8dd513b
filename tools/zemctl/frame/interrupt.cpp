#include "tools/zemctl/frame/interrupt.h"

#include <windows.h>

#include <atomic>

namespace zemctl {
namespace {

// Set on the system's own thread.
std::atomic<bool> interrupted = false;

BOOL WINAPI Note(DWORD event) {
  const bool isInterrupt = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
  if (isInterrupt) {
    interrupted = true;
  }
  return isInterrupt ? TRUE : FALSE;
}

}  // namespace

InterruptGuard::InterruptGuard() {
  interrupted = false;
  SetConsoleCtrlHandler(Note, TRUE);
}

InterruptGuard::~InterruptGuard() { SetConsoleCtrlHandler(Note, FALSE); }

bool InterruptGuard::requested() const { return interrupted; }

}  // namespace zemctl
