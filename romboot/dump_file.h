// The dump file: a mirror of what the eraser and the block writer put into storage, each byte at
// its storage address. A dump file that is missing or cannot be written is no failure.
#pragma once

#include <cstdint>
#include <span>

#include "platform/com.h"
#include "romboot/rom_boot_config.h"

namespace zem {

// What the export of the same name documents in include/ZemUVCExtApi.h.
HRESULT CreateDumpFile(ZemRomBootConfig& session, const wchar_t* path, int size);

// While the session has a dump file: writes bytes, or `size` bytes of 0xFF, into it.
void MirrorBytes(const ZemRomBootConfig& session, std::uint32_t address,
                 std::span<const std::uint8_t> bytes);
void MirrorErased(const ZemRomBootConfig& session, std::uint32_t address, std::uint32_t size);

}  // namespace zem
