// The boot loader's volume in the simulated system, for native tests.
#pragma once

#include <memory>

#include "simulator/boot_loader.h"

namespace zem::simulator {

// Lets the simulated system find the boot loader at its drive letter, until the system is reset.
void ListVolume(std::shared_ptr<BootLoader> bootLoader);

}  // namespace zem::simulator
