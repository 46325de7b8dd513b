#include "tools/zemctl/camera/simulator_module.h"

#include <windows.h>

#include <cstdio>
#include <nlohmann/json.hpp>

#include "simulator/windows/ZemSimulator.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

template <class Function>
Function* FindFunction(void* module, const char* name) {
  const FARPROC found = GetProcAddress(static_cast<HMODULE>(module), name);
  if (found == nullptr) {
    throw std::runtime_error(std::string("ZemSimulator.dll lacks ") + name);
  }
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(found));
}

std::string Complete(const std::string& options, const std::vector<std::string>& faults,
                     const std::string& state) {
  using nlohmann::json;
  json root = options.empty() ? json::object() : json::parse(options, nullptr, false);
  if (root.is_discarded()) {
    throw UsageError("--simulator-options is not JSON");
  }
  for (const std::string& fault : faults) {
    root["cameras"][0]["faults"].push_back(fault);
  }
  if (!state.empty()) {
    root["cameras"][0]["state"] = state;
  }
  return root.dump();
}

}  // namespace

SimulatorModule* SimulatorModule::running_ = nullptr;

SimulatorModule::SimulatorModule(const std::string& options, const std::vector<std::string>& faults,
                                 const std::string& state) {
  const std::string text = Complete(options, faults, state);
  module_ = LoadLibraryW(L"ZemSimulator.dll");
  if (module_ == nullptr) {
    throw std::runtime_error("ZemSimulator.dll cannot be loaded; it belongs beside zemctl.exe");
  }
  if (FindFunction<decltype(ZemSimulatorStart)>(module_, "ZemSimulatorStart")(text.c_str()) < 0) {
    const char* const reason =
        FindFunction<decltype(ZemSimulatorLastError)>(module_, "ZemSimulatorLastError")();
    throw UsageError(std::string("the simulator did not start: ") + reason);
  }
  running_ = this;
}

SimulatorModule::~SimulatorModule() { Stop(); }

void SimulatorModule::StopRunning() {
  if (running_ != nullptr) {
    running_->Stop();
  }
}

void SimulatorModule::Stop() {
  running_ = nullptr;
  // The module stays loaded: COM may hold on to it until the process ends.
  FindFunction<decltype(ZemSimulatorStop)>(module_, "ZemSimulatorStop")();
  const char* const reason =
      FindFunction<decltype(ZemSimulatorLastError)>(module_, "ZemSimulatorLastError")();
  if (*reason != '\0') {
    std::fprintf(stderr, "zemctl: %s.\n", reason);
  }
}

}  // namespace zemctl
