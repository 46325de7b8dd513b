// libZemSimulator.so: simulated cameras for libZemUVCExtApi.so in the same process.
#include <exception>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "simulator/ZemSimulator.h"
#include "simulator/linux/import_hook.h"
#include "simulator/linux/private_devices.h"
#include "simulator/linux/volume_hooks.h"
#include "simulator/options.h"
#include "simulator/simulated_system.h"

namespace zem::simulator {
namespace {

static_assert(kMostCameras == ZEM_SIMULATOR_MAX_CAMERAS);

HRESULT MakePrivateEnumerator(ICreateDevEnum** enumerator) {
  *enumerator = ListPrivateDevices().Detach();
  return *enumerator != nullptr ? S_OK : E_FAIL;
}

// While it lives, the library asks here for the system's devices.
struct LibraryHook {
  HeldLibrary library = HoldLibrary();
  ImportHook devices{library, "ZemHostDeviceEnumerator", MakePrivateEnumerator};
};

struct Simulator {
  SimulatedSystem system;
  std::optional<LibraryHook> hook;
  std::string lastError;
};

Simulator& TheSimulator() {
  static Simulator simulator;
  return simulator;
}

// Nothing may be thrown into the host.
template <class Step>
std::int32_t DoOrExplain(const Step& step) {
  Simulator& simulator = TheSimulator();
  try {
    simulator.lastError.clear();
    step(simulator);
    return S_OK;
  } catch (const std::exception& error) {
    simulator.lastError = error.what();
    simulator.system.Abandon();
    simulator.hook.reset();
    return E_FAIL;
  }
}

}  // namespace
}  // namespace zem::simulator

using zem::simulator::DoOrExplain;
using zem::simulator::Simulator;
using zem::simulator::TheSimulator;

extern "C" {

std::int32_t ZemSimulatorStartPrivate(const char* options) {
  return DoOrExplain([&](Simulator& simulator) {
    const auto parsed = zem::simulator::ParseOptions(options != nullptr ? options : "");
    simulator.system.Stop();
    if (!simulator.hook) {
      simulator.hook.emplace();
    }
    simulator.system.Start(parsed, zem::simulator::MakePrivateListing(),
                           [](const auto& bootLoaders) {
                             return std::make_shared<zem::simulator::VolumeHooks>(bootLoaders);
                           });
  });
}

std::int32_t ZemSimulatorStart(const char* /*options*/) {
  return DoOrExplain([](const Simulator&) {
    throw std::runtime_error(
        "the system's list is Windows' own; zem-usb-camera plugs a simulated "
        "camera into Linux");
  });
}

void ZemSimulatorStop(void) {
  static_cast<void>(DoOrExplain([](Simulator& simulator) {
    simulator.system.Stop();
    simulator.hook.reset();
  }));
}

const char* ZemSimulatorLastError(void) {
  const std::string& own = TheSimulator().lastError;
  return own.empty() ? TheSimulator().system.lastError().c_str() : own.c_str();
}

std::int32_t ZemSimulatorDevices(void** enumerator) {
  ICreateDevEnum* devices = nullptr;
  const HRESULT result = zem::simulator::MakePrivateEnumerator(&devices);
  *enumerator = devices;
  return result;
}

std::int32_t ZemSimulatorObjects(void) { return zem::simulator::liveComObjects; }

}  // extern "C"
