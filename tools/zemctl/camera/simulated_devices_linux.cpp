// The simulator in this process, linked with the tool. library_hooks_linux.cpp leads the library
// and this program to the list.
#include "simulator/linux/private_devices.h"
#include "tools/zemctl/camera/simulated_devices.h"
#include "tools/zemctl/camera/simulated_volumes.h"

namespace zemctl {
namespace {

using zem::simulator::SimulatedSystem;

std::shared_ptr<void> ListVolumes(const SimulatedSystem::BootLoaders& bootLoaders) {
  return std::make_shared<SimulatedVolumes>(bootLoaders);
}

}  // namespace

struct SimulatedDevices::Running {
  SimulatedSystem system;
};

SimulatedDevices::SimulatedDevices(const std::string& options)
    : running_(std::make_unique<Running>()) {
  try {
    running_->system.Start(zem::simulator::ParseOptions(options),
                           zem::simulator::MakePrivateListing(), ListVolumes);
  } catch (const std::exception& error) {
    running_->system.Abandon();
    throw SimulatorRefusal(error.what());
  }
}

SimulatedDevices::~SimulatedDevices() = default;

std::string SimulatedDevices::Stop() {
  try {
    running_->system.Stop();
    return "";
  } catch (const std::exception& error) {
    return error.what();
  }
}

}  // namespace zemctl
