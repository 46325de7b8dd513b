#include "simulator/utf8_files.h"

#ifdef _WIN32
#include <windows.h>

#include "simulator/wide_text.h"
#endif

namespace zem::simulator {

#ifdef _WIN32

File OpenUtf8(const std::string& path, const char* mode) {
  return File(_wfopen(Widen(path).c_str(), Widen(mode).c_str()));
}

bool ReplaceUtf8(const std::string& from, const std::string& to) {
  return MoveFileExW(Widen(from).c_str(), Widen(to).c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
}

#else

File OpenUtf8(const std::string& path, const char* mode) {
  return File(std::fopen(path.c_str(), mode));
}

bool ReplaceUtf8(const std::string& from, const std::string& to) {
  return std::rename(from.c_str(), to.c_str()) == 0;
}

#endif

}  // namespace zem::simulator
