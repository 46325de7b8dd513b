#include <windows.h>

#include <atomic>
#include <memory>

#include "tools/zemctl/frame/interrupt.h"

namespace zemctl {
namespace {

constexpr DWORD kLookMilliseconds = 50;

// Set on the system's own thread.
std::atomic<bool> interrupted = false;

BOOL WINAPI Note(DWORD event) {
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
    return FALSE;
  }
  return interrupted.exchange(true) ? FALSE : TRUE;
}

// A reader of one line, on a thread of its own: a read does not end by Ctrl-C where the input is no
// console.
struct LineReader {
  std::string line;
  bool hasLine = false;

  static DWORD WINAPI Run(void* given) {
    // Held by the thread too: nobody may be waiting any more.
    const std::unique_ptr<std::shared_ptr<LineReader>> holder(
        static_cast<std::shared_ptr<LineReader>*>(given));
    LineReader& reader = **holder;
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    char character = 0;
    DWORD read = 0;
    while (ReadFile(input, &character, 1, &read, nullptr) != FALSE && read == 1) {
      reader.hasLine = true;
      if (character == '\n') {
        break;
      }
      reader.line += character;
    }
    return 0;
  }
};

}  // namespace

InterruptGuard::InterruptGuard() {
  interrupted = false;
  SetConsoleCtrlHandler(Note, TRUE);
}

InterruptGuard::~InterruptGuard() { SetConsoleCtrlHandler(Note, FALSE); }

bool StopRequested() { return interrupted; }

std::optional<std::string> ReadAnswer() {
  const auto reader = std::make_shared<LineReader>();
  auto holder = std::make_unique<std::shared_ptr<LineReader>>(reader);
  const HANDLE thread = CreateThread(nullptr, 0, LineReader::Run, holder.get(), 0, nullptr);
  if (thread == nullptr) {
    return std::nullopt;
  }
  static_cast<void>(holder.release());
  while (!StopRequested() && WaitForSingleObject(thread, kLookMilliseconds) == WAIT_TIMEOUT) {
  }
  const bool isRead = WaitForSingleObject(thread, 0) == WAIT_OBJECT_0;
  CloseHandle(thread);
  return isRead && reader->hasLine ? std::optional(reader->line) : std::nullopt;
}

}  // namespace zemctl
