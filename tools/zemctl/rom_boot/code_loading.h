// Code for the boot loader: checked before it is sent, and what came of it looked at afterwards.
#pragma once

#include <cstdint>
#include <string>

#include "tools/zemctl/frame/progress.h"
#include "tools/zemctl/rom_boot/rom_session.h"

namespace zemctl {

// Bytes of code in a code image. Throws ToolFailure (kBadFile).
std::uint32_t CodeSizeOf(const std::string& path);

// Phases "updater" and "start": loads the updater into the boot loader of `session`, which it ends,
// starts it and waits for its storage, so many seconds from its start on: a session on that. Throws
// CallFailure, and ToolFailure (kNoCamera) when no storage came.
RomSession LoadUpdater(RomSession session, const std::string& path, unsigned seconds,
                       Progress& progress);

}  // namespace zemctl
