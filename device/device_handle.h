// The record behind every device handle, and how it is opened and closed.
#pragma once

#include <cstdint>
#include <memory>

#include "include/ZemUVCExtApi.h"
#include "platform/com.h"

namespace zem {

// A list of H.264 formats begins an array of bytes that holds its records too.
struct FrameListDeleter {
  void operator()(H264FrameList* list) const { delete[] reinterpret_cast<std::uint8_t*>(list); }
};
using FrameListPtr = std::unique_ptr<H264FrameList, FrameListDeleter>;

struct DeviceHandle {
  // The device's H.264 format list; null until it is first needed.
  FrameListPtr frameList;
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
