// One run of an operation along its plan, on simulated devices or on faulty ones, with all that is
// checked whatever the operation.
#pragma once

#include "tests/support/operations.h"
#include "tests/sweep/follower.h"

namespace zem::testing::sweep {

struct RunOutcome {
  std::vector<std::string> complaints;
  std::uint32_t requests = 0;
};

// A healthy run on the simulated devices; what they answered goes to `recording`.
RunOutcome Record(const Operation& operation, const Plan& plan, Recording& recording);

// A run on devices that answer as recorded, but for the faults.
RunOutcome Play(const Operation& operation, const Plan& plan, const Recording& recording,
                const Schedule& schedule);

}  // namespace zem::testing::sweep
