// Writing and reading any region of storage, without a package around it. Each does what its export
// documents.
#pragma once

#include <cstdint>

#include "platform/com.h"
#include "romboot/rom_boot_config.h"

namespace zem {

HRESULT PartialUpdateWithHeader(ZemRomBootConfig& session, const wchar_t* path,
                                std::uint32_t* address);
HRESULT PartialUpdate(ZemRomBootConfig& session, const wchar_t* path, std::uint32_t* address);
HRESULT PartialRead(ZemRomBootConfig& session, const wchar_t* path, std::uint32_t* address,
                    std::uint32_t length);

}  // namespace zem
