// What the library and this program find where they ask for the system's devices, and the import of
// the library by which it waits.
#include <atomic>
#include <ctime>

#include "platform/linux/device_enumerator.h"
#include "simulator/linux/import_hook.h"
#include "simulator/linux/private_devices.h"
#include "tools/zemctl/camera/library_hooks.h"
#include "tools/zemctl/camera/library_wait_linux.h"
#include "tools/zemctl/camera/long_wait.h"
#include "tools/zemctl/camera/replay.h"
#include "tools/zemctl/camera/traced_devices.h"

namespace zemctl {
namespace {

using zem::simulator::HeldLibrary;
using zem::simulator::HoldLibrary;
using zem::simulator::ImportHook;

std::atomic<bool> isHooked = false;

HRESULT MakeSystemDevices(ICreateDevEnum** devices) {
  if (auto simulated = zem::simulator::ListPrivateDevices()) {
    *devices = simulated.Detach();
    return S_OK;
  }
  return zem::platform::MakeDeviceEnumerator(devices);
}

decltype(&::clock_nanosleep) sleepBefore = nullptr;

int SleepAsLongAsUseful(clockid_t /*clock*/, int /*flags*/, const timespec* time,
                        timespec* /*left*/) {
  if (const auto replay = ThreadReplay()) {
    replay->Wait(MillisecondsOf(*time));
  } else {
    LongWait::Sleep(MillisecondsOf(*time), [](unsigned part) { LetPass(part, sleepBefore); });
  }
  return 0;
}

}  // namespace

struct LibraryHooks::Hooks {
  Hooks() {
    sleepBefore = sleep.Before<decltype(::clock_nanosleep)>();
    isHooked = true;
  }
  ~Hooks() { isHooked = false; }
  Hooks(const Hooks&) = delete;
  Hooks& operator=(const Hooks&) = delete;

  HeldLibrary library = HoldLibrary();
  ImportHook sleep{library, "clock_nanosleep", SleepAsLongAsUseful};
};

LibraryHooks::LibraryHooks() : hooks_(std::make_unique<Hooks>()) {}

LibraryHooks::~LibraryHooks() = default;

}  // namespace zemctl

HRESULT ZemHostDeviceEnumerator(ICreateDevEnum** enumerator) {
  return zemctl::isHooked ? zemctl::MakeThreadDevices(zemctl::MakeSystemDevices, enumerator)
                          : zemctl::MakeSystemDevices(enumerator);
}
