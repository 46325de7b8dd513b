// A device object around a camera's own: it passes every request on unchanged and writes each
// transfer down. The library is handed this one, so the tool knows what really happened.
#pragma once

#include <memory>

#include "platform/com_ptr.h"
#include "tools/zemctl/camera/transfer_record.h"

namespace zemctl {

// Requests by which a unit's node is looked up are no transfers. Once the watcher says that the
// camera is gone, or the person at the terminal wants an end, a look at its transfer status finds a
// failed burn: no wait for it goes on.
zem::ComPtr<IBaseFilter> Watch(zem::ComPtr<IBaseFilter> camera,
                               std::shared_ptr<CameraWatcher> watcher);

}  // namespace zemctl
