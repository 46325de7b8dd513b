// Simulated devices that only this process finds, under names as the library gives real ones.
#pragma once

#include <memory>

#include "platform/com_ptr.h"
#include "simulator/simulated_system.h"

namespace zem::simulator {

// A list of them. There is one at a time.
std::unique_ptr<DeviceListing> MakePrivateListing();

// An enumerator of what is in the list; null when there is none. On any thread.
ComPtr<ICreateDevEnum> ListPrivateDevices();

}  // namespace zem::simulator
