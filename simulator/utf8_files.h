// Files by paths in UTF-8, on every system.
#pragma once

#include <cstdio>
#include <string>

namespace zem::simulator {

// As std::fopen.
std::FILE* OpenUtf8(const std::string& path, const char* mode);

// Gives a file another's name, in place of one that has it. False when that fails.
bool ReplaceUtf8(const std::string& from, const std::string& to);

}  // namespace zem::simulator
