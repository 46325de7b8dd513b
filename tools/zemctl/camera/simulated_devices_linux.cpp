// The simulator in this process, linked with the tool. library_hooks_linux.cpp leads the library
// and this program to the list.
#include "tools/zemctl/camera/simulated_devices_linux.h"

#include <atomic>

#include "simulator/device_table.h"
#include "simulator/simulated_system.h"
#include "simulator/wide_text.h"
#include "tools/zemctl/camera/simulated_devices.h"
#include "tools/zemctl/camera/simulated_volumes.h"

namespace zemctl {
namespace {

using zem::simulator::DeviceTable;
using zem::simulator::SimulatedDevice;
using zem::simulator::SimulatedSystem;

DeviceTable simulatedDevices;
std::atomic<bool> areSimulated = false;

bool IsCamera(const GUID& category) { return category == zem::CLSID_VideoInputDeviceCategory; }

// As those of real devices, but for the port.
std::wstring DevicePathOf(const SimulatedDevice& device) {
  const std::wstring number = std::to_wstring(device.camera);
  return IsCamera(device.category) ? L"/dev/v4l/by-path/zem-simulator-" + number + L"-video-index0"
                                   : L"/dev/snd/by-path/zem-simulator-" + number;
}

class OwnListing : public zem::simulator::DeviceListing {
 public:
  OwnListing() { areSimulated = true; }
  ~OwnListing() override {
    areSimulated = false;
    simulatedDevices.Clear();
  }
  OwnListing(const OwnListing&) = delete;
  OwnListing& operator=(const OwnListing&) = delete;

  HRESULT List(const SimulatedDevice& device) override {
    simulatedDevices.Put({device.instanceName, DevicePathOf(device), device.category, device.make,
                          zem::simulator::Widen(device.name)});
    return S_OK;
  }

  // The instance names of a camera and of its microphone differ by the interface.
  void Unlist(const GUID& /*category*/, const std::wstring& instanceName) override {
    simulatedDevices.Remove(instanceName);
  }
};

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
    running_->system.Start(zem::simulator::ParseOptions(options), std::make_unique<OwnListing>(),
                           ListVolumes);
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

zem::ComPtr<ICreateDevEnum> ListSimulatedDevices() {
  return areSimulated ? zem::ComPtr<ICreateDevEnum>::Adopt(
                            zem::simulator::MakeDeviceEnumerator(simulatedDevices.All(), nullptr))
                      : zem::ComPtr<ICreateDevEnum>();
}

}  // namespace zemctl
