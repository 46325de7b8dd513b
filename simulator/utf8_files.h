// Files by paths in UTF-8, on every system.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

namespace zem::simulator {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// As std::fopen.
File OpenUtf8(const std::string& path, const char* mode);

// Gives a file another's name, in place of one that has it. False when that fails.
bool ReplaceUtf8(const std::string& from, const std::string& to);

}  // namespace zem::simulator
