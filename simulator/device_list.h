// The simulated system's device enumerator: for hosts on systems that have none of their own, and
// for those that are to find simulated devices only.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "simulator/com_object.h"

namespace zem::simulator {

// A device as the enumerator lists it.
struct ListedDevice {
  std::wstring displayName;
  // Text of the "DevicePath" property; a device may have none.
  std::optional<std::wstring> devicePath;
  GUID category = CLSID_VideoInputDeviceCategory;
  // Makes the filter, with one reference for the caller.
  std::function<IBaseFilter*()> bind;
  // Text of the "FriendlyName" property; a device may have none.
  std::optional<std::wstring> friendlyName = std::nullopt;

  // In place of `bind` and `bindResult`: one binding, its filter with a reference for the caller.
  std::function<HRESULT(IBaseFilter** filter)> bindOnce = nullptr;

  // ---- What a device that is out of order does ----

  // The result of a binding that hands out its filter all the same; a failure or not.
  HRESULT bindResult = S_OK;
  // Fetched, it is null, although the enumerator succeeds.
  bool isNull = false;
  // Asked for its display name, the device succeeds without one.
  bool hasNullName = false;
  // Asked for its properties, the device succeeds without any.
  bool hasNullBag = false;
  // Read in place of the text of "DevicePath", and left as it is when it is cleared.
  std::optional<VARIANT> oddDevicePath = std::nullopt;
};

// A new enumerator over a copy of `devices`, with one reference for the caller. `gate` may be null
// and must outlive what is enumerated.
ICreateDevEnum* MakeDeviceEnumerator(std::vector<ListedDevice> devices, CallGate* gate);

}  // namespace zem::simulator
