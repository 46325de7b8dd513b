#include "simulator/linux/private_devices.h"

#include <atomic>

#include "simulator/device_table.h"
#include "simulator/wide_text.h"

namespace zem::simulator {
namespace {

DeviceTable devices;
std::atomic<bool> areListed = false;

// As those of real devices, but for the port.
std::wstring DevicePathOf(const SimulatedDevice& device) {
  const std::wstring number = std::to_wstring(device.camera);
  return device.category == CLSID_VideoInputDeviceCategory
             ? L"/dev/v4l/by-path/zem-simulator-" + number + L"-video-index0"
             : L"/dev/snd/by-path/zem-simulator-" + number;
}

class PrivateListing : public DeviceListing {
 public:
  PrivateListing() { areListed = true; }
  ~PrivateListing() override {
    areListed = false;
    devices.Clear();
  }
  PrivateListing(const PrivateListing&) = delete;
  PrivateListing& operator=(const PrivateListing&) = delete;

  HRESULT List(const SimulatedDevice& device) override {
    devices.Put({device.instanceName, DevicePathOf(device), device.category, device.make,
                 Widen(device.name)});
    return S_OK;
  }

  // The instance names of a camera and of its microphone differ by the interface.
  void Unlist(const GUID& /*category*/, const std::wstring& instanceName) override {
    devices.Remove(instanceName);
  }
};

}  // namespace

std::unique_ptr<DeviceListing> MakePrivateListing() { return std::make_unique<PrivateListing>(); }

ComPtr<ICreateDevEnum> ListPrivateDevices() {
  return areListed ? ComPtr<ICreateDevEnum>::Adopt(MakeDeviceEnumerator(devices.All(), nullptr))
                   : ComPtr<ICreateDevEnum>();
}

}  // namespace zem::simulator
