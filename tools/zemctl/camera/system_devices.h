// The video-input and audio-input devices that the system lists, ours or not.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/com_ptr.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {

struct DeviceSelection {
  std::optional<unsigned> index;  // among those that the rest fits
  std::optional<unsigned> vendorId;
  std::optional<unsigned> productId;
  std::string name;  // the one that people see
  std::string displayName;
  std::string devicePath;

  // Not left to be the default camera.
  bool isChosen() const { return index || vendorId || productId || isNamed(); }
  // Not chosen by its USB ids.
  bool isNamed() const { return !(name.empty() && displayName.empty() && devicePath.empty()); }
};

enum class DeviceCategory { kVideoInput, kAudioInput };

struct SystemDevice {
  std::string name;         // the one that people see
  std::string displayName;  // what --path takes
  std::string devicePath;   // what --device-path takes; empty when the device has none
  std::string place;        // where it is plugged in, as far as the system tells
  std::optional<unsigned> vendorId;
  std::optional<unsigned> productId;
};

// ""ZEM Simulated Camera" (5a45:8c00) at PLACE"
std::string NameOf(const SystemDevice& device);

SystemDevice DescribeDevice(IMoniker* moniker);

// In the system's order. Throws std::runtime_error when the system does not answer.
std::vector<SystemDevice> ListSystemDevices(DeviceCategory category);

// The video-input devices that a selection fits, without a look at its index.
std::vector<SystemDevice> ListMatches(const DeviceSelection& selection);

// A display name by which the library finds the default camera.
std::wstring DefaultDisplayName();

struct FoundCamera {
  SystemDevice device;
  zem::ComPtr<IBaseFilter> object;
};

// Binds the video-input device that was chosen, by the rules of the library's own opening
// functions: the default camera's ids are those of zem_setting.ini beside this program. A negative
// result is the library's for the same case; `camera` then is the device that could not be bound,
// if there is one.
ZemResult FindCamera(const DeviceSelection& selection, FoundCamera& camera);

}  // namespace zemctl
