// Simulated devices that this process finds and no other does, as the system provides for it.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>

namespace zemctl {

// The options are well-formed and do not start the devices all the same.
class SimulatorRefusal : public std::runtime_error {
 public:
  using runtime_error::runtime_error;
};

// There are some of one run at a time.
class SimulatedDevices {
 public:
  // `options` is JSON. Throws SimulatorRefusal; std::runtime_error when there is no simulator.
  explicit SimulatedDevices(const std::string& options);
  ~SimulatedDevices();
  SimulatedDevices(const SimulatedDevices&) = delete;
  SimulatedDevices& operator=(const SimulatedDevices&) = delete;

  // To be called before the end. Why the state files could not be written; empty when they were.
  std::string Stop();

 private:
  struct Running;
  std::unique_ptr<Running> running_;
};

}  // namespace zemctl
