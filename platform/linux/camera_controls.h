// The standard controls of a camera: IAMVideoProcAmp and IAMCameraControl over V4L2.
#pragma once

#include "platform/com.h"
#include "platform/linux/device_file.h"

namespace zem::platform {

// A new object with the interface `iid`, one of these two, over the controls of `file`, which
// `owner` keeps open: the object holds a reference on it.
HRESULT MakeCameraControls(IUnknown* owner, const DeviceFile& file, REFIID iid, void** object);

}  // namespace zem::platform
