// Blocks of bytes one behind the other.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <vector>

namespace zem::testing {

inline std::vector<std::uint8_t> Joined(std::initializer_list<std::vector<std::uint8_t>> parts) {
  std::vector<std::uint8_t> joined;
  for (const std::vector<std::uint8_t>& part : parts) {
    joined.insert(joined.end(), part.begin(), part.end());
  }
  return joined;
}

}  // namespace zem::testing
