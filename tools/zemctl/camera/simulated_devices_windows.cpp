// ZemSimulator.dll, which stands between the system and this process.
#include <windows.h>

#include "simulator/ZemSimulator.h"
#include "tools/zemctl/camera/simulated_devices.h"

namespace zemctl {
namespace {

template <class Function>
Function* FindFunction(HMODULE module, const char* name) {
  const FARPROC found = GetProcAddress(module, name);
  if (found == nullptr) {
    throw std::runtime_error(std::string("ZemSimulator.dll lacks ") + name);
  }
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(found));
}

std::string LastErrorOf(HMODULE module) {
  return FindFunction<decltype(ZemSimulatorLastError)>(module, "ZemSimulatorLastError")();
}

}  // namespace

// The module stays loaded: COM may hold on to it until the process ends.
struct SimulatedDevices::Running {
  HMODULE module = LoadLibraryW(L"ZemSimulator.dll");
};

SimulatedDevices::SimulatedDevices(const std::string& options)
    : running_(std::make_unique<Running>()) {
  if (running_->module == nullptr) {
    throw std::runtime_error("ZemSimulator.dll cannot be loaded; it belongs beside zemctl.exe");
  }
  const auto start = FindFunction<decltype(ZemSimulatorStartPrivate)>(running_->module,
                                                                      "ZemSimulatorStartPrivate");
  if (start(options.c_str()) < 0) {
    throw SimulatorRefusal(LastErrorOf(running_->module));
  }
}

SimulatedDevices::~SimulatedDevices() = default;

std::string SimulatedDevices::Stop() {
  FindFunction<decltype(ZemSimulatorStop)>(running_->module, "ZemSimulatorStop")();
  return LastErrorOf(running_->module);
}

}  // namespace zemctl
