// Uses the window of responsive_window among simulated cameras, as somebody in front of it would:
//
//   responsive_window_used OPTIONS ACTIONS ARGUMENTS...
//
// ACTIONS are "update", and "close" once half is sent; with neither the window is closed as it is.
// Prints what is to be seen, and how the window answered meanwhile.
#undef main
// The first one is for the others.
// clang-format off
#include <windows.h>
#include <commctrl.h>
// clang-format on

#include <cstdio>
#include <string>

#include "simulator/ZemSimulator.h"

int ExampleMain(int count, char** arguments);

namespace {

constexpr int kStatus = 100;
constexpr int kBar = 101;
constexpr DWORD kLongestWait = 30000;

struct User {
  std::string actions;
  HANDLE stop = nullptr;  // there is nothing to use any more

  bool Does(const char* action) const { return actions.find(action) != std::string::npos; }
};

// What a window answers at once is back in a few milliseconds; a thread that sleeps for half a
// second is not there for that, however fast the machine.
struct Answers {
  static constexpr DWORD kAtOnce = 100;
  unsigned asked = 0;
  unsigned late = 0;
  DWORD longest = 0;

  void Ask(HWND window) {
    const ULONGLONG begin = GetTickCount64();
    DWORD_PTR answer = 0;
    SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, kLongestWait, &answer);
    const auto taken = static_cast<DWORD>(GetTickCount64() - begin);
    ++asked;
    late += taken > kAtOnce ? 1 : 0;
    longest = taken > longest ? taken : longest;
  }
};

void Say(HWND window, const char* when) {
  wchar_t text[256] = {};
  GetDlgItemTextW(window, kStatus, text, 256);
  std::printf("%s: ", when);
  for (const wchar_t* character = text; *character != 0; ++character) {
    std::putchar(*character == L'\n' ? '|' : static_cast<char>(*character));
  }
  std::printf("\n");
}

HWND AwaitWindow(HANDLE stop) {
  HWND window = nullptr;
  while (IsWindowVisible(window) == 0 && WaitForSingleObject(stop, 10) == WAIT_TIMEOUT) {
    window = FindWindowW(L"ZemFirmwareUpdate", nullptr);
  }
  return window;
}

// Looks on from the click to the end of the update, and closes the window on the way.
void Update(const User& user, HWND window) {
  const HWND start = GetDlgItem(window, IDOK);
  const HWND bar = GetDlgItem(window, kBar);
  // Without waiting for what the click leads to.
  PostMessageW(window, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), reinterpret_cast<LPARAM>(start));
  for (DWORD waited = 0; IsWindowEnabled(start) != 0 && waited < kLongestWait; ++waited) {
    Sleep(1);
  }
  bool isClosed = false;
  Answers answers;
  while (IsWindow(window) != 0 && IsWindowEnabled(start) == 0) {
    answers.Ask(window);
    if (user.Does("close") && !isClosed && SendMessageW(bar, PBM_GETPOS, 0, 0) >= 50) {
      isClosed = true;
      SendMessageW(window, WM_CLOSE, 0, 0);
      std::printf("closed on the way: %s\n", IsWindow(window) != 0 ? "it stays" : "it is gone");
      std::printf("may log off: %s\n",
                  SendMessageW(window, WM_QUERYENDSESSION, 0, 0) != 0 ? "yes" : "no");
    }
    Sleep(5);
  }
  // Whatever the end of the update does to it is done once it answers again.
  SendMessageW(window, WM_NULL, 0, 0);
  std::printf("%u answers, %u of them late, the longest took %lu ms\n", answers.asked, answers.late,
              answers.longest);
}

DWORD WINAPI Use(void* argument) {
  const User& user = *static_cast<const User*>(argument);
  const HWND window = AwaitWindow(user.stop);
  if (window == nullptr) {
    return 0;
  }
  Say(window, "at first");
  if (user.Does("update")) {
    Update(user, window);
  }
  if (IsWindow(window) != 0) {
    Say(window, "at last");
    std::printf("bar: %d\n", static_cast<int>(SendDlgItemMessageW(window, kBar, PBM_GETPOS, 0, 0)));
    SendMessageW(window, WM_CLOSE, 0, 0);
  } else {
    std::printf("at last: the window has closed\n");
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  constexpr int kNoSimulator = 99;
  if (argc < 3 || ZemSimulatorStartPrivate(argv[1]) < 0) {
    std::printf("%s\n", ZemSimulatorLastError());
    return kNoSimulator;
  }
  User user = {argv[2], CreateEventW(nullptr, TRUE, FALSE, nullptr)};
  const HANDLE thread = CreateThread(nullptr, 0, Use, &user, 0, nullptr);
  const int result = ExampleMain(argc - 2, argv + 2);
  SetEvent(user.stop);
  WaitForSingleObject(thread, INFINITE);
  ZemSimulatorStop();
  return result;
}
