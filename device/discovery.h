// Finds a camera among the system's video-input devices.
//
// Every finder initialises COM for the calling thread and, on success, leaves it initialised: the
// matching uninitialisation is the one in CloseDevice. What happens to it on failure differs by
// finder, deliberately: callers depend on it.
//
// A filter that a finder hands out carries one reference, the caller's to release.
#pragma once

#include "platform/com_ptr.h"

namespace zem {

// The index-th device, counted over the matches only, whose display name contains
// "vid_%.4x&pid_%.4x" of the given ids. On failure COM is uninitialised again, except when a match
// could not be bound. A match that `index` skips keeps its reference and stays in *filter until a
// later match replaces it, also when the result is a failure.
HRESULT FindCaptureDevice(IBaseFilter** filter, unsigned vid, unsigned pid, int index);

// FindCaptureDevice with the ids of the settings file.
HRESULT FindDefaultDevice(IBaseFilter** filter, int index);

// The default camera: the first with the ids of the settings file.
HRESULT OpenDefault(ComPtr<IBaseFilter>& device);

// The device to act on for one access: a reference of its own on `filter`, or, without one, the
// default camera. COM is initialised in the second case only.
HRESULT ShareOrOpenDefault(IBaseFilter* filter, ComPtr<IBaseFilter>& device);

// The first video-input device whose binding gives a filter, whatever its result, and for which the
// search for the vendor unit's node does not give 0.
HRESULT FindVendorXuDevice(IBaseFilter** filter);

// The device of `category` with the given display name; null means the video-input category.
// *filter is set, to null when binding failed, once a device matched.
HRESULT FindDeviceByDisplayName(IBaseFilter** filter, const wchar_t* name, const GUID* category);

// The video-input device with the given "DevicePath" property.
HRESULT FindDeviceByDevicePath(IBaseFilter** filter, const wchar_t* devicePath);

}  // namespace zem
