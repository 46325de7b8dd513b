#include <windows.h>

#include <array>

#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/folders.h"

namespace zemctl {

std::wstring WholePath(const std::string& path) {
  std::array<wchar_t, MAX_PATH> whole = {};
  GetFullPathNameW(Widen(path).c_str(), MAX_PATH, whole.data(), nullptr);
  return whole.data();
}

bool EnterFolder(const std::string& path) {
  return SetCurrentDirectoryW(Widen(path).c_str()) != FALSE;
}

}  // namespace zemctl
