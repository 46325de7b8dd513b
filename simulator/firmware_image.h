// What the simulated camera looks for in a firmware image: a header of 20 bytes.
//
//   bytes 0..7    "ZEMFWIMG"
//   bytes 8..13   firmware version
//   bytes 14..15  the sum of all bytes from 20 on, its low 16 bits, little-endian
//   bytes 16..19  length of the image with its header, little-endian
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace zem::simulator {

using FirmwareVersion = std::array<std::uint8_t, 6>;

struct FirmwareImage {
  FirmwareVersion version = {};
  bool checkSumRight = false;
};

// Nothing for bytes that do not begin with a header whose length they hold.
std::optional<FirmwareImage> ReadFirmwareImage(std::span<const std::uint8_t> bytes);

// An image of this version around `payload`.
std::vector<std::uint8_t> MakeFirmwareImage(const FirmwareVersion& version,
                                            std::span<const std::uint8_t> payload);

}  // namespace zem::simulator
