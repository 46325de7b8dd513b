// A camera of this machine as the device object that the library acts on.
#pragma once

#include "platform/com.h"
#include "platform/linux/video_devices.h"

namespace zem::platform {

// Opens the camera. *filter gets one reference, the caller's to release; null on failure.
HRESULT BindCamera(const VideoDevice& device, IBaseFilter** filter);

}  // namespace zem::platform
