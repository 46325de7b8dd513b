#include "device/device_handle.h"

#include <new>

#include "device/discovery.h"
#include "device/extension_units.h"
#include "device/unit_check.h"
#include "platform/com_ptr.h"
#include "platform/platform.h"
#include "platform/result.h"

namespace zem {
namespace {

// Makes a handle that takes over `filter`.
HRESULT MakeHandle(ComPtr<IBaseFilter> filter, DeviceHandle** handle) {
  auto* const made = new (std::nothrow) DeviceHandle{};
  if (made == nullptr) {
    return kFail;
  }
  made->filter = filter.Detach();
  *handle = made;
  return S_OK;
}

// Opens what `find` finds. The finder has left COM initialised; a handle that cannot be made takes
// that back. On failure *handle stays untouched.
template <class Find>
HRESULT OpenFound(DeviceHandle** handle, Find find) {
  if (handle == nullptr) {
    return kRefused;
  }
  IBaseFilter* found = nullptr;
  if (const HRESULT result = find(&found); FAILED(result)) {
    return result;
  }
  const HRESULT made = MakeHandle(ComPtr<IBaseFilter>::Adopt(found), handle);
  if (FAILED(made)) {
    platform::UninitializeCom();
  }
  return made;
}

// Opens what `find` finds by the text `path`, and closes it again when it lacks the vendor unit.
template <class Find>
HRESULT OpenByPath(const wchar_t* path, DeviceHandle** handle, Find find) {
  if (handle == nullptr) {
    return kRefused;
  }
  *handle = nullptr;
  if (path == nullptr) {
    return kFail;
  }
  const HRESULT opened = OpenFound(
      handle, [path, find](IBaseFilter** filter) -> HRESULT { return find(filter, path); });
  if (FAILED(opened)) {
    return opened;
  }
  if (CheckXuGuid(VendorXu, (*handle)->filter) != S_OK) {
    CloseDevice(handle);
    return kUnitAbsent;
  }
  return S_OK;
}

}  // namespace

HRESULT OpenDevice(int index, DeviceHandle** handle) {
  return OpenFound(handle,
                   [index](IBaseFilter** filter) { return FindDefaultDevice(filter, index); });
}

HRESULT OpenDeviceEx(int index, DeviceHandle** handle, unsigned vid, unsigned pid) {
  return OpenFound(handle, [index, vid, pid](IBaseFilter** filter) {
    return FindCaptureDevice(filter, vid, pid, index);
  });
}

HRESULT OpenZemDevice(DeviceHandle** handle) { return OpenFound(handle, FindVendorXuDevice); }

HRESULT OpenDeviceByPath(const wchar_t* displayName, DeviceHandle** handle) {
  return OpenByPath(displayName, handle, [](IBaseFilter** filter, const wchar_t* name) {
    return FindDeviceByDisplayName(filter, name, nullptr);
  });
}

HRESULT OpenDeviceByDevPath(const wchar_t* devicePath, DeviceHandle** handle) {
  return OpenByPath(devicePath, handle, FindDeviceByDevicePath);
}

HRESULT OpenDeviceBySourceFilter(IBaseFilter* filter, DeviceHandle** handle) {
  if (handle == nullptr) {
    return kRefused;
  }
  *handle = nullptr;
  if (filter == nullptr) {
    return kFail;
  }
  return MakeHandle(ComPtr<IBaseFilter>::Share(filter), handle);
}

void CloseDevice(DeviceHandle** handle) {
  if (handle == nullptr || *handle == nullptr) {
    return;
  }
  (*handle)->filter->Release();
  delete *handle;
  *handle = nullptr;
  platform::UninitializeCom();
}

HRESULT GetSerialNumber(char* serial) {
  if (serial == nullptr) {
    return kRefused;
  }
  constexpr int kSerialSize = 16;
  // Deliberate: sixteen digits and their terminator never fit, and the copy takes the runtime's
  // invalid-parameter path. Callers depend on the result and on the emptied buffer.
  platform::BoundedCopy(serial, kSerialSize, "0000000000000000");
  return kSerialSize;
}

}  // namespace zem
