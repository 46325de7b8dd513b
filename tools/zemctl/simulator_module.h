// ZemSimulator.dll, loaded for one run.
#pragma once

#include <string>
#include <vector>

namespace zemctl {

class SimulatorModule {
 public:
  // Starts the simulated cameras of `options` (JSON, or empty for one camera), with `faults` added
  // to the first of them. Throws std::runtime_error when that fails.
  SimulatorModule(const std::string& options, const std::vector<std::string>& faults);
  ~SimulatorModule();
  SimulatorModule(const SimulatorModule&) = delete;
  SimulatorModule& operator=(const SimulatorModule&) = delete;

 private:
  void* module_;
};

}  // namespace zemctl
