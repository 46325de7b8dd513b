// The registry entries by which the system's device enumerator finds a simulated device.
#pragma once

#include <cstddef>
#include <string>

#include "platform/com.h"

namespace zem::simulator {

// The COM class of the index-th simulated camera.
GUID CameraClassId(std::size_t index);

// That of its microphone.
GUID MicrophoneClassId(std::size_t index);

// What the system's enumerator calls a device of `category`.
std::wstring DisplayName(const GUID& category, const std::wstring& instanceName);

// Lists a device: its COM class, served by the module at `modulePath`, and its entry in `category`
// under `instanceName`, which becomes the last part of its display name.
HRESULT RegisterDevice(const GUID& classId, const GUID& category, const std::wstring& instanceName,
                       const std::wstring& friendlyName, const std::wstring& devicePath,
                       const std::wstring& modulePath);

// Takes a device out of the list; its class stays for handles that are open still.
void UnlistDevice(const GUID& category, const std::wstring& instanceName);

// Removes the COM class of a device.
void UnregisterClass(const GUID& classId);

}  // namespace zem::simulator
