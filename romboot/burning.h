// Burning the vendor's image and package files. Each does what its export documents.
#pragma once

#include <cstdint>

#include "platform/com.h"
#include "romboot/rom_boot_config.h"

namespace zem {

HRESULT BurnFw(ZemRomBootConfig& session, const wchar_t* path, std::uint32_t* address);
HRESULT BurnPcCamFw(ZemRomBootConfig& session, const wchar_t* path, std::uint32_t* address);
HRESULT BurnPcCamFwPnsV2(ZemRomBootConfig& session, const wchar_t* path, std::uint32_t* address);

}  // namespace zem
