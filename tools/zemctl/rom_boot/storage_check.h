// Whether the camera's storage holds what a file says.
#pragma once

#include <cstdint>

#include "tools/zemctl/frame/progress.h"
#include "tools/zemctl/rom_boot/burn_plan.h"
#include "tools/zemctl/rom_boot/rom_session.h"

namespace zemctl {

// Reads back what a plan has written and compares it byte by byte; the number of bytes compared.
// Throws ToolFailure (kNotVerified) when one differs, CallFailure when they cannot be read.
std::uint64_t CompareStorage(const RomSession& session, const BurnPlan& plan, Progress& progress);

}  // namespace zemctl
