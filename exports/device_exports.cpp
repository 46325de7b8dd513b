// Opening and closing a camera, and raw access to extension units.
#include "device/extension_units.h"
#include "device/transport.h"
#include "device/unit_check.h"
#include "exports/export_support.h"

using zem::DeviceHandle;
using zem::OnDevice;

namespace {

DeviceHandle** AsHandleOutput(void** handle) { return reinterpret_cast<DeviceHandle**>(handle); }

}  // namespace

ZemResult ZEMAPI_OpenDevice(unsigned int index, void** handle) {
  return zem::OpenDevice(static_cast<int>(index), AsHandleOutput(handle));
}

ZemResult ZEMAPI_OpenDeviceEx(unsigned int index, void** handle, unsigned int vid,
                              unsigned int pid) {
  return zem::OpenDeviceEx(static_cast<int>(index), AsHandleOutput(handle), vid, pid);
}

ZemResult ZEMAPI_OpenZemDevice(void** handle) { return zem::OpenZemDevice(AsHandleOutput(handle)); }

ZemResult ZEMAPI_OpenDeviceByPath(const wchar_t* displayName, void** handle) {
  return zem::OpenDeviceByPath(displayName, AsHandleOutput(handle));
}

ZemResult ZEMAPI_OpenDeviceByDevPath(const wchar_t* devicePath, void** handle) {
  return zem::OpenDeviceByDevPath(devicePath, AsHandleOutput(handle));
}

ZemResult ZEMAPI_OpenDeviceBySourceFilter(IBaseFilter* filter, void** handle) {
  return zem::OpenDeviceBySourceFilter(filter, AsHandleOutput(handle));
}

void ZEMAPI_CloseDevice(void** handle) { zem::CloseDevice(AsHandleOutput(handle)); }

ZemResult ZEMAPI_GetSerialNumber(void* /*handle*/, char* serial) {
  return zem::GetSerialNumber(serial);
}

ZemResult ZEMAPI_UvcExtSet(void* handle, const GUID* unit, unsigned short selector, void* data,
                           ZemULong length, ZemULong* bytesReturned) {
  return OnDevice(
      handle,
      [=](IBaseFilter* filter, const GUID* checkedUnit) {
        return zem::XuSetControl(*checkedUnit, selector, data, length, bytesReturned, filter);
      },
      unit);
}

ZemResult ZEMAPI_UvcExtGet(void* handle, const GUID* unit, unsigned short selector, void* data,
                           ZemULong length, ZemULong* bytesReturned) {
  return OnDevice(
      handle,
      [=](IBaseFilter* filter, const GUID* checkedUnit) {
        return zem::XuGetControl(*checkedUnit, selector, data, length, bytesReturned, filter);
      },
      unit);
}

ZemResult ZEMAPI_ZemExtSet(void* handle, unsigned short selector, void* data, ZemULong length,
                           ZemULong* bytesReturned) {
  return ZEMAPI_UvcExtSet(handle, &zem::VendorXu, selector, data, length, bytesReturned);
}

ZemResult ZEMAPI_ZemExtGet(void* handle, unsigned short selector, void* data, ZemULong length,
                           ZemULong* bytesReturned) {
  return ZEMAPI_UvcExtGet(handle, &zem::VendorXu, selector, data, length, bytesReturned);
}

ZemResult ZEMAPI_UvcCheckXuGuid(void* handle, const GUID* unit) {
  return OnDevice(
      handle,
      [](IBaseFilter* filter, const GUID* checkedUnit) {
        return zem::CheckXuGuid(*checkedUnit, filter);
      },
      unit);
}
