// Loading a firmware image into the camera's memory.
#pragma once

#include <cstdint>
#include <span>

#include "platform/com.h"
#include "romboot/rom_boot_config.h"

namespace zem {

// The sum of a piece's little-endian 32-bit words, modulo 1 << 32. Bytes behind the last whole word
// do not count.
std::uint32_t WordSum(std::span<const std::uint8_t> piece);

// What ZEMROMAPI_LoadFW2Memory documents.
HRESULT LoadFW2Memory(ZemRomBootConfig& session, const wchar_t* path, std::uint32_t* address);

}  // namespace zem
