// The video-input and audio-input devices that the system lists, ours or not.
#pragma once

#include <string>
#include <vector>

namespace zemctl {

enum class DeviceCategory { kVideoInput, kAudioInput };

struct SystemDevice {
  std::wstring name;         // "FriendlyName"
  std::wstring displayName;  // what --path takes
  std::wstring devicePath;   // what --device-path takes; empty when the device has none
};

// In the system's order. Throws std::runtime_error when the system does not answer.
std::vector<SystemDevice> ListSystemDevices(DeviceCategory category);

}  // namespace zemctl
