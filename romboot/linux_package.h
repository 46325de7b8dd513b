// Writing a Linux firmware package into storage. Each does what its export documents.
#pragma once

#include <cstdint>

#include "platform/com.h"
#include "romboot/rom_boot_config.h"

namespace zem {

HRESULT UpdateLinuxFwPkg(ZemRomBootConfig& session, const wchar_t* path, std::uint32_t bodyAddress,
                         std::uint32_t headerAddress);
HRESULT UpdateLinuxFwPkgAtOwnAddress(ZemRomBootConfig& session, const wchar_t* path,
                                     std::uint32_t headerAddress);

}  // namespace zem
