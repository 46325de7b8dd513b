// A whole file, for the examples that burn one.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

// Empty when it cannot be read.
inline std::vector<std::uint8_t> ReadFile(const std::string& path) {
  std::vector<std::uint8_t> bytes;
  if (std::FILE* const file = std::fopen(path.c_str(), "rb")) {
    std::uint8_t part[4096];
    while (const std::size_t count = std::fread(part, 1, sizeof(part), file)) {
      bytes.insert(bytes.end(), part, part + count);
    }
    std::fclose(file);
  }
  return bytes;
}
