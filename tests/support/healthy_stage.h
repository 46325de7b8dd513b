// What any operation of the table runs on when nothing is out of order: a camera with every unit
// and control, a microphone and a boot loader, in the calling thread's system.
#pragma once

#include <memory>

#include "simulator/device_list.h"
#include "tests/support/operations.h"
#include "tests/support/scripted_unit.h"
#include "tests/support/scripted_volume.h"

namespace zem::testing {

class HealthyStage {
 public:
  // In a freshly started system.
  HealthyStage();
  // Gives back whatever is open, and resets the system.
  ~HealthyStage();
  HealthyStage(const HealthyStage&) = delete;
  HealthyStage& operator=(const HealthyStage&) = delete;

  // Opens what the operation needs before it; false when that fails.
  bool Prepare(const Operation& operation);
  // Runs it with the usual arguments.
  ZemResult Run(const Operation& operation);

  simulator::Camera& camera() { return *camera_; }
  ScriptedVolume volume;

 private:
  IBaseFilter* MakeFilter() const;

  std::shared_ptr<simulator::Camera> camera_;
  Stage stage_;
};

}  // namespace zem::testing
