// Firmware files as the vendor's tools make them, written out by field.
#pragma once

#include <cstdint>
#include <vector>

#include "tests/support/joined.h"
#include "tests/support/rom_boot_test.h"

namespace zem::testing {

inline void PutLe32(Bytes& bytes, std::size_t offset, std::uint32_t number) {
  for (std::size_t index = 0; index < 4; ++index) {
    bytes.at(offset + index) = static_cast<std::uint8_t>(number >> (8 * index));
  }
}

// 18 bytes, a header block of 4,096, the payload.
inline Bytes ImageFile(const Bytes& headerBlock, const Bytes& payload) {
  Bytes header = {'V', 'S', 'N', '_', 'V', '2', 'F', 'W', 1, 0, 0x44, 0x33, 0x22, 0x11, 0, 0, 0, 0};
  PutLe32(header, 14, static_cast<std::uint32_t>(payload.size()));
  return Joined({header, headerBlock, payload});
}

// `offset` bytes counted from byte 10, then the data.
inline Bytes PcCamFile(std::uint32_t offset, const Bytes& data) {
  Bytes header(10 + offset, 0xA5);
  PutLe32(header, 10, offset);
  PutLe32(header, 14, static_cast<std::uint32_t>(data.size()));
  return Joined({header, data});
}

// A section of a package: its header block says how long the payload is.
inline Bytes PackageSection(std::uint8_t first, std::uint32_t value, const Bytes& payload) {
  Bytes header = SomeBytes(4096, first);
  PutLe32(header, 20, static_cast<std::uint32_t>(payload.size()));
  PutLe32(header, 24, value);
  return Joined({header, payload});
}

// The header of a Linux package, 8,192 bytes.
inline Bytes LinuxHeader(std::uint32_t shift, std::uint32_t bodyUnits) {
  Bytes header = SomeBytes(8192, 3);
  PutLe32(header, 8, shift);
  PutLe32(header, 16, bodyUnits);
  return header;
}

}  // namespace zem::testing
