// The record behind every device handle, and how it is opened and closed.
#pragma once

#include "include/ZemUVCExtApi.h"
#include "platform/com.h"

namespace zem {

struct DeviceHandle {
  // The device's H.264 format list in memory of std::malloc, owned; null until it is first needed.
  H264FrameList* frameList = nullptr;
  // The device. The handle holds one reference; never null.
  IBaseFilter* filter = nullptr;
};

// Each returns what the export of the same meaning documents in include/ZemUVCExtApi.h.
HRESULT OpenDevice(int index, DeviceHandle** handle);
HRESULT OpenDeviceEx(int index, DeviceHandle** handle, unsigned vid, unsigned pid);
HRESULT OpenZemDevice(DeviceHandle** handle);
HRESULT OpenDeviceByPath(const wchar_t* displayName, DeviceHandle** handle);
HRESULT OpenDeviceByDevPath(const wchar_t* devicePath, DeviceHandle** handle);
HRESULT OpenDeviceBySourceFilter(IBaseFilter* filter, DeviceHandle** handle);
void CloseDevice(DeviceHandle** handle);

// Copies the fixed text that stands for a serial number, see the export.
HRESULT GetSerialNumber(char* serial);

}  // namespace zem
