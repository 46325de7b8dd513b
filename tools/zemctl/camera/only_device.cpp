#include "tools/zemctl/camera/only_device.h"

#include <utility>

#include "simulator/device_list.h"
#include "tools/zemctl/camera/system_devices.h"

namespace zemctl {
namespace {

thread_local IBaseFilter* onlyDevice = nullptr;

}  // namespace

OnlyDevice::OnlyDevice(IBaseFilter* camera) : before_(std::exchange(onlyDevice, camera)) {}

OnlyDevice::~OnlyDevice() { onlyDevice = before_; }

IBaseFilter* OnlyDevice::OfThread() { return onlyDevice; }

zem::ComPtr<ICreateDevEnum> ListOnly(IBaseFilter* camera) {
  zem::simulator::ListedDevice device;
  device.displayName = DefaultDisplayName();
  device.bind = [camera] {
    camera->AddRef();
    return camera;
  };
  return zem::ComPtr<ICreateDevEnum>::Adopt(
      zem::simulator::MakeDeviceEnumerator({std::move(device)}, nullptr));
}

}  // namespace zemctl
