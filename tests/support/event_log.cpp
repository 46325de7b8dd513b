#include "tests/support/event_log.h"

#include "platform/simulated/simulated_platform.h"

namespace zem::testing {
namespace {

// The library's lines and paths are ASCII.
std::string NarrowAscii(std::wstring_view text) {
  std::string narrow;
  for (const wchar_t character : text) {
    narrow += character < 0x80 ? static_cast<char>(character) : '?';
  }
  return narrow;
}

}  // namespace

std::string LineEvent(std::wstring_view text) { return "line " + NarrowAscii(text); }

void ListenToSystem(const std::function<void(std::string event)>& write) {
  platform::simulated::System& system = platform::simulated::TheSystem();
  system.onDebuggerText = [write](const std::wstring& text) { write(LineEvent(text)); };
  system.onSleep = [write](std::uint32_t milliseconds) {
    write("sleep " + std::to_string(milliseconds));
  };
  system.onCloseVolume = [write](const std::wstring& path) { write("close " + NarrowAscii(path)); };
}

}  // namespace zem::testing
