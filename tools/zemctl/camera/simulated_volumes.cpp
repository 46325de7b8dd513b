#include "tools/zemctl/camera/simulated_volumes.h"

#include <optional>
#include <utility>

#include "simulator/volume.h"

namespace zemctl {
namespace {

SimulatedVolumes* simulatedVolumes = nullptr;

}  // namespace

SimulatedVolumes::SimulatedVolumes(
    const std::vector<std::shared_ptr<zem::simulator::BootLoader>>& all) {
  for (const auto& bootLoader : all) {
    volumes_[{static_cast<char>(bootLoader->letter()), ':'}] = {bootLoader};
  }
  simulatedVolumes = this;
}

SimulatedVolumes::~SimulatedVolumes() { simulatedVolumes = nullptr; }

SimulatedVolumes* SimulatedVolumes::OfProcess() { return simulatedVolumes; }

VolumeOpening SimulatedVolumes::OpenVolume(const std::string& drive) {
  const auto found = volumes_.find(drive);
  const std::optional<std::uint32_t> connection =
      found != volumes_.end() ? found->second.bootLoader->Connect() : std::nullopt;
  if (!connection) {
    return {kNoSuchVolume};
  }
  found->second.connection = *connection;
  return {};
}

void SimulatedVolumes::Execute(ScsiCommand& command) {
  const Volume& volume = volumes_.at(command.drive);
  if (!volume.bootLoader->IsConnected(volume.connection)) {
    command.error = zem::simulator::kNotConnected;
    return;
  }
  if (command.isIn) {
    command.data.assign(command.length, 0);
  }
  const zem::simulator::ScsiResult result =
      volume.bootLoader->Execute(command.cdb, command.isIn, command.data);
  command.error = zem::simulator::SystemErrorOf(result);
  command.status = result.status;
  if (command.isIn) {
    command.data.resize(result.moved);
  }
}

}  // namespace zemctl
