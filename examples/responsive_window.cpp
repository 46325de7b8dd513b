// A window that updates the firmware of the first default camera and stays alive meanwhile: it
// moves, paints, counts the seconds and answers its buttons. Windows:
//
//   responsive_window 516x|517x IMAGE
//
// The window's thread does nothing but answer messages. A second one opens the camera, updates it
// and closes it, and tells the window by messages how far it is. The update could run on the
// window's thread too, which the library lets take its messages now and then. But between two of
// these moments it is deaf, up to half a second, and a click could begin a second update inside the
// first.
//
// There is no way to stop an update on its way, and the window does not close before it has ended:
// with the program the thread would end in the middle, and leave a camera without firmware that
// starts. Who wants to close it is told so, and it closes when that is safe.

// The first one is for the others.
// clang-format off
#include <windows.h>
#include <commctrl.h>
#include <process.h>
// clang-format on

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "ZemUVC.hpp"
#include "read_file.hpp"

namespace {

// From the updating thread to the window: the percentage that is sent; that the update has ended.
constexpr UINT kSent = WM_APP;
constexpr UINT kEnded = WM_APP + 1;

constexpr int kStatus = 100;
constexpr int kBar = 101;

// What both threads know. While the update runs it is its thread's alone, but for the window's
// handle.
struct Update {
  bool is516x = false;
  std::vector<std::uint8_t> image;
  HWND window = nullptr;
  std::string failure;  // empty when there is none
};

// Without a word where all is well. The library reports success also where part of the image was
// lost on the way: what counts is the camera's own check of what it holds then.
std::string BurnAndCheck(const Update& update) {
  const auto tell = [&](std::uint32_t percentLeft) {
    if (percentLeft <= 100) {
      PostMessageW(update.window, kSent, 100 - percentLeft, 0);
    }
  };
  try {
    zemuvc::Camera camera = zemuvc::Camera::Open();
    if (update.is516x) {
      camera.UpdateFirmware516x(update.image, 0, tell);
    } else {
      camera.UpdateFirmware517x(update.image, tell);
    }
    camera.CheckFirmware();
    return "";
  } catch (const zemuvc::Error& error) {
    return error.what();
  }
}

unsigned __stdcall RunUpdate(void* argument) {
  auto& update = *static_cast<Update*>(argument);
  // COM is each thread's own, and a camera is opened, used and closed on one thread.
  const HRESULT com = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  // A machine that falls asleep takes the camera's power away.
  SetThreadExecutionState(ES_CONTINUOUS | ES_SYSTEM_REQUIRED);
  update.failure = BurnAndCheck(update);
  SetThreadExecutionState(ES_CONTINUOUS);
  if (SUCCEEDED(com)) {
    CoUninitialize();
  }
  PostMessageW(update.window, kEnded, 0, 0);
  return 0;
}

class Window {
 public:
  explicit Window(Update& update) : update_(update) {}

