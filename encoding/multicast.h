// Streams for several receivers, by vendor commands.
//
// Results are those of the ZEMAPI_Multicas... exports in include/ZemUVCExtApi.h; `filter` is the
// device.
#pragma once

#include <cstdint>

#include "platform/com.h"

namespace zem {

// These two read no status.
HRESULT MulticastStreamId(IBaseFilter* filter, std::uint8_t streamId);
HRESULT MulticastToggleLayer(IBaseFilter* filter, std::uint8_t value);

// Five bits of `packedLow` and eleven of `packedHigh` are sent.
HRESULT MulticastCommit(IBaseFilter* filter, std::uint8_t streamFormat, std::uint16_t width,
                        std::uint16_t height, std::uint8_t packedLow, std::uint16_t packedHigh);

}  // namespace zem
