// The volumes of simulated boot loaders, for a library that looks for none itself: on Linux. While
// one lives, the library in this process finds them and none of the machine's.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "simulator/boot_loader.h"
#include "tools/zemctl/camera/volume_watch.h"

namespace zemctl {

class SimulatedVolumes : public VolumeSource {
 public:
  // There is one at a time; it may have none.
  explicit SimulatedVolumes(const std::vector<std::shared_ptr<zem::simulator::BootLoader>>& all);
  ~SimulatedVolumes() override;
  SimulatedVolumes(const SimulatedVolumes&) = delete;
  SimulatedVolumes& operator=(const SimulatedVolumes&) = delete;

  // That of this process; null when there is none.
  static SimulatedVolumes* OfProcess();

  VolumeOpening OpenVolume(const std::string& drive) override;
  void Execute(ScsiCommand& command) override;

 private:
  struct Volume {
    std::shared_ptr<zem::simulator::BootLoader> bootLoader;
    std::uint32_t connection = 0;  // of the last opening
  };
  std::map<std::string, Volume> volumes_;
};

}  // namespace zemctl
