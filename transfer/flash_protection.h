// The write protection of the serial flash behind the 517x processors.
#pragma once

#include "platform/com.h"

namespace zem {

// Lifts the protection through the flash controller's registers. Does nothing on a chip whose
// controller does not call for it. Deliberately blind: no result of a register access is looked at.
void UnprotectSerialFlash(IBaseFilter* filter);

}  // namespace zem
