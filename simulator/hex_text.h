// Bytes as hexadecimal digits, two each.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace zem::simulator {

inline std::string HexOf(std::span<const std::uint8_t> bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
  }
  return text;
}

}  // namespace zem::simulator
