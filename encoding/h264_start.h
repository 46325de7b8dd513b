// Starts an H.264 format in the dialect that the format and the camera speak, or stops H.264.
#pragma once

#include <cstdint>

#include "device/device_handle.h"
#include "platform/com.h"

namespace zem {

// Starts the format of the handle's list that has this frame index. Results as the export of the
// same name.
HRESULT SetH264FrameIndex(DeviceHandle& device, std::uint16_t frameIndex);

// Starts H.264 at a resolution, or stops it for a width or height of 0. Deliberately 1 for success
// and 0 for failure, see the export of the same name.
HRESULT SetH264Mode(IBaseFilter* filter, std::uint32_t width, std::uint32_t height);

}  // namespace zem
