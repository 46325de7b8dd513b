// Numbers in byte blocks. Offsets are the caller's to check.
#pragma once

#include <cstdint>

namespace zem {

inline std::uint16_t LoadLe16(const std::uint8_t* bytes) {
  return static_cast<std::uint16_t>(bytes[0] | (bytes[1] << 8));
}

inline std::uint32_t LoadLe32(const std::uint8_t* bytes) {
  return LoadLe16(bytes) | (static_cast<std::uint32_t>(LoadLe16(bytes + 2)) << 16);
}

inline std::uint16_t LoadBe16(const std::uint8_t* bytes) {
  return static_cast<std::uint16_t>((bytes[0] << 8) | bytes[1]);
}

inline std::uint32_t LoadBe32(const std::uint8_t* bytes) {
  return (static_cast<std::uint32_t>(LoadBe16(bytes)) << 16) | LoadBe16(bytes + 2);
}

// The index-th byte of a number, counted from the least significant.
template <class Number>
constexpr std::uint8_t ByteOf(Number number, unsigned index) {
  return static_cast<std::uint8_t>(number >> (8 * index));
}

inline void StoreLe16(std::uint8_t* bytes, std::uint16_t number) {
  bytes[0] = ByteOf(number, 0);
  bytes[1] = ByteOf(number, 1);
}

inline void StoreLe32(std::uint8_t* bytes, std::uint32_t number) {
  StoreLe16(bytes, static_cast<std::uint16_t>(number));
  StoreLe16(bytes + 2, static_cast<std::uint16_t>(number >> 16));
}

inline void StoreBe16(std::uint8_t* bytes, std::uint16_t number) {
  bytes[0] = ByteOf(number, 1);
  bytes[1] = ByteOf(number, 0);
}

inline void StoreBe32(std::uint8_t* bytes, std::uint32_t number) {
  StoreBe16(bytes, static_cast<std::uint16_t>(number >> 16));
  StoreBe16(bytes + 2, static_cast<std::uint16_t>(number));
}

}  // namespace zem
