// Numbers in byte blocks. Offsets are the caller's to check.
#pragma once

#include <cstdint>

namespace zem {

inline std::uint16_t LoadLe16(const std::uint8_t* bytes) {
  return static_cast<std::uint16_t>(bytes[0] | (bytes[1] << 8));
}

// The index-th byte of a number, counted from the least significant.
template <class Number>
constexpr std::uint8_t ByteOf(Number number, unsigned index) {
  return static_cast<std::uint8_t>(number >> (8 * index));
}

}  // namespace zem
