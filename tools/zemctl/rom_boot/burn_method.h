// The ways of burning a file: for each what it does to the storage, and the call that does it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "tools/zemctl/rom_boot/burn_plan.h"
#include "tools/zemctl/rom_boot/rom_session.h"

namespace zemctl {

struct BurnRequest {
  std::string method = "image";  // see kBurnMethods
  std::string path;
  std::uint32_t address = 0;                 // of the image, the file, the Linux header
  std::optional<std::uint32_t> bodyAddress;  // of a Linux package
};

inline constexpr std::array<const char*, 6> kBurnMethods = {
    "image", "package", "package-v2", "linux", "partial", "partial-with-header"};

// Reads the file and tells what burning it does. Throws ToolFailure (kBadFile) when it cannot be
// burned that way, UsageError for an address where the method takes none.
BurnPlan PlanOf(const BurnRequest& request);

// Burns it through a session. Throws CallFailure.
void Burn(const RomSession& session, const BurnRequest& request);

}  // namespace zemctl
