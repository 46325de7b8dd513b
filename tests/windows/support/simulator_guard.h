// Simulated cameras in the system's list for the length of a test.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include "simulator/windows/ZemSimulator.h"

namespace zem::testing {

class SimulatorGuard {
 public:
  // `options` as docs/simulator.md describes; null is one camera with the default ids.
  explicit SimulatorGuard(const char* options = nullptr)
      : module_(LoadLibraryW(L"ZemSimulator.dll")) {
    EXPECT_NE(module_, nullptr);
    const auto start = Find<decltype(ZemSimulatorStart)>("ZemSimulatorStart");
    EXPECT_EQ(start(options), 0) << Find<decltype(ZemSimulatorLastError)>(
        "ZemSimulatorLastError")();
  }
  ~SimulatorGuard() { Find<decltype(ZemSimulatorStop)>("ZemSimulatorStop")(); }
  SimulatorGuard(const SimulatorGuard&) = delete;
  SimulatorGuard& operator=(const SimulatorGuard&) = delete;

 private:
  template <class Function>
  Function* Find(const char* name) const {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
  }

  HMODULE module_;
};

}  // namespace zem::testing
