// Bytes without meaning, the same ones for the same seed.
#pragma once

#include <cstdint>
#include <span>

namespace zem::simulator {

inline void FillWithNoise(std::span<std::uint8_t> bytes, std::uint64_t seed) {
  std::uint32_t noise = 0x9E3779B9U + static_cast<std::uint32_t>(seed);
  for (std::uint8_t& byte : bytes) {
    noise = noise * 1664525U + 1013904223U;
    byte = static_cast<std::uint8_t>(noise >> 24);
  }
}

}  // namespace zem::simulator
