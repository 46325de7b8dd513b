// The video-input and audio-input devices that the system lists, ours or not.
#pragma once

#include <string>
#include <vector>

#include "platform/com_ptr.h"
#include "tools/zemctl/camera/session.h"

namespace zemctl {

enum class DeviceCategory { kVideoInput, kAudioInput };

struct SystemDevice {
  std::wstring name;         // "FriendlyName"
  std::wstring displayName;  // what --path takes
  std::wstring devicePath;   // what --device-path takes; empty when the device has none
};

// In the system's order. Throws std::runtime_error when the system does not answer.
std::vector<SystemDevice> ListSystemDevices(DeviceCategory category);

// Binds the video-input device that was chosen, by the rules of the library's own opening
// functions: the default camera's ids are those of zem_setting.ini beside this program. A negative
// result is the library's for the same case.
ZemResult FindCamera(const DeviceSelection& selection, zem::ComPtr<IBaseFilter>& camera);

}  // namespace zemctl
