// The vendor unit's 8-byte block: a command, or the reply to one with its status in byte 0.
#pragma once

#include <array>
#include <cstdint>

namespace zem::simulator {

using Block = std::array<std::uint8_t, 8>;

inline constexpr std::uint8_t kAcceptedStatus = 0;
inline constexpr std::uint8_t kRefusedStatus = 1;

}  // namespace zem::simulator
