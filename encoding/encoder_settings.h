// Settings of the running H.264 encoder: one vendor command each.
//
// Results are those of the exports of the same name in include/ZemUVCExtApi.h; `filter` as in
// device/transport.h.
#pragma once

#include <cstdint>

#include "platform/com.h"

namespace zem {

HRESULT SetFps(IBaseFilter* filter, std::uint16_t fps);
HRESULT SetBitRate(IBaseFilter* filter, std::uint16_t bitRate);
HRESULT ForceIFrame(IBaseFilter* filter);

// Sends nothing, reports the count on the debugger channel and answers as a camera that refuses.
HRESULT SetPframeCount(std::uint32_t count);

}  // namespace zem
