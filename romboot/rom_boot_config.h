// The session behind every ROM-boot handle. Used by one thread at a time.
#pragma once

#include <cstdint>

#include "platform/platform.h"
#include "romboot/usb_scsi_cmd.h"

namespace zem {

class ZemRomBootConfig {
 public:
  ZemRomBootConfig() = default;
  ZemRomBootConfig(const ZemRomBootConfig&) = delete;
  ZemRomBootConfig& operator=(const ZemRomBootConfig&) = delete;
  // Closes the channel's volume.
  virtual ~ZemRomBootConfig() = default;

  // While it is not 0, what the block writer and the eraser put into storage is also written into
  // the file at `dumpPath`.
  std::uint32_t dumpEnabled = 0;
  wchar_t dumpPath[platform::kPathCapacity] = {};
  UsbScsiCmd scsi;
};

// Each does what the export of the same meaning documents in include/ZemUVCExtApi.h.
ZemRomBootConfig* OpenRomBoot(unsigned mode);
void CloseRomBoot(ZemRomBootConfig* session);

}  // namespace zem
