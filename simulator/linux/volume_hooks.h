// The volumes of simulated boot loaders, as libZemUVCExtApi.so in this process sees them.
#pragma once

#include <memory>
#include <vector>

#include "simulator/boot_loader.h"

namespace zem::simulator {

// While it lives, the library finds these volumes at their drive letters and none of the machine's.
// There is one at a time.
class VolumeHooks {
 public:
  // Throws std::runtime_error when the library is not loaded in this process.
  explicit VolumeHooks(const std::vector<std::shared_ptr<BootLoader>>& bootLoaders);
  ~VolumeHooks();
  VolumeHooks(const VolumeHooks&) = delete;
  VolumeHooks& operator=(const VolumeHooks&) = delete;

 private:
  struct Hooks;
  std::unique_ptr<Hooks> hooks_;
};

}  // namespace zem::simulator
