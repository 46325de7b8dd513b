// Bytes into the selected storage and out of it: in whole sectors, by commands of at most 32,768
// bytes. Addresses are byte addresses of 32 bits.
//
// A result of this file is 1 (Erase: 0) or kFail. A write that fails stops at once, leaves what was
// written, and puts a line on the debugger channel.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include "platform/com.h"
#include "romboot/rom_boot_config.h"

namespace zem {

inline constexpr std::uint32_t kMaxTransfer = 32768;

// How much there is room for in 32-bit addresses.
inline constexpr std::uint64_t kStorageSpace = std::uint64_t{1} << 32;

constexpr std::uint64_t WholeSectors(std::uint64_t size) {
  return (size + kSectorSize - 1) / kSectorSize * kSectorSize;
}

// Whether `size` bytes in whole sectors, from an address on, stay within 32-bit addresses. What
// does not would go on at address 0.
constexpr bool FitsInStorage(std::uint64_t address, std::uint64_t size) {
  return address + WholeSectors(size) <= kStorageSpace;
}

// Calls `transfer(offset, length)` for one command after the other and moves `address` behind each
// that gave true. False at the first that did not.
template <class Transfer>
bool ForEachTransfer(std::uint32_t& address, std::uint64_t size, Transfer transfer) {
  const std::uint64_t end = WholeSectors(size);
  for (std::uint64_t offset = 0; offset < end;) {
    const auto length =
        static_cast<std::uint32_t>(std::min<std::uint64_t>(end - offset, kMaxTransfer));
    if (!transfer(offset, length)) {
      return false;
    }
    address += length;
    offset += length;
  }
  return true;
}

// 1; or kFail, with the line that reports a failed write.
HRESULT WriteResult(bool written);

// Writes `size` bytes, and what follows them up to a whole sector, and moves `address` behind them.
// `firstFlag` goes with the first command, 0 with the others. The dump file sees nothing of it.
HRESULT WriteSectors(ZemRomBootConfig& session, std::uint32_t& address, const std::uint8_t* data,
                     std::uint64_t size, std::uint8_t firstFlag = 0);

// The same, mirrored to the dump file without the rounding.
// REQUIRES: readable memory behind `data` up to a whole sector.
HRESULT WriteMirrored(ZemRomBootConfig& session, std::uint32_t& address,
                      std::span<const std::uint8_t> data);

// Writes 0xFF over `size` bytes and the rest of their last sector: there is no command that erases.
// The dump file gets `size` bytes.
HRESULT Erase(ZemRomBootConfig& session, std::uint32_t address, std::uint32_t size);

}  // namespace zem
