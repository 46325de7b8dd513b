#include <unistd.h>

#include <filesystem>

#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/folders.h"

namespace zemctl {

std::wstring WholePath(const std::string& path) {
  return Widen(std::filesystem::absolute(path).string());
}

bool EnterFolder(const std::string& path) { return chdir(path.c_str()) == 0; }

}  // namespace zemctl
