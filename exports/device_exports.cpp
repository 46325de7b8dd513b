// Opening and closing a camera, and raw access to extension units.
#include "device/extension_units.h"
#include "device/transport.h"
#include "device/unit_check.h"
#include "exports/export_support.h"

using zem::DeviceHandle;
using zem::MaybeNull;
using zem::OnDevice;
using zem::Required;

namespace {

DeviceHandle** AsHandleOutput(void** handle) { return reinterpret_cast<DeviceHandle**>(handle); }

// XuSetControl or XuGetControl with its arguments in the order of OnDevice.
template <auto transfer>
HRESULT Transfer(IBaseFilter* filter, const GUID* unit, std::uint16_t selector, void* data,
                 ULONG length, ULONG* bytesReturned) {
  return transfer(*unit, selector, data, length, bytesReturned, filter);
}

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
  return OnDevice(handle, Transfer<zem::XuSetControl>, Required(unit), selector, MaybeNull(data),
                  length, MaybeNull(bytesReturned));
}

ZemResult ZEMAPI_UvcExtGet(void* handle, const GUID* unit, unsigned short selector, void* data,
                           ZemULong length, ZemULong* bytesReturned) {
  return OnDevice(handle, Transfer<zem::XuGetControl>, Required(unit), selector, MaybeNull(data),
                  length, MaybeNull(bytesReturned));
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
  const auto check = [](IBaseFilter* filter, const GUID* wanted) {
    return zem::CheckXuGuid(*wanted, filter);
  };
  return OnDevice(handle, check, Required(unit));
}
