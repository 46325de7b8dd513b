// Procedures that write an image into the camera's memory while it runs its normal firmware.
//
// Results are those of the exports of the same meaning in include/ZemUVCExtApi.h. `filter` is the
// device. Callers are re-entered wherever the message queue is drained, and must not start a second
// transfer on the device then.
#pragma once

#include <cstdint>

#include "platform/com.h"
#include "transfer/chunks.h"
#include "transfer/progress.h"

namespace zem {

HRESULT UpdateFW_516x(IBaseFilter* filter, Image image, Progress progress, std::uint8_t param);
HRESULT UpdateFW_517x(IBaseFilter* filter, Image image, Progress progress);
HRESULT UpdateFlash(IBaseFilter* filter, Image data, Progress progress, std::uint8_t param2,
                    std::uint8_t param3);
HRESULT UpdateCaliData(IBaseFilter* filter, Image data, Progress progress);

}  // namespace zem
