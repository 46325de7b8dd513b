// Loading a code image into the boot loader's memory and starting it.
#pragma once

#include "platform/com.h"
#include "romboot/rom_boot_config.h"

namespace zem {

// Each does what its export documents.
HRESULT LoadMiniUVC(ZemRomBootConfig& session, const wchar_t* path);
HRESULT LoadUpdater(ZemRomBootConfig& session, const wchar_t* path);

}  // namespace zem
