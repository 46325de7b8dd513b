// What the library and this program find where they ask for the system's devices.
#include <atomic>

#include "platform/linux/device_enumerator.h"
#include "tools/zemctl/camera/library_hooks.h"
#include "tools/zemctl/camera/simulated_devices_linux.h"
#include "tools/zemctl/camera/traced_devices.h"

namespace zemctl {
namespace {

std::atomic<bool> isHooked = false;

HRESULT MakeSystemDevices(ICreateDevEnum** devices) {
  if (auto simulated = ListSimulatedDevices()) {
    *devices = simulated.Detach();
    return S_OK;
  }
  return zem::platform::MakeDeviceEnumerator(devices);
}

}  // namespace

struct LibraryHooks::Hooks {
  Hooks() { isHooked = true; }
  ~Hooks() { isHooked = false; }
  Hooks(const Hooks&) = delete;
  Hooks& operator=(const Hooks&) = delete;
};

LibraryHooks::LibraryHooks() : hooks_(std::make_unique<Hooks>()) {}

LibraryHooks::~LibraryHooks() = default;

}  // namespace zemctl

HRESULT ZemHostDeviceEnumerator(ICreateDevEnum** enumerator) {
  return zemctl::isHooked ? zemctl::MakeThreadDevices(zemctl::MakeSystemDevices, enumerator)
                          : zemctl::MakeSystemDevices(enumerator);
}