  bool Show() {
    const INITCOMMONCONTROLSEX controls = {sizeof(controls), ICC_PROGRESS_CLASS};
    InitCommonControlsEx(&controls);
    WNDCLASSEXW kind = {};
    kind.cbSize = sizeof(kind);
    kind.lpfnWndProc = Receive;
    kind.hInstance = GetModuleHandleW(nullptr);
    kind.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));
    kind.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
    kind.lpszClassName = L"ZemFirmwareUpdate";
    RegisterClassExW(&kind);
    window_ =
        CreateWindowExW(0, kind.lpszClassName, L"Firmware update",
                        WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX, CW_USEDEFAULT,
                        CW_USEDEFAULT, 440, 170, nullptr, nullptr, kind.hInstance, this);
    if (window_ == nullptr) {
      return false;
    }
    Add(L"STATIC", L"Ready.", kStatus, {10, 10, 410, 36});
    bar_ = Add(PROGRESS_CLASSW, L"", kBar, {10, 52, 410, 20});
    start_ = Add(L"BUTTON", L"Update", IDOK, {220, 90, 95, 28});
    Add(L"BUTTON", L"Close", IDCANCEL, {325, 90, 95, 28});
    ShowWindow(window_, SW_SHOWNORMAL);
    return true;
  }

  HWND handle() const { return window_; }

 private:
  static LRESULT CALLBACK Receive(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message == WM_NCCREATE) {
      const auto* const creation = reinterpret_cast<const CREATESTRUCTW*>(second);
      SetWindowLongPtrW(window, GWLP_USERDATA,
                        reinterpret_cast<LONG_PTR>(creation->lpCreateParams));
    }
    auto* const self = reinterpret_cast<Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    LRESULT answer = 0;
    return self != nullptr && self->Handle(message, first, answer)
               ? answer
               : DefWindowProcW(window, message, first, second);
  }

  // Whether this was a message that means something here.
  bool Handle(UINT message, WPARAM first, LRESULT& answer) {
    switch (message) {
      case WM_COMMAND:
        if (LOWORD(first) == IDOK && thread_ == nullptr) {
          Start();
        } else if (LOWORD(first) == IDCANCEL) {
          Close();
        }
        return true;
      case WM_TIMER:
        ++seconds_;
        ShowStatus();
        return true;
      case kSent:
        // A 517x camera's percentage goes back once, from sending to burning.
        if (first > sent_) {
          sent_ = first;
          SendMessageW(bar_, PBM_SETPOS, first, 0);
          ShowStatus();
        }
        return true;
      case kEnded:
        End();
        return true;
      case WM_CLOSE:
        Close();
        return true;
      case WM_QUERYENDSESSION:
        // Whoever logs off sees the reason given in Start.
        answer = thread_ == nullptr ? TRUE : FALSE;
        return true;
      case WM_DESTROY:
        PostQuitMessage(isDone_ ? 0 : 1);
        return true;
      default:
        return false;
    }
  }

  void Start() {
    update_.window = window_;
    update_.failure.clear();
    isDone_ = false;
    sent_ = 0;
    seconds_ = 0;
    SendMessageW(bar_, PBM_SETPOS, 0, 0);
    thread_ = reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, RunUpdate, &update_, 0, nullptr));
    if (thread_ == nullptr) {
      SetStatus(L"The update could not be started. Nothing was sent.");
      return;
    }
    EnableWindow(start_, FALSE);
    ShutdownBlockReasonCreate(window_, L"A camera's firmware is being updated.");
    SetTimer(window_, 1, 1000, nullptr);
    ShowStatus();
  }

  // The thread has posted its last message.
  void End() {
    WaitForSingleObject(thread_, INFINITE);
    CloseHandle(thread_);
    thread_ = nullptr;
    KillTimer(window_, 1);
    ShutdownBlockReasonDestroy(window_);
    EnableWindow(start_, TRUE);
    isDone_ = update_.failure.empty();
    if (isDone_) {
      SetStatus(L"Done: the camera's check sum is right. Restart the camera to run it.");
    } else {
      // All of it is ASCII.
      SetStatus(std::wstring(update_.failure.begin(), update_.failure.end()) +
                L"\nLeave the camera powered and update it once more.");
    }
    // What went wrong is to be read before the window goes.
    if (isClosing_ && isDone_) {
      DestroyWindow(window_);
    }
    isClosing_ = false;
  }

  void Close() {
    if (thread_ == nullptr) {
      DestroyWindow(window_);
      return;
    }
    isClosing_ = true;
    ShowStatus();
  }

  void ShowStatus() {
    if (thread_ == nullptr) {
      return;
    }
    const std::wstring step = sent_ < 100 ? std::to_wstring(sent_) + L" % sent, "
                                          : std::wstring(L"The camera burns what it got, ");
    SetStatus(step + std::to_wstring(seconds_) + L" s" +
              (isClosing_ ? L"\nThe camera may not start any more if this breaks off: the window "
                            L"closes when it is done."
                          : L""));
  }

  void SetStatus(const std::wstring& text) { SetDlgItemTextW(window_, kStatus, text.c_str()); }

  HWND Add(const wchar_t* kind, const wchar_t* text, int id, const RECT& place) {
    const DWORD stop = id == IDOK || id == IDCANCEL ? WS_TABSTOP : 0;
    const HWND control = CreateWindowExW(
        0, kind, text, WS_CHILD | WS_VISIBLE | stop, place.left, place.top, place.right,
        place.bottom, window_, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr, nullptr);
    SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(GetStockObject(DEFAULT_GUI_FONT)),
                 TRUE);
    return control;
  }

  Update& update_;
  HWND window_ = nullptr;
  HWND bar_ = nullptr;
  HWND start_ = nullptr;
  HANDLE thread_ = nullptr;  // while the update runs
  bool isDone_ = false;
  bool isClosing_ = false;
  WPARAM sent_ = 0;
  unsigned seconds_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  const std::string chip = argc == 3 ? argv[1] : "";
  Update update;
  update.is516x = chip == "516x";
  if (!update.is516x && chip != "517x") {
    std::printf("usage: responsive_window 516x|517x IMAGE\n");
    return 2;
  }
  update.image = ReadFile(argv[2]);
  if (update.image.empty()) {
    std::printf("%s: not a file with an image\n", argv[2]);
    return 2;
  }
  Window window(update);
  if (!window.Show()) {
    std::printf("there is no screen for a window\n");
    return 1;
  }
  MSG message = {};
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    if (IsDialogMessageW(window.handle(), &message) == 0) {
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
  }
  return static_cast<int>(message.wParam);
}
