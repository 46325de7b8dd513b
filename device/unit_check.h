// Whether a device has an extension unit.
#pragma once

#include "platform/com.h"

namespace zem {

// 0 present, kUnitAbsent, or the platform's failure. A device without any node deliberately counts
// as having every unit. Without a filter the default camera of the settings file is asked, and COM
// stays initialised once more.
HRESULT CheckXuGuid(const GUID& unit, IBaseFilter* filter);

}  // namespace zem
