// The simulated cameras of one run.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/zemctl/camera/simulated_devices.h"

namespace zemctl {

class SimulatorModule {
 public:
  // Starts the simulated cameras of `options` (JSON, the name of a file with it, or empty for one
  // camera). The first of them gets `faults` and, unless it is empty, the state file `state`. Until
  // they are stopped the library and this program find no other devices. Throws UsageError with the
  // name of the option that is malformed, std::runtime_error when the start fails otherwise.
  SimulatorModule(const std::string& options, const std::vector<std::string>& faults,
                  const std::string& state);
  ~SimulatorModule();
  SimulatorModule(const SimulatorModule&) = delete;
  SimulatorModule& operator=(const SimulatorModule&) = delete;

 private:
  std::optional<SimulatedDevices> devices_;
};

}  // namespace zemctl
