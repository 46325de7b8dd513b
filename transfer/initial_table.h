// Replacing the whole table store through the data channel.
#pragma once

#include "platform/com.h"
#include "transfer/chunks.h"

namespace zem {

// As ZEMAPI_WriteInitialTable on a device. The device is still writing when the call returns.
HRESULT WriteInitialTable(IBaseFilter* filter, Image image);

}  // namespace zem
