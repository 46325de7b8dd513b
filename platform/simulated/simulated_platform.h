// The controls of the simulated operating system: what a native test sets up before it calls the
// library and looks at afterwards. Each thread is on a system of its own, and owns the whole of it.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace zem::platform::simulated {

// One message in the thread's queue.
struct Message {
  std::function<void()> handler;  // the window procedure's work; may be missing
  bool isQuit = false;
};

// One device control as the system sees it.
struct VolumeRequest {
  std::wstring path;  // of the volume
  std::uint32_t code;
  void* block;  // what goes in and what comes back
  std::uint32_t inputLength;
  std::uint32_t outputLength;
};

// What stands behind a volume. Answers a request with nothing when it is done, or with the system's
// error code, which may even be 0.
using VolumeAnswer = std::function<std::optional<std::uint32_t>(const VolumeRequest&)>;

// One volume that has been opened; its handle is its address.
struct OpenedVolume {
  std::wstring path;
  VolumeAnswer answer;
  bool open = true;
};

struct System {
  // Folder of the host executable. May be longer than a path buffer holds.
  std::wstring hostFolder = L"C:\\Host";

  // Private profile files by full path, and every path that was asked for.
  std::map<std::wstring, std::wstring> profileFiles;
  std::vector<std::wstring> profileReads;

  // Answers CreateDeviceEnumerator. Unset: the class is not registered (0x80040154).
  std::function<HRESULT(ICreateDevEnum**)> createDeviceEnumerator;

  // Files that OpenFile refuses to open.
  std::function<bool(const std::wstring& path)> refuseFile;

  // Volumes by path, such as L"\\\\.\\F:", every path that was asked for, and every one opened.
  std::map<std::wstring, VolumeAnswer> volumes;
  // Asked whenever a path is opened that is not among them; answers one opening. No answer: there
  // is no such volume. Unset: nor is there any.
  std::function<VolumeAnswer(const std::wstring& path)> openVolume;
  std::vector<std::wstring> volumePaths;
  std::deque<OpenedVolume> openedVolumes;
  // Paths of the volumes that are open, in the order of their opening.
  std::vector<std::wstring> OpenVolumePaths() const;
  std::function<void(const std::wstring& path)> onCloseVolume;
  // Controls and closings of a handle that is none or is closed.
  int invalidVolumeCalls = 0;

  // The error code of the last platform call that failed, and the system's text for each code.
  std::uint32_t lastError = 0;
  std::map<std::uint32_t, std::wstring> errorTexts;

  // The virtual clock, and every sleep that moved it.
  std::uint32_t clockMilliseconds = 0;
  std::vector<std::uint32_t> sleeps;
  std::function<void(std::uint32_t milliseconds)> onSleep;

  // The thread's message queue, how often it was drained, and the messages dispatched so far.
  std::deque<Message> messages;
  int queueDrains = 0;
  int dispatchedMessages = 0;
  std::function<void()> onDrain;  // called at the beginning of each drain

  // The local time of day, which stands still.
  LocalTime localTime = {2024, 3, 5, 7, 8, 9};

  // COM initialisations and uninitialisations of the thread.
  int comInitializations = 0;
  int comUninitializations = 0;
  int ComBalance() const { return comInitializations - comUninitializations; }

  // Whole debugger texts, in order, unless recording is off.
  bool recordDebuggerLines = true;
  std::vector<std::wstring> debuggerLines;
  std::function<void(const std::wstring& text)> onDebuggerText;

  // Times the invalid-parameter path was taken. The simulated process survives it.
  int invalidParameterCalls = 0;
};

// The calling thread's system; lives as long as the thread.
System& TheSystem();

// Back to a freshly started system.
void Reset();

}  // namespace zem::platform::simulated
