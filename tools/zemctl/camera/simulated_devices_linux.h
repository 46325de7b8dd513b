// The list of the simulated devices of this process.
#pragma once

#include "platform/com_ptr.h"

namespace zemctl {

// An enumerator of them; null when none are simulated. On any thread.
zem::ComPtr<ICreateDevEnum> ListSimulatedDevices();

}  // namespace zemctl
