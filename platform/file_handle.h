// A file opened through the platform wall, closed when it goes out of scope.
#pragma once

#include <cstdio>
#include <memory>

#include "platform/platform.h"

namespace zem {

struct FileCloser {
  void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
};

using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

// Null for a file that cannot be opened and for a null path.
inline FileHandle OpenFileHandle(const wchar_t* path, const wchar_t* mode) {
  return FileHandle(platform::OpenFile(path, mode));
}

}  // namespace zem
