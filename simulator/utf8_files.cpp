#include "simulator/utf8_files.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace zem::simulator {

#ifdef _WIN32

namespace {

std::wstring Widen(const std::string& text) {
  const int length = static_cast<int>(text.size());
  const int size = MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(size), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), size);
  return wide;
}

}  // namespace

std::FILE* OpenUtf8(const std::string& path, const char* mode) {
  return _wfopen(Widen(path).c_str(), Widen(mode).c_str());
}

bool ReplaceUtf8(const std::string& from, const std::string& to) {
  return MoveFileExW(Widen(from).c_str(), Widen(to).c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
}

#else

std::FILE* OpenUtf8(const std::string& path, const char* mode) {
  return std::fopen(path.c_str(), mode);
}

bool ReplaceUtf8(const std::string& from, const std::string& to) {
  return std::rename(from.c_str(), to.c_str()) == 0;
}

#endif

}  // namespace zem::simulator
