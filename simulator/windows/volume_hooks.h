// The drive letters of simulated boot loaders, as ZemUVCExtApi.dll in this process sees it.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "simulator/volume.h"
#include "simulator/windows/volume_imports.h"

namespace zem::simulator {

// While it lives, the library's CreateFileW, DeviceIoControl and CloseHandle reach the volumes
// where they name one, and the system everywhere else; there is no other volume when `areOnly`.
// There is one at a time.
class VolumeHooks {
 public:
  // Throws std::runtime_error when the library is not loaded in this process.
  VolumeHooks(const std::vector<std::shared_ptr<BootLoader>>& bootLoaders, bool areOnly);
  ~VolumeHooks();
  VolumeHooks(const VolumeHooks&) = delete;
  VolumeHooks& operator=(const VolumeHooks&) = delete;

 private:
  std::optional<VolumeImports> imports_;
};

}  // namespace zem::simulator
