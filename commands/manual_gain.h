// Manual and automatic gain: a standard control and the firmware's own switch, changed together.
#pragma once

#include "platform/com.h"

namespace zem {

// Results are those of the export of this name in include/ZemUVCExtApi.h.
HRESULT EnableManualGainCtrl(IBaseFilter* filter, int enable);

}  // namespace zem
