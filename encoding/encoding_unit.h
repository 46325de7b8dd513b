// The encoding unit's controls, and the probe and commit blocks of the stream-probe unit; each
// transfer is logged.
//
// Results are those of the exports of the same meaning in include/ZemUVCExtApi.h. `device` is the
// device object; null goes to the transport as it is, which opens the default camera for the
// access.
#pragma once

#include <cstdint>

#include "platform/com.h"

namespace zem {

// Leaves *device untouched on failure. COM stays initialised for the calling thread.
HRESULT OpenEncodingDevice(unsigned index, IBaseFilter** device);

// COM is deliberately left alone.
void CloseEncodingDevice(IBaseFilter** device);

HRESULT EuSet(IBaseFilter* device, std::uint32_t selector, void* data, std::uint16_t length);
HRESULT EuGet(IBaseFilter* device, std::uint32_t selector, void* data, std::uint16_t length);

// `selector` is one of stream_probe_selector; `block` has 51 bytes.
HRESULT StreamBlockSet(IBaseFilter* device, std::uint16_t selector, void* block);
HRESULT StreamBlockGet(IBaseFilter* device, std::uint16_t selector, void* block);

}  // namespace zem
