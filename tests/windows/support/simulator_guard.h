// Simulated cameras for the length of a test.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include "simulator/ZemSimulator.h"

namespace zem::testing {

// In the system's list.
class SimulatorGuard {
 public:
  // `options` as docs/simulator.md describes; null is one camera with the default ids.
  explicit SimulatorGuard(const char* options = nullptr)
      : SimulatorGuard("ZemSimulatorStart", options) {}
  ~SimulatorGuard() { Find<decltype(ZemSimulatorStop)>("ZemSimulatorStop")(); }
  SimulatorGuard(const SimulatorGuard&) = delete;
  SimulatorGuard& operator=(const SimulatorGuard&) = delete;

 protected:
  SimulatorGuard(const char* function, const char* options)
      : module_(LoadLibraryW(L"ZemSimulator.dll")) {
    EXPECT_NE(module_, nullptr);
    const auto start = Find<decltype(ZemSimulatorStart)>(function);
    EXPECT_EQ(start(options), 0) << Find<decltype(ZemSimulatorLastError)>(
        "ZemSimulatorLastError")();
  }

 private:
  template <class Function>
  Function* Find(const char* name) const {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
  }

  HMODULE module_;
};

// For this process only.
class PrivateSimulatorGuard : public SimulatorGuard {
 public:
  explicit PrivateSimulatorGuard(const char* options = nullptr)
      : SimulatorGuard("ZemSimulatorStartPrivate", options) {}
};

}  // namespace zem::testing
